// Reads .orvo files.
#include "headless/item_types.h"
#include "readers/mapped_file.h"
#include "readers/read_scene.h"
#include "readers/scene_channels.h"
#include "readers/scene_fields.h"
#include "readers/scene_items.h"
#include "readers/scene_json.h"
#include "readers/scene_mesh.h"
#include "readers/scene_schema.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace readers {
namespace {

using headless::ItemIndex;
using headless::SceneData;

void ReadApplication(const Json& value, headless::ApplicationData& application) {
  if (const Json* name = Find(value, "name")) application.name = ReadText(*name);
  if (const Json* version = Find(value, "version")) {
    ReadList(*version, 3);
    for (rapidjson::SizeType i = 0; i < 3; ++i) application.version[i] = ReadInteger((*version)[i]);
  }
  if (const Json* build = Find(value, "build")) application.build = ReadInteger(*build);
  if (const Json* name = Find(value, "osName")) application.osName = ReadText(*name);
  if (const Json* version = Find(value, "osVersion")) application.osVersion = ReadText(*version);
}

// The types are looked through for each item.
constexpr rapidjson::SizeType kMostTypes = 256;
constexpr int kDeepestType = 16;

void ReadTypes(const Json& value, SceneData& scene) {
  if (value.MemberCount() > kMostTypes)
    Fail(value, fmt::format("{} types; a scene can add {}", value.MemberCount(), kMostTypes));
  for (const auto& member : value.GetObject()) {
    const std::string name = ReadText(member.name);
    if (headless::IsKnownType(scene, name)) Fail(member.value, "the host has a type \"" + name + "\" of its own");
    scene.types.emplace_back(name, ReadText(member.value));
  }
  const Json* tooDeep = nullptr;
  for (const auto& member : value.GetObject()) {
    const std::string base = ReadText(member.value);
    if (!base.empty() && !headless::IsKnownType(scene, base)) Fail(member.value, "unknown type \"" + base + "\"");
    std::string_view type = base;
    for (int step = 0; step < kDeepestType && !type.empty(); ++step) {
      if (type == TextView(member.name)) Fail(member.value, "the types run in a circle");
      type = headless::BaseType(scene, type);
    }
    if (!type.empty() && !tooDeep) tooDeep = &member.value;  // or on its way into a circle of others
  }
  if (tooDeep) Fail(*tooDeep, fmt::format("has more than {} types above it", kDeepestType));
}

// What says how the scene is seen, and nothing of its items.
void ReadSettings(const Json& root, SceneData& scene) {
  if (const Json* application = Find(root, "application")) ReadApplication(*application, scene.application);
  if (const Json* values = Find(root, "userValues")) {
    for (const auto& member : values->GetObject()) {
      // -1 is what a saver takes for a value without an integer.
      scene.userValues[ReadText(member.name)] = member.value.IsNull() ? -1 : ReadInteger(member.value);
    }
  }
  if (const Json* command = Find(root, "exportTagsCommand")) {
    using enum headless::CommandState;
    scene.exportTagsCommand =
        ReadWord<headless::CommandState>(*command, {{"works", Works}, {"absent", Absent}, {"fails", Fails}});
  }
  if (const Json* types = Find(root, "types")) ReadTypes(*types, scene);
}

void ReadTime(const Json& value, SceneData& scene) {
  static constexpr std::pair<const char*, const char*> kChannels[] = {
      {"current", "time"}, {"start", "currentS"}, {"end", "currentE"}, {"fps", "fps"}};
  const auto sceneItem = std::find_if(scene.items.begin(), scene.items.end(),
                                      [](const headless::ItemData& item) { return item.type == "scene"; });
  if (sceneItem == scene.items.end()) return;
  for (const auto& [key, channel] : kChannels) {
    if (const Json* number = Find(value, key)) headless::SetChannel(*sceneItem, channel, ReadNumber(*number));
  }
}

void ReadGraphs(const Json& value, const SceneItems& items, SceneData& scene) {
  for (const auto& member : value.GetObject()) {
    const std::string name = ReadText(member.name);
    if (member.value.IsNull()) {
      scene.graphs.erase(name);
      continue;
    }
    auto& links = scene.graphs[name];
    for (const Json& link : ReadList(member.value).GetArray()) {
      ReadList(link, 2);
      links.emplace_back(items.Find(link[0]), items.Find(link[1]));
    }
  }
}

void ReadLinks(const Json& value, const SceneItems& items, SceneData& scene) {
  for (const Json& entry : ReadList(value).GetArray()) {
    headless::ChannelLink link;
    link.from = items.FindChannel(Require(entry, "from"));
    link.to = items.FindChannel(Require(entry, "to"));
    if (const Json* factor = Find(entry, "factor")) link.factor = ReadNumber(*factor);
    if (const Json* offset = Find(entry, "offset")) link.offset = ReadNumber(*offset);
    scene.channelLinks.push_back(link);
  }
}

SceneData BuildScene(const Json& root, BinaryFiles& files) {
  SceneData scene = headless::MakeScene();
  ReadSettings(root, scene);
  const SceneItems items(root, scene);
  SharedMeshes meshes;
  if (const Json* shared = Find(root, "meshes")) {
    for (const auto& member : shared->GetObject()) {
      if (!member.value.IsObject()) Fail(member.value, "expected a mesh, an object");
      meshes.emplace(ReadText(member.name),
                     std::make_shared<const headless::MeshData>(ReadMesh(member.value, files)));
    }
  }
  const SceneParts parts{scene, items, files, meshes};
  const auto count = static_cast<ItemIndex>(scene.items.size());
  if (const Json* time = Find(root, "time")) ReadTime(*time, scene);
  for (ItemIndex index = 0; index < count; ++index) FillItem(parts, index);
  for (ItemIndex index = 0; index < count; ++index) FillChannelUsers(parts, index);
  if (const Json* links = Find(root, "links")) ReadLinks(*links, items, scene);
  if (const Json* graphs = Find(root, "graphs")) ReadGraphs(*graphs, items, scene);
  if (const Json* selection = Find(root, "selection")) scene.selection = items.FindAll(*selection);
  if (const Json* cameras = Find(root, "renderCameras")) scene.renderCameras = items.FindAll(*cameras);
  return scene;
}

}  // namespace

SceneData ReadSceneFile(const std::filesystem::path& file, ReadReport& report) {
  const std::string name = file.string();
  const auto mapped = MappedFile::Open(file);
  rapidjson::Document tree;
  ParseJson({mapped->Begin(), mapped->Bytes().size()}, name, LongLists::InText, tree);
  BinaryFiles files(file.parent_path(), report.files);
  try {
    CheckSchema(tree);
    SceneData scene = BuildScene(tree, files);
    scene.directory = file.parent_path().string();
    return scene;
  } catch (const JsonFault& fault) {
    const std::string place = JsonPlace(tree, fault);
    const std::string text = place + (place.empty() ? "" : ": ") + fault.reason;
    throw InputError(name + ": " + WithoutControls(text));  // keys and texts of the file stand in it
  }
}

}  // namespace readers
