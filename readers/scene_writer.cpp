#include "readers/scene_writer.h"

#include "headless/item_types.h"
#include "readers/scene_writer_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_set>
#include <utility>

namespace readers {
namespace {

using headless::ItemData;
using headless::ItemIndex;
using headless::SceneData;

// The ids of the scene, made unique and fit for a file where they aren't.
std::vector<std::string> FileIds(const SceneData& scene) {
  std::unordered_set<std::string> taken;
  std::vector<std::string> ids(scene.items.size());
  std::vector<std::size_t> unfit;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    ids[i] = FileText(scene.items[i].id);
    if (ids[i] != scene.items[i].id || !taken.insert(ids[i]).second) unfit.push_back(i);
  }
  for (const std::size_t i : unfit) {
    const std::string plain = ids[i];
    for (int number = 1; !taken.insert(ids[i]).second; ++number) ids[i] = fmt::format("{}#{}", plain, number);
  }
  return ids;
}

std::map<const headless::MeshData*, std::string> NameSharedMeshes(const SceneData& scene,
                                                                  const std::vector<std::string>& ids) {
  std::map<const headless::MeshData*, std::string> first, shared;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const headless::MeshData* mesh = scene.items[i].mesh.get();
    if (!mesh) continue;
    const auto [entry, isNew] = first.emplace(mesh, ids[i]);
    if (!isNew) shared.insert(*entry);
  }
  return shared;
}

// Types that only items name are known to a host; a file has to tell of them.
std::vector<std::pair<std::string, std::string>> AllTypes(const SceneData& scene) {
  auto types = scene.types;
  std::set<std::string> known;
  for (const ItemData& item : scene.items)
    if (!headless::IsKnownType(scene, item.type) && known.insert(item.type).second)
      types.emplace_back(item.type, "");
  return types;
}

std::map<std::string, std::vector<headless::ChannelData>> ChannelsOfTypes(const SceneData& scene) {
  std::map<std::string, std::vector<headless::ChannelData>> channels;
  SceneData scratch;
  scratch.types = scene.types;
  for (const ItemData& item : scene.items) {
    if (channels.count(item.type) > 0) continue;
    headless::AddItem(scratch, item.type, "");
    channels[item.type] = std::move(scratch.items.back().channels);
  }
  return channels;
}

class SceneWriter {
 public:
  SceneWriter(const SceneData& scene, SceneText& text, ArrayWriter& arrays)
      : scene_(scene), text_(text), out_{scene, text, arrays, FileIds(scene), {}, ChannelsOfTypes(scene)} {
    out_.meshNames = NameSharedMeshes(scene, out_.ids);
  }

  void Write();

 private:
  void WriteApplication();
  void WriteUserValues();
  void WriteTypes();
  void WriteMeshes();
  void WriteItems();
  void WriteGraphs();
  void WriteLinks();
  void WriteReferences(const char* key, const std::vector<ItemIndex>& items);

  const SceneData& scene_;
  SceneText& text_;
  SceneOutput out_;
};

void SceneWriter::Write() {
  const auto isScene = [](const ItemData& item) { return item.type == "scene"; };
  if (std::count_if(scene_.items.begin(), scene_.items.end(), isScene) != 1)
    throw WriteFault{"a scene has one item of type \"scene\""};
  text_.BeginObject(Layout::Lines);
  text_.Key("orvo");
  text_.Whole(1);
  WriteApplication();
  WriteUserValues();
  if (scene_.exportTagsCommand != headless::CommandState::Works) {
    text_.Key("exportTagsCommand");
    text_.Text(scene_.exportTagsCommand == headless::CommandState::Absent ? "absent" : "fails");
  }
  WriteTypes();
  WriteMeshes();
  WriteItems();
  WriteGraphs();
  WriteLinks();
  WriteReferences("selection", scene_.selection);
  WriteReferences("renderCameras", scene_.renderCameras);
  text_.EndObject();
}

void SceneWriter::WriteApplication() {
  const headless::ApplicationData& application = scene_.application;
  if (application == headless::ApplicationData()) return;
  text_.Key("application");
  text_.BeginObject(Layout::Filled);
  const auto writeText = [this](const char* key, const std::string& value) {
    text_.Key(key);
    text_.Text(value);
  };
  writeText("name", application.name);
  text_.Key("version");
  text_.BeginList(Layout::Filled);
  for (const std::int32_t number : application.version) text_.Whole(number);
  text_.EndList();
  text_.Key("build");
  text_.Whole(application.build);
  writeText("osName", application.osName);
  writeText("osVersion", application.osVersion);
  text_.EndObject();
}

void SceneWriter::WriteUserValues() {
  if (scene_.userValues.empty()) return;
  text_.Key("userValues");
  text_.BeginObject(Layout::Filled);
  for (const auto& [name, value] : scene_.userValues) {
    text_.Key(FileText(name));
    text_.Whole(value);
  }
  text_.EndObject();
}

void SceneWriter::WriteTypes() {
  const auto types = AllTypes(scene_);
  if (types.empty()) return;
  text_.Key("types");
  text_.BeginObject(Layout::Filled);
  for (const auto& [name, base] : types) {
    text_.Key(FileText(name));
    text_.Text(base);
  }
  text_.EndObject();
}

// In the order in which items first use them.
void SceneWriter::WriteMeshes() {
  if (out_.meshNames.empty()) return;
  text_.Key("meshes");
  text_.BeginObject(Layout::Lines);
  std::set<const headless::MeshData*> written;
  for (const ItemData& item : scene_.items) {
    const auto shared = out_.meshNames.find(item.mesh.get());
    if (shared == out_.meshNames.end() || !written.insert(shared->first).second) continue;
    text_.Key(shared->second);
    WriteMesh(text_, out_.arrays, *item.mesh);
  }
  text_.EndObject();
}

void SceneWriter::WriteItems() {
  text_.Key("items");
  text_.BeginList(Layout::Lines);
  for (std::size_t i = 0; i < scene_.items.size(); ++i) {
    try {
      WriteItem(out_, static_cast<ItemIndex>(i));
    } catch (const WriteFault& fault) {
      throw WriteFault{fmt::format("item \"{}\": {}", out_.ids[i], fault.reason)};
    }
  }
  text_.EndList();
}

void SceneWriter::WriteGraphs() {
  const SceneData empty = headless::MakeScene();
  std::map<std::string, const std::vector<std::pair<ItemIndex, ItemIndex>>*> changes;
  for (const auto& [name, links] : empty.graphs) changes[name] = nullptr;
  for (const auto& [name, links] : scene_.graphs) {
    changes[name] = &links;
    if (links.empty() && empty.graphs.count(name) > 0) changes.erase(name);
  }
  if (changes.empty()) return;
  text_.Key("graphs");
  text_.BeginObject(Layout::Lines);
  for (const auto& [name, links] : changes) {
    text_.Key(FileText(name));
    if (!links) {
      text_.Null();
      continue;
    }
    text_.BeginList(Layout::Filled);
    for (const auto& [from, to] : *links) out_.WriteIds({from, to});
    text_.EndList();
  }
  text_.EndObject();
}

void SceneWriter::WriteLinks() {
  if (scene_.channelLinks.empty()) return;
  text_.Key("links");
  text_.BeginList(Layout::Lines);
  for (const headless::ChannelLink& link : scene_.channelLinks) {
    text_.BeginObject(Layout::Filled);
    text_.Key("from");
    WriteChannelRef(out_, link.from);
    text_.Key("to");
    WriteChannelRef(out_, link.to);
    if (link.factor != 1) {
      text_.Key("factor");
      text_.Number(link.factor);
    }
    if (link.offset != 0 || std::signbit(link.offset)) {
      text_.Key("offset");
      text_.Number(link.offset);
    }
    text_.EndObject();
  }
  text_.EndList();
}

void SceneWriter::WriteReferences(const char* key, const std::vector<ItemIndex>& items) {
  if (items.empty()) return;
  text_.Key(key);
  out_.WriteIds(items);
}

}  // namespace

const std::string& SceneOutput::Id(ItemIndex item) const {
  if (item < 0 || static_cast<std::size_t>(item) >= ids.size())
    throw WriteFault{fmt::format("refers to item {} of {}", item, ids.size())};
  return ids[static_cast<std::size_t>(item)];
}

void SceneOutput::WriteIds(const std::vector<ItemIndex>& items) const {
  text.BeginList(Layout::Filled);
  for (const ItemIndex item : items) text.Text(Id(item));
  text.EndList();
}

void WriteSceneFile(const SceneData& scene, const std::filesystem::path& file, ArrayForm form) {
  try {
    SceneText text(file);
    ArrayWriter arrays(text, file, form);
    SceneWriter(scene, text, arrays).Write();
    arrays.Close();
    text.Close();
  } catch (const WriteFault& fault) {
    throw SceneWriteError(file.string() + ": " + fault.reason);
  }
}

}  // namespace readers
