#include "tool/model_check.h"

#include <string>
#include <string_view>
#include <vector>

namespace tool {
namespace {

using readers::Fail;
using readers::Find;
using readers::Json;
using readers::ReadList;
using readers::Require;

// The lists at the root, whose entries are objects with names.
constexpr const char* kLists[] = {"accessors", "animations", "buffers", "bufferViews", "cameras",
                                  "images",    "materials",  "meshes",  "nodes",       "samplers",
                                  "scenes",    "skins",      "textures"};

// Where indices stand, and the list that they are of. In a path "*" is every entry of a list, "?" every member of
// an object; what is missing is passed over.
struct Reference {
  std::string_view path;
  const char* target;
};
constexpr Reference kReferences[] = {
    {"scene", "scenes"},
    {"scenes/*/nodes/*", "nodes"},
    {"nodes/*/children/*", "nodes"},
    {"nodes/*/mesh", "meshes"},
    {"nodes/*/skin", "skins"},
    {"nodes/*/camera", "cameras"},
    {"meshes/*/primitives/*/attributes/?", "accessors"},
    {"meshes/*/primitives/*/targets/*/?", "accessors"},
    {"meshes/*/primitives/*/indices", "accessors"},
    {"meshes/*/primitives/*/material", "materials"},
    {"skins/*/inverseBindMatrices", "accessors"},
    {"skins/*/joints/*", "nodes"},
    {"skins/*/skeleton", "nodes"},
    {"animations/*/samplers/*/input", "accessors"},
    {"animations/*/samplers/*/output", "accessors"},
    {"animations/*/channels/*/target/node", "nodes"},
    {"materials/*/pbrMetallicRoughness/baseColorTexture/index", "textures"},
    {"materials/*/pbrMetallicRoughness/metallicRoughnessTexture/index", "textures"},
    {"materials/*/normalTexture/index", "textures"},
    {"materials/*/occlusionTexture/index", "textures"},
    {"materials/*/emissiveTexture/index", "textures"},
    {"textures/*/source", "images"},
    {"textures/*/sampler", "samplers"},
    {"textures/*/extensions/EXT_texture_webp/source", "images"},
    {"images/*/bufferView", "bufferViews"},
    {"accessors/*/bufferView", "bufferViews"},
    {"accessors/*/sparse/indices/bufferView", "bufferViews"},
    {"accessors/*/sparse/values/bufferView", "bufferViews"},
    {"bufferViews/*/buffer", "buffers"},
};

// Their decoders would have to come from a network.
constexpr const char* kRefusedExtensions[] = {"KHR_draco_mesh_compression", "EXT_meshopt_compression",
                                              "KHR_meshopt_compression", "KHR_texture_basisu"};

std::size_t CountOf(const Json& root, const char* list) {
  const Json* const found = Find(root, list);
  return found ? found->Size() : 0;
}

void CheckIndex(const Json& root, const Json& index, const char* target) {
  const std::size_t count = CountOf(root, target);
  if (ReadNatural(index) >= count)
    Fail(index, "there is no entry " + std::to_string(index.GetUint()) + " in " + target + ", which has " +
                    std::to_string(count));
}

void CheckReferences(const Json& root, const Json& value, std::string_view path, const char* target) {
  if (path.empty()) return CheckIndex(root, value, target);
  const std::size_t slash = path.find('/');
  const std::string step(path.substr(0, slash));
  const std::string_view rest = slash == std::string_view::npos ? "" : path.substr(slash + 1);
  if (step == "*") {
    for (const Json& entry : ReadList(value).GetArray()) CheckReferences(root, entry, rest, target);
  } else if (step == "?") {
    if (!value.IsObject()) Fail(value, "expected an object");
    for (const auto& member : value.GetObject()) CheckReferences(root, member.value, rest, target);
  } else if (const Json* const next = Find(value, step.c_str())) {
    CheckReferences(root, *next, rest, target);
  }
}

void CheckHead(const Json& root) {
  const std::string_view version = readers::TextView(Require(Require(root, "asset"), "version"));
  if (!version.starts_with("2.")) Fail(root["asset"]["version"], "expected a version 2.x of glTF");
  for (const char* list : kLists) {
    const Json* const entries = Find(root, list);
    if (!entries) continue;
    for (const Json& entry : ReadList(*entries).GetArray())
      if (const Json* const name = Find(entry, "name")) readers::TextView(*name);
  }
  if (const Json* const used = Find(root, "extensionsUsed"))
    for (const Json& extension : ReadList(*used).GetArray())
      for (const char* refused : kRefusedExtensions)
        if (readers::TextView(extension) == refused)
          Fail(extension, "a model with " + std::string(refused) + " can't be shown");
}

void CheckNodeTrees(const Json& nodes) {
  std::vector<bool> hasParent(nodes.Size());
  for (const Json& node : nodes.GetArray())
    if (const Json* const children = Find(node, "children"))
      for (const Json& child : children->GetArray()) {
        if (hasParent[child.GetUint()]) Fail(child, "the node has two parents");
        hasParent[child.GetUint()] = true;
      }
  // With one parent each, only the nodes of a ring can't be reached from a root.
  std::vector<bool> reached(nodes.Size());
  std::vector<rapidjson::SizeType> open;
  for (rapidjson::SizeType i = 0; i < nodes.Size(); ++i)
    if (!hasParent[i]) open.push_back(i);
  while (!open.empty()) {
    const rapidjson::SizeType index = open.back();
    open.pop_back();
    reached[index] = true;
    if (const Json* const children = Find(nodes[index], "children"))
      for (const Json& child : children->GetArray()) open.push_back(child.GetUint());
  }
  for (rapidjson::SizeType i = 0; i < nodes.Size(); ++i)
    if (!reached[i]) Fail(nodes[i], "the node is a child of its own children");
}

std::uint64_t NaturalOr(const Json& object, const char* key, std::uint64_t missing) {
  const Json* const value = Find(object, key);
  return value ? ReadNatural(*value) : missing;
}

std::uint64_t ComponentSize(const Json& value) {
  static constexpr std::pair<std::uint64_t, std::uint64_t> kSizes[] = {{5120, 1}, {5121, 1}, {5122, 2},
                                                                       {5123, 2}, {5125, 4}, {5126, 4}};
  for (const auto& [type, size] : kSizes)
    if (ReadNatural(value) == type) return size;
  Fail(value, "no such component type");
}

std::uint64_t ComponentCount(const Json& value) {
  return readers::ReadWord<std::uint64_t>(
      value, {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT2", 4}, {"MAT3", 9}, {"MAT4", 16}});
}

void CheckView(const Json& view, const Json& buffers) {
  const Json& buffer = buffers[static_cast<rapidjson::SizeType>(ReadNatural(Require(view, "buffer")))];
  if (NaturalOr(view, "byteOffset", 0) + ReadNatural(Require(view, "byteLength")) >
      ReadNatural(Require(buffer, "byteLength")))
    Fail(view, "the view reaches beyond its buffer");
}

void CheckAccessor(const Json& accessor, const Json* views) {
  const std::uint64_t size =
      ComponentSize(Require(accessor, "componentType")) * ComponentCount(Require(accessor, "type"));
  const std::uint64_t count = ReadNatural(Require(accessor, "count"));
  if (size * count > kLargestModel) Fail(accessor, "the accessor is larger than a model may be");
  const Json* const index = Find(accessor, "bufferView");
  if (!index || count == 0) return;
  const Json& view = (*views)[index->GetUint()];
  const std::uint64_t stride = NaturalOr(view, "byteStride", size);
  if (NaturalOr(accessor, "byteOffset", 0) + stride * (count - 1) + size > view["byteLength"].GetUint())
    Fail(accessor, "the accessor reaches beyond its view");
}

void CheckChannels(const Json& animation) {
  const Json& samplers = ReadList(Require(animation, "samplers"));
  for (const Json& channel : ReadList(Require(animation, "channels")).GetArray()) {
    const Json& sampler = Require(channel, "sampler");
    if (ReadNatural(sampler) >= samplers.Size()) Fail(sampler, "the clip has no such sampler");
  }
}

}  // namespace

std::uint64_t ReadNatural(const Json& value) {
  if (!value.IsUint()) Fail(value, "expected a whole number from 0 to 4294967295");
  return value.GetUint();
}

void CheckModel(const Json& root) {
  CheckHead(root);
  for (const Reference& reference : kReferences) CheckReferences(root, root, reference.path, reference.target);
  if (const Json* const nodes = Find(root, "nodes")) CheckNodeTrees(*nodes);
  const Json* const views = Find(root, "bufferViews");
  if (views)
    for (const Json& view : views->GetArray()) {
      Require(view, "buffer");  // so there are buffers
      CheckView(view, root["buffers"]);
    }
  if (const Json* const accessors = Find(root, "accessors"))
    for (const Json& accessor : accessors->GetArray()) CheckAccessor(accessor, views);
  if (const Json* const animations = Find(root, "animations"))
    for (const Json& animation : animations->GetArray()) CheckChannels(animation);
}

}  // namespace tool
