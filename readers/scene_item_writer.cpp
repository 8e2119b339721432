// Items of scene files, written.
#include "headless/item_types.h"
#include "host/scene_api.h"
#include "readers/scene_mesh.h"
#include "readers/scene_writer_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <unordered_set>
#include <utility>

namespace readers {
namespace {

using headless::ItemData;
using headless::ItemIndex;
using headless::RecordedInfluences;

std::size_t At(ItemIndex index) { return static_cast<std::size_t>(index); }

template <class T>
std::span<const T> View(const headless::Array<T>& values) {
  return {values.data(), values.size()};
}

class ItemWriter {
 public:
  ItemWriter(SceneOutput& out, ItemIndex index)
      : out_(out), text_(out.text), index_(index), item_(out.scene.items[At(index)]) {}

  void Write();

 private:
  void WriteHead();
  void WriteText(const char* key, const std::string& value);
  void WriteReference(const char* key, ItemIndex other);
  void WriteChildOrder();
  void WriteLabels();
  void WriteMainTransforms();
  void WriteWorld();
  void WriteMeshEntry();
  void WriteDeformGroup();
  void WriteInfluences(const RecordedInfluences& influences);
  void WriteGroup();
  void WriteClip();
  void RequireType(const char* base, const char* what) const;

  SceneOutput& out_;
  SceneText& text_;
  ItemIndex index_;
  const ItemData& item_;
};

void ItemWriter::Write() {
  text_.BeginObject(Layout::Filled);
  WriteHead();
  WriteReference("parent", item_.parent);
  if (!item_.hasLocator) {
    text_.Key("locator");
    text_.Bool(false);
  }
  WriteChildOrder();
  WriteLabels();
  WriteChannels(out_, item_);
  WriteMainTransforms();
  WriteWorld();
  if (item_.matrix) {
    text_.Key("matrix");
    out_.arrays.Write(std::span<const double>(item_.matrix->m));
  }
  WriteReference("inverseOf", item_.inverseOf);
  if (item_.mesh) WriteMeshEntry();
  if (item_.instanceSource >= 0) RequireType("meshInst", "a source");
  WriteReference("source", item_.instanceSource);
  if (item_.imagePath) {
    text_.Key("image");
    text_.Text(*item_.imagePath);
  }
  WriteReference("textureLocator", item_.textureLocator);
  WriteReference("joint", item_.deformationItem);
  if (!item_.extras->weightMap.empty()) WriteText("weightMap", item_.extras->weightMap);
  WriteDeformGroup();
  WriteGroup();
  WriteClip();
  text_.EndObject();
}

// Without an id an item has its name as its id.
void ItemWriter::WriteHead() {
  const std::string& id = out_.Id(index_);
  const std::string name = FileText(item_.name);
  if (id != name) WriteText("id", id);
  WriteText("name", name);
  const char* usual = item_.mesh ? "mesh" : "locator";
  if (item_.type != usual) WriteText("type", item_.type);
}

void ItemWriter::WriteText(const char* key, const std::string& value) {
  text_.Key(key);
  text_.Text(value);
}

void ItemWriter::WriteReference(const char* key, ItemIndex other) {
  if (other >= 0) WriteText(key, out_.Id(other));
}

// Only what a host makes something of: the item's own children, once each.
void ItemWriter::WriteChildOrder() {
  const auto& items = out_.scene.items;
  std::vector<ItemIndex> children;
  std::unordered_set<ItemIndex> known;
  for (const ItemIndex child : item_.extras->childOrder) {
    const bool isOwn = child >= 0 && At(child) < items.size() && items[At(child)].parent == index_;
    if (isOwn && known.insert(child).second) children.push_back(child);
  }
  if (children.empty()) return;
  text_.Key("children");
  out_.WriteIds(children);
}

void ItemWriter::WriteLabels() {
  if (!item_.extras->packages.empty()) {
    text_.Key("packages");
    text_.BeginList(Layout::Filled);
    for (const std::string& package : item_.extras->packages) text_.Text(package);
    text_.EndList();
  }
  if (item_.extras->tags.empty()) return;
  text_.Key("tags");
  text_.BeginObject(Layout::Filled);
  for (const auto& [code, value] : item_.extras->tags) WriteText(FourCCText(code).c_str(), value);
  text_.EndObject();
}

void ItemWriter::WriteMainTransforms() {
  constexpr std::pair<const char*, TransformKind> kKinds[] = {{"position", TransformKind::Position},
                                                              {"rotation", TransformKind::Rotation},
                                                              {"scale", TransformKind::Scale}};
  const auto& mains = item_.mainTransforms;
  if (std::all_of(mains.begin(), mains.end(), [](ItemIndex main) { return main < 0; })) return;
  text_.Key("mainTransforms");
  text_.BeginObject(Layout::Filled);
  for (const auto& [key, kind] : kKinds) WriteReference(key, mains[static_cast<std::size_t>(kind)]);
  text_.EndObject();
}

// A world that records nothing is as none.
void ItemWriter::WriteWorld() {
  if (!item_.world || (!item_.world->bind && item_.world->keys.empty())) return;
  const headless::RecordedWorld& world = *item_.world;
  std::vector<double> times, matrices;
  for (const auto& key : world.keys) {
    times.push_back(key.time);
    matrices.insert(matrices.end(), key.matrix.m.begin(), key.matrix.m.end());
  }
  if (!AllFinite(std::span<const double>(times)) || !AllFinite(std::span<const double>(matrices)))
    throw WriteFault{"records a world matrix that is not finite"};
  text_.Break();
  text_.Key("world");
  text_.BeginObject(Layout::Filled);
  if (world.bind) {
    text_.Key("bind");
    out_.arrays.Write(std::span<const double>(world.bind->m));
  }
  if (!times.empty()) {
    text_.Key("times");
    out_.arrays.Write(std::span<const double>(times));
    text_.Break();
    text_.Key("matrices");
    out_.arrays.Write(std::span<const double>(matrices), 16);
  }
  if (world.linear) WriteText("between", "linear");
  text_.EndObject();
}

void ItemWriter::WriteMeshEntry() {
  RequireType("mesh", "a mesh");
  text_.Break();
  text_.Key("mesh");
  const auto shared = out_.meshNames.find(item_.mesh.get());
  if (shared != out_.meshNames.end()) return text_.Text(shared->second);
  WriteMesh(text_, out_.arrays, *item_.mesh);
}

void ItemWriter::WriteDeformGroup() {
  if (!item_.deformGroup) return;
  RequireType("deformGroup", "a deform group");
  const headless::DeformGroupData& group = *item_.deformGroup;
  if (group.influences.size() > group.meshes.size())
    throw WriteFault{"has influences of more meshes than it deforms"};
  text_.Break();
  text_.Key("deformGroup");
  text_.BeginObject(Layout::Filled);
  if (!group.meshes.empty()) {
    text_.Key("meshes");
    out_.WriteIds(group.meshes);
  }
  if (!group.deformers.empty()) {
    text_.Key("deformers");
    out_.WriteIds(group.deformers);
  }
  const auto isRecorded = [](const auto& influences) { return influences.has_value(); };
  if (std::any_of(group.influences.begin(), group.influences.end(), isRecorded)) {
    text_.Break();
    text_.Key("influences");
    text_.BeginList(Layout::Lines);
    for (std::size_t mesh = 0; mesh < group.meshes.size(); ++mesh) {
      if (mesh < group.influences.size() && group.influences[mesh])
        WriteInfluences(*group.influences[mesh]);
      else
        text_.Null();
    }
    text_.EndList();
  }
  if (!group.hasDeformer) {
    text_.Key("deformer");
    text_.Bool(false);
  }
  text_.EndObject();
}

void ItemWriter::WriteInfluences(const RecordedInfluences& influences) {
  if (!AllFinite(View(influences.weights))) throw WriteFault{"records a weight that is not finite"};
  text_.BeginObject(Layout::Filled);
  text_.Key("starts");
  out_.arrays.Write(View(influences.starts));
  text_.Break();
  text_.Key("deformers");
  out_.arrays.Write(View(influences.deformers));
  text_.Break();
  text_.Key("weights");
  out_.arrays.Write(View(influences.weights));
  text_.EndObject();
}

void ItemWriter::WriteGroup() {
  if (!item_.group) return;
  RequireType("group", "a group");
  const headless::GroupData& group = *item_.group;
  if (group.items.empty() && group.channels.empty()) return;
  text_.Break();
  text_.Key("group");
  text_.BeginObject(Layout::Filled);
  if (!group.items.empty()) {
    text_.Key("items");
    out_.WriteIds(group.items);
  }
  if (!group.channels.empty()) {
    text_.Break();
    text_.Key("channels");
    text_.BeginList(Layout::Filled);
    for (const headless::ChannelRef& ref : group.channels) WriteChannelRef(out_, ref);
    text_.EndList();
  }
  text_.EndObject();
}

void ItemWriter::WriteClip() {
  if (!item_.clip) return;
  RequireType("actionclip", "a clip");
  const headless::ClipData& clip = *item_.clip;
  text_.Break();
  text_.Key("clip");
  text_.BeginObject(Layout::Filled);
  if (!clip.enabled) {
    text_.Key("enabled");
    text_.Bool(false);
  }
  if (clip.active) {
    text_.Key("active");
    text_.Bool(true);
  }
  if (!clip.exportTag.empty()) WriteText("exportTag", clip.exportTag);
  if (!clip.channels.empty()) {
    text_.Break();
    text_.Key("channels");
    text_.BeginList(Layout::Lines);
    for (const auto& [ref, held] : clip.channels) {
      text_.BeginObject(Layout::Filled);
      text_.Key("channel");
      WriteChannelRef(out_, ref);
      const auto& setup = out_.scene.items[At(ref.item)].channels[At(ref.channel)].setup;
      if (const auto* value = std::get_if<headless::ChannelValue>(&held)) {
        text_.Key("value");
        WriteChannelValue(text_, *value, setup);
      } else {
        if (std::holds_alternative<headless::SharedText>(setup))
          throw WriteFault{"has keys for a channel of texts"};
        text_.Key("keys");
        WriteEnvelope(text_, std::get<headless::EnvelopeData>(held));
      }
      text_.EndObject();
    }
    text_.EndList();
  }
  text_.EndObject();
}

void ItemWriter::RequireType(const char* base, const char* what) const {
  if (headless::TypeDerivesFrom(out_.scene, item_.type, base)) return;
  throw WriteFault{fmt::format("has {}, which an item of type \"{}\" can't have", what, item_.type)};
}

}  // namespace

void WriteItem(SceneOutput& out, ItemIndex index) { ItemWriter(out, index).Write(); }

}  // namespace readers
