#include "readers/scene_fields.h"

#include "headless/item_types.h"
#include "host/fourcc.h"
#include "host/scene_api.h"
#include "readers/scene_channels.h"
#include "readers/scene_mesh.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace readers {
namespace {

using headless::ChannelRef;
using headless::ItemData;
using headless::ItemIndex;
using headless::RecordedWorld;

struct MainKind {
  const char* key;
  const char* type;
  TransformKind kind;
};

constexpr MainKind kMainKinds[] = {{"position", "translation", TransformKind::Position},
                                   {"rotation", "rotation", TransformKind::Rotation},
                                   {"scale", "scale", TransformKind::Scale}};

// The order channel's values are the places.
constexpr const char* kRotationOrders[] = {"xyz", "xzy", "yxz", "yzx", "zxy", "zyx"};

std::size_t At(ItemIndex index) { return static_cast<std::size_t>(index); }

Matrix4 ReadMatrix(const Json& value) {
  ReadList(value, 16);
  Matrix4 matrix;
  for (rapidjson::SizeType i = 0; i < 16; ++i) matrix.m[i] = ReadNumber(value[i]);
  return matrix;
}

void RequireType(const SceneParts& parts, const ItemData& item, const char* base, const Json& key) {
  if (headless::TypeDerivesFrom(parts.scene, item.type, base)) return;
  Fail(key, fmt::format("only an item of type \"{}\" has this, and the item is a \"{}\"", base, item.type));
}

void ReadRotationOrder(const Json& value, ItemData& rotation) {
  const auto* order = std::find(std::begin(kRotationOrders), std::end(kRotationOrders), TextView(value));
  if (order == std::end(kRotationOrders)) Fail(value, "expected an order of axes, \"xyz\" for instance");
  headless::SetChannel(rotation, "order", static_cast<std::int32_t>(order - kRotationOrders));
}

// What item objects and transform objects have in common.
void FillCommon(const SceneParts& parts, const Json& json, ItemData& item) {
  if (const Json* channels = Find(json, "channels")) ReadChannels(*channels, item);
  if (const Json* packages = Find(json, "packages")) {
    for (const Json& package : ReadList(*packages).GetArray())
      item.extras.Make().packages.push_back(ReadText(package));
  }
  if (const Json* tags = Find(json, "tags")) {
    for (const auto& tag : tags->GetObject()) item.extras.Make().tags[ReadFourCC(tag.name)] = ReadText(tag.value);
  }
  if (const Json* matrix = Find(json, "matrix")) item.matrix = ReadMatrix(*matrix);
  if (const Json* other = Find(json, "inverseOf")) item.inverseOf = parts.items.Find(*other);
}

RecordedWorld ReadWorld(const Json& value, BinaryFiles& files) {
  RecordedWorld world;
  if (value.IsArray()) {
    world.bind = ReadMatrix(value);
    return world;
  }
  if (const Json* bind = Find(value, "bind")) world.bind = ReadMatrix(*bind);
  const Json* between = Find(value, "between");
  world.linear = between && ReadWord<bool>(*between, {{"hold", false}, {"linear", true}});
  const Json* timesKey = Find(value, "times");
  if (!timesKey) {
    if (!world.bind) Fail(value, "needs \"bind\", or \"times\" and \"matrices\"");
    return world;
  }
  const Json& matricesKey = Require(value, "matrices");
  const headless::Array<double> times = ReadArray<double>(*timesKey, files);
  const headless::Array<double> matrices = ReadArray<double>(matricesKey, files, 16);
  if (matrices.size() != 16 * times.size()) {
    Fail(matricesKey, fmt::format("{} matrices for {} times", matrices.size() / 16, times.size()));
  }
  if (times.empty() && !world.bind) Fail(*timesKey, "needs at least one time");
  if (!AllFinite({times.data(), times.size()})) Fail(*timesKey, "holds a number that is not finite");
  if (!AllFinite({matrices.data(), matrices.size()})) Fail(matricesKey, "holds a number that is not finite");
  world.keys.resize(times.size());
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (i > 0 && !(times[i - 1] < times[i]))
      Fail(*timesKey, fmt::format("time {} doesn't come after the one before", i));
    world.keys[i].time = times[i];
    std::copy_n(matrices.begin() + 16 * i, 16, world.keys[i].matrix.m.begin());
  }
  return world;
}

// Marks the main transform items: those that say so, else the first of each kind that doesn't deny it.
void SetMainTransforms(const SceneParts& parts, const std::vector<ItemIndex>& stack, const Json& json,
                       ItemData& item) {
  for (const MainKind& row : kMainKinds) {
    ItemIndex& main = item.mainTransforms[static_cast<std::size_t>(row.kind)];
    bool isMarked = false;
    for (const ItemIndex index : stack) {
      if (!headless::TypeDerivesFrom(parts.scene, parts.scene.items[At(index)].type, row.type)) continue;
      const ItemSource& source = parts.items.Sources()[At(index)];
      const Json* mark = source.kind == ItemSource::Kind::Transform ? Find(*source.json, "main") : nullptr;
      const bool says = mark && ReadBool(*mark);
      if (says && isMarked) Fail(*mark, std::string("the locator has a main ") + row.type + " already");
      if (says || (main < 0 && !mark)) main = index;
      isMarked = isMarked || says;
    }
    const Json* mains = Find(json, "mainTransforms");
    if (const Json* key = mains ? Find(*mains, row.key) : nullptr)
      main = key->IsNull() ? -1 : parts.items.Find(*key);
  }
}

void FillTransforms(const SceneParts& parts, ItemIndex index, const Json& json) {
  const std::vector<ItemIndex> stack = parts.items.Stack(index);
  for (const ItemIndex transform : stack) parts.scene.graphs["xfrmCore"].emplace_back(transform, index);
  SetMainTransforms(parts, stack, json, parts.scene.items[At(index)]);
  if (const Json* order = Find(json, "rotationOrder")) {
    const Json* rotation = Find(json, "rotation");
    if (!rotation) Fail(*order, "needs a \"rotation\" beside it");
    const auto made = std::find_if(stack.begin(), stack.end(), [&](ItemIndex transform) {
      return parts.items.Sources()[At(transform)].json == rotation;
    });
    ReadRotationOrder(*order, parts.scene.items[At(*made)]);
  }
}

void FillMesh(const SceneParts& parts, const Json& value, ItemData& item) {
  RequireType(parts, item, "mesh", value);
  if (value.IsObject()) {
    item.mesh = std::make_shared<const headless::MeshData>(ReadMesh(value, parts.files));
    return;
  }
  const auto mesh = parts.meshes.find(TextView(value));
  if (mesh == parts.meshes.end()) Fail(value, "\"meshes\" has no mesh of that name");
  item.mesh = mesh->second;
}

void MakeActor(const SceneParts& parts, const Json& key, ItemIndex index) {
  ItemData& item = parts.scene.items[At(index)];
  RequireType(parts, item, "group", key);
  item.extras.Make().tags.emplace(kTagGroupType, "actor");
  const auto& items = parts.scene.items;
  const auto sceneItem =
      std::find_if(items.begin(), items.end(), [](const ItemData& one) { return one.type == "scene"; });
  if (sceneItem != items.end()) {
    parts.scene.graphs["currentGroups"].emplace_back(static_cast<ItemIndex>(sceneItem - items.begin()), index);
  }
}

void FillItemObject(const SceneParts& parts, ItemIndex index, const Json& json) {
  ItemData& item = parts.scene.items[At(index)];
  FillCommon(parts, json, item);
  FillTransforms(parts, index, json);
  if (const Json* locator = Find(json, "locator")) item.hasLocator = ReadBool(*locator);
  if (const Json* world = Find(json, "world")) item.world = ReadWorld(*world, parts.files);
  if (const Json* mesh = Find(json, "mesh")) FillMesh(parts, *mesh, item);
  if (const Json* source = Find(json, "source")) {
    RequireType(parts, item, "meshInst", *source);
    item.instanceSource = parts.items.Find(*source);
  }
  if (const Json* image = Find(json, "image")) item.imagePath = ReadText(*image);
  if (const Json* locator = Find(json, "textureLocator")) item.textureLocator = parts.items.Find(*locator);
  if (const Json* joint = Find(json, "joint")) item.deformationItem = parts.items.Find(*joint);
  if (const Json* map = Find(json, "weightMap")) item.extras.Make().weightMap = ReadText(*map);
  if (const Json* deformers = Find(json, "deformers")) {
    for (const ItemIndex deformer : parts.items.FindAll(*deformers)) {
      parts.scene.graphs["deformers"].emplace_back(deformer, index);
    }
  }
  if (const Json* actor = Find(json, "actor"); actor && ReadBool(*actor)) MakeActor(parts, *actor, index);
}

// What the three channels of an item's main transform hold while a clip is active.
void ReadTransformMotion(const SceneParts& parts, const MainKind& row, ItemIndex main, const Json& value,
                         headless::ClipData& clip) {
  if (main < 0) Fail(value, std::string("the item has no main ") + row.type);
  const auto* names = VectorChannels(row.type);
  const VectorData vector = ReadVector(value, VectorUnit(row.type));
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const std::int32_t channel = headless::FindChannel(parts.scene.items[At(main)], (*names)[axis]);
    if (channel < 0) Fail(value, std::string("the main ") + row.type + " lacks the channel " + (*names)[axis]);
    auto& held = clip.channels.emplace_back(ChannelRef{main, channel}, headless::ChannelValue(vector.value[axis]));
    if (vector.envelopes) held.second = (*vector.envelopes)[axis];
  }
}

void ReadMotion(const SceneParts& parts, const Json& motion, headless::ClipData& clip) {
  for (const auto& member : motion.GetObject()) {
    const ItemData& item = parts.scene.items[At(parts.items.Find(member.name))];
    for (const MainKind& row : kMainKinds) {
      const Json* value = Find(member.value, row.key);
      const ItemIndex main = item.mainTransforms[static_cast<std::size_t>(row.kind)];
      if (value) ReadTransformMotion(parts, row, main, *value, clip);
    }
  }
}

headless::ClipData ReadClip(const SceneParts& parts, const Json& value) {
  headless::ClipData clip;
  if (const Json* enabled = Find(value, "enabled")) clip.enabled = ReadBool(*enabled);
  if (const Json* active = Find(value, "active")) clip.active = ReadBool(*active);
  if (const Json* tag = Find(value, "exportTag")) clip.exportTag = ReadText(*tag);
  if (const Json* motion = Find(value, "motion")) ReadMotion(parts, *motion, clip);
  const Json* channels = Find(value, "channels");
  if (!channels) return clip;
  for (const Json& entry : ReadList(*channels).GetArray()) {
    const ChannelRef ref = parts.items.FindChannel(Require(entry, "channel"));
    const headless::ChannelData& channel = parts.scene.items[At(ref.item)].channels[At(ref.channel)];
    const Json* setup = Find(entry, "value");
    const Json* keys = Find(entry, "keys");
    if ((setup != nullptr) == (keys != nullptr)) Fail(entry, "needs either \"value\" or \"keys\"");
    if (setup) {
      clip.channels.emplace_back(ref, ReadChannelValue(*setup, channel.setup));
    } else if (std::holds_alternative<headless::SharedText>(channel.setup)) {
      Fail(*keys, "a channel of texts has no keys");
    } else {
      clip.channels.emplace_back(ref, ReadEnvelope(*keys));
    }
  }
  return clip;
}

headless::GroupData ReadGroup(const SceneParts& parts, const Json& value) {
  headless::GroupData group;
  if (const Json* items = Find(value, "items")) group.items = parts.items.FindAll(*items);
  if (const Json* channels = Find(value, "channels")) {
    for (const Json& channel : ReadList(*channels).GetArray())
      group.channels.push_back(parts.items.FindChannel(channel));
  }
  return group;
}

}  // namespace

void FillItem(const SceneParts& parts, ItemIndex index) {
  const ItemSource& source = parts.items.Sources()[At(index)];
  ItemData& item = parts.scene.items[At(index)];
  if (source.kind == ItemSource::Kind::Item) {
    FillItemObject(parts, index, *source.json);
  } else if (source.kind == ItemSource::Kind::Vector) {
    ReadTransformValue(*source.json, item);
  } else if (source.kind == ItemSource::Kind::Transform) {
    FillCommon(parts, *source.json, item);
    if (const Json* value = Find(*source.json, "value")) ReadTransformValue(*value, item);
    if (const Json* order = Find(*source.json, "rotationOrder")) {
      RequireType(parts, item, "rotation", *order);
      ReadRotationOrder(*order, item);
    }
  }
}

void FillChannelUsers(const SceneParts& parts, ItemIndex index) {
  const ItemSource& source = parts.items.Sources()[At(index)];
  if (source.kind != ItemSource::Kind::Item) return;
  ItemData& item = parts.scene.items[At(index)];
  if (const Json* deformGroup = Find(*source.json, "deformGroup")) {
    RequireType(parts, item, "deformGroup", *deformGroup);
    item.deformGroup = ReadDeformGroup(parts, *deformGroup);
  }
  if (const Json* group = Find(*source.json, "group")) {
    RequireType(parts, item, "group", *group);
    item.group = ReadGroup(parts, *group);
  }
  if (const Json* clip = Find(*source.json, "clip")) {
    RequireType(parts, item, "actionclip", *clip);
    item.clip = ReadClip(parts, *clip);
  }
}

}  // namespace readers
