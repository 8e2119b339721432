// Scenes made in code.
#include "headless/item_types.h"
#include "headless/scene_data.h"
#include "host/scene_api.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace headless {

namespace {

enum class ValueKind { Integer, Double, String };

struct DefaultChannel {
  const char* type;
  const char* name;
  ValueKind kind;
  double number;
};

// Channels of every item of a type, those of base types first. Objects and matrices are listed as numbers that
// nobody can read.
constexpr DefaultChannel kDefaultChannels[] = {
    {"locator", "wposMatrix", ValueKind::Double, 0},
    {"locator", "wrotMatrix", ValueKind::Double, 0},
    {"locator", "wsclMatrix", ValueKind::Double, 0},
    {"locator", "worldMatrix", ValueKind::Double, 0},
    {"locator", "localMatrix", ValueKind::Double, 0},
    {"locator", "parentMatrix", ValueKind::Double, 0},
    {"mesh", "mesh", ValueKind::Double, 0},
    {"triSurf", "surf", ValueKind::Double, 0},
    {"scene", "time", ValueKind::Double, 0},
    {"scene", "currentS", ValueKind::Double, 0},
    {"scene", "currentE", ValueKind::Double, 0},
    {"scene", "fps", ValueKind::Double, 24},
    {"textureLayer", "enable", ValueKind::Integer, 1},
    {"mask", "ptag", ValueKind::String, 0},
    {"mask", "ptyp", ValueKind::String, 0},
    {"imageMap", "effect", ValueKind::String, 0},
    {"deformer", "type", ValueKind::Integer, 0},
    {"deformer", "name", ValueKind::String, 0},
    {"morphDeform", "enable", ValueKind::Integer, 1},
    // The three share their layout: a component's index is the same on each of them.
    {"translation", "pos.X", ValueKind::Double, 0},
    {"translation", "pos.Y", ValueKind::Double, 0},
    {"translation", "pos.Z", ValueKind::Double, 0},
    {"rotation", "rot.X", ValueKind::Double, 0},
    {"rotation", "rot.Y", ValueKind::Double, 0},
    {"rotation", "rot.Z", ValueKind::Double, 0},
    {"rotation", "order", ValueKind::Integer, 0},
    {"scale", "scl.X", ValueKind::Double, 1},
    {"scale", "scl.Y", ValueKind::Double, 1},
    {"scale", "scl.Z", ValueKind::Double, 1},
};

ChannelValue DefaultValue(const DefaultChannel& channel) {
  switch (channel.kind) {
    case ValueKind::Integer:
      return static_cast<std::int32_t>(channel.number);
    case ValueKind::Double:
      return channel.number;
    case ValueKind::String:
      break;
  }
  return SharedText();
}

// What every item of a type has.
struct TypeDefaults {
  SharedText type;
  std::vector<ChannelData> channels;
  bool isDeformGroup = false, isGroup = false, isClip = false;
};

std::vector<std::string_view> BaseChain(const SceneData& scene, std::string_view type) {
  std::vector<std::string_view> chain;
  for (; !type.empty() && std::find(chain.begin(), chain.end(), type) == chain.end(); type = BaseType(scene, type))
    chain.push_back(type);
  return chain;
}

void AppendChannel(std::vector<ChannelData>& channels, SharedText name, ChannelValue value) {
  ChannelData& channel = channels.emplace_back();
  channel.name = std::move(name);
  channel.setup = std::move(value);
}

TypeDefaults MakeDefaults(const SceneData& scene, std::string_view type) {
  const std::vector<std::string_view> chain = BaseChain(scene, type);
  const auto isOfType = [&](std::string_view base) {
    return std::find(chain.begin(), chain.end(), base) != chain.end();
  };
  TypeDefaults defaults;
  defaults.type = std::string(type);
  for (const DefaultChannel& channel : kDefaultChannels)
    if (isOfType(channel.type)) AppendChannel(defaults.channels, channel.name, DefaultValue(channel));
  defaults.isDeformGroup = isOfType("deformGroup");
  defaults.isGroup = isOfType("group");
  defaults.isClip = isOfType("actionclip");
  return defaults;
}

// Of the host's own types, worked out once. Null for the types that scenes add.
const TypeDefaults* FindDefaults(std::string_view type) {
  static const auto* const known = [] {
    auto byType = std::make_unique<std::unordered_map<std::string_view, TypeDefaults>>();
    for (const ItemTypeRow& row : kItemTypes) byType->emplace(row.name, MakeDefaults({}, row.name));
    return byType.release();
  }();
  const auto found = known->find(type);
  return found == known->end() ? nullptr : &found->second;
}

int MainTransformPlace(std::string_view type) {
  if (type == "scale") return static_cast<int>(TransformKind::Scale);
  if (type == "rotation") return static_cast<int>(TransformKind::Rotation);
  if (type == "translation") return static_cast<int>(TransformKind::Position);
  return -1;
}

}  // namespace

SceneData MakeScene() {
  SceneData scene;
  AddItem(scene, "scene", "Scene");
  for (const char* graph : {"xfrmCore", "xfrmLocal", "targets", "currentGroups", "chanLinks"}) scene.graphs[graph];
  return scene;
}

ItemIndex AddItem(SceneData& scene, const std::string& type, const std::string& name, ItemIndex parent) {
  ItemData& item = scene.items.emplace_back();
  item.id = type + "#" + std::to_string(scene.items.size() - 1);
  item.name = name;
  item.parent = parent;
  const TypeDefaults* known = FindDefaults(type);
  const TypeDefaults defaults = known ? TypeDefaults() : MakeDefaults(scene, type);
  if (!known) known = &defaults;
  item.type = known->type;
  item.channels = known->channels;
  if (known->isDeformGroup) item.deformGroup.emplace();
  if (known->isGroup) item.group.emplace();
  if (known->isClip) item.clip.emplace();
  return static_cast<ItemIndex>(scene.items.size() - 1);
}

ItemIndex AddTransform(SceneData& scene, ItemIndex locator, const std::string& type, const std::string& name) {
  const ItemIndex transform = AddItem(scene, type, name);
  scene.graphs["xfrmCore"].emplace_back(transform, locator);
  if (const int place = MainTransformPlace(type); place >= 0) {
    ItemIndex& main =
        scene.items[static_cast<std::size_t>(locator)].mainTransforms[static_cast<std::size_t>(place)];
    if (main < 0) main = transform;
  }
  return transform;
}

std::int32_t FindChannel(const ItemData& item, std::string_view name) {
  for (std::size_t index = 0; index < item.channels.size(); ++index)
    if (item.channels[index].name == name) return static_cast<std::int32_t>(index);
  return -1;
}

void SetChannel(ItemData& item, const std::string& name, ChannelValue value) {
  if (const std::int32_t index = FindChannel(item, name); index >= 0)
    item.channels[static_cast<std::size_t>(index)].setup = std::move(value);
  else
    AppendChannel(item.channels, name, std::move(value));
}

}  // namespace headless
