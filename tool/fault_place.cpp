#include "tool/fault_place.h"

#include <fmt/core.h>

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace tool {
namespace {

using Json = rapidjson::Value;
using Text = std::optional<std::string>;

// Null when there is none.
const Json* Member(const Json* object, const char* key) {
  if (!object || !object->IsObject()) return nullptr;
  const auto member = object->FindMember(key);
  return member == object->MemberEnd() ? nullptr : &member->value;
}

const Json* Entry(const Json* array, std::size_t index) {
  if (!array || !array->IsArray() || index >= array->Size()) return nullptr;
  return &(*array)[static_cast<rapidjson::SizeType>(index)];
}

std::size_t Count(const Json* array) { return array && array->IsArray() ? array->Size() : 0; }

bool IsNumber(const Json* value, std::size_t number) {
  return value && value->IsUint64() && value->GetUint64() == number;
}

std::string NameOf(const Json* object) {
  const Json* name = Member(object, "name");
  return name && name->IsString() ? std::string(name->GetString(), name->GetStringLength()) : "";
}

std::string Quoted(std::string_view text) { return fmt::format("\"{}\"", text); }

// The first node that shows the mesh.
std::string NodeOfMesh(const Json& root, std::size_t mesh) {
  const Json* nodes = Member(&root, "nodes");
  for (std::size_t node = 0; node < Count(nodes); ++node)
    if (IsNumber(Member(Entry(nodes, node), "mesh"), mesh)) return NameOf(Entry(nodes, node));
  return "";
}

bool HasFault(const headless::Array<float>& values) {
  for (const float value : values)
    if (!std::isfinite(value)) return true;
  return false;
}

// By the beginning of an attribute's name.
struct AttributeWords {
  std::string_view name;
  const char* words;
};
constexpr AttributeWords kAttributes[] = {
    {"POSITION", "the points"}, {"NORMAL", "the normals"}, {"TANGENT", "the tangents"},
    {"COLOR", "the colours"},   {"TEXCOORD", "the UVs"},   {"WEIGHTS", "the joint weights"},
};

// What in a mesh of the name holds a number that isn't finite.
Text FaultOfMesh(const headless::SceneData& scene, const std::string& name) {
  for (const headless::ItemData& item : scene.items) {
    if (!item.mesh || item.name != name) continue;
    const headless::Array<float>& points = item.mesh->points;
    for (std::size_t place = 0; place < points.size(); ++place)
      if (!std::isfinite(points[place])) return fmt::format("point {} of {}", place / 3, Quoted(name));
    for (const headless::MeshMapData& map : item.mesh->maps)
      if (HasFault(map.values)) return fmt::format("the map {} of {}", Quoted(map.name), Quoted(name));
  }
  return std::nullopt;
}

Text PlaceInMeshes(const Json& root, std::size_t accessor, const headless::SceneData& scene) {
  const Json* meshes = Member(&root, "meshes");
  for (std::size_t mesh = 0; mesh < Count(meshes); ++mesh) {
    const Json* primitives = Member(Entry(meshes, mesh), "primitives");
    for (std::size_t place = 0; place < Count(primitives); ++place) {
      const Json* attributes = Member(Entry(primitives, place), "attributes");
      if (!attributes || !attributes->IsObject()) continue;
      for (const auto& attribute : attributes->GetObject()) {
        if (!IsNumber(&attribute.value, accessor)) continue;
        const std::string node = NodeOfMesh(root, mesh);
        if (Text fault = FaultOfMesh(scene, node)) return fault;
        const std::string_view name(attribute.name.GetString(), attribute.name.GetStringLength());
        for (const AttributeWords& known : kAttributes)
          if (name.starts_with(known.name)) return fmt::format("{} of {}", known.words, Quoted(node));
      }
    }
  }
  return std::nullopt;
}

Text PlaceInAnimation(const Json& root, const Json* animation, std::size_t accessor) {
  const Json* channels = Member(animation, "channels");
  for (std::size_t channel = 0; channel < Count(channels); ++channel) {
    const Json* number = Member(Entry(channels, channel), "sampler");
    const Json* sampler =
        number && number->IsUint() ? Entry(Member(animation, "samplers"), number->GetUint()) : nullptr;
    const bool isInput = IsNumber(Member(sampler, "input"), accessor);
    if (!isInput && !IsNumber(Member(sampler, "output"), accessor)) continue;
    const Json* target = Member(Entry(channels, channel), "target");
    const Json* node = Member(target, "node");
    const Json* path = Member(target, "path");
    return fmt::format(
        "the {} {} of {}", isInput ? "times of the sampled" : "sampled",
        path && path->IsString() ? path->GetString() : "motion",
        Quoted(node && node->IsUint() ? NameOf(Entry(Member(&root, "nodes"), node->GetUint())) : ""));
  }
  return std::nullopt;
}

Text PlaceInSkins(const Json& root, std::size_t accessor) {
  const Json* skins = Member(&root, "skins");
  for (std::size_t skin = 0; skin < Count(skins); ++skin)
    if (IsNumber(Member(Entry(skins, skin), "inverseBindMatrices"), accessor))
      return fmt::format("the bind matrices of the joints of {}", Quoted(NameOf(Entry(skins, skin))));
  return std::nullopt;
}

std::string Joined(const std::vector<std::string>& path, std::size_t first) {
  std::string text;
  for (std::size_t place = first; place < path.size(); ++place) text += (text.empty() ? "" : "/") + path[place];
  return text;
}

}  // namespace

std::string PlaceOfAccessor(const Json& root, std::size_t accessor, const headless::SceneData& scene) {
  if (Text place = PlaceInMeshes(root, accessor, scene)) return *place;
  const Json* animations = Member(&root, "animations");
  for (std::size_t animation = 0; animation < Count(animations); ++animation)
    if (Text place = PlaceInAnimation(root, Entry(animations, animation), accessor)) return *place;
  if (Text place = PlaceInSkins(root, accessor)) return *place;
  return fmt::format("accessor {}", accessor);
}

std::string PlaceOfNumber(const Json& root, const std::vector<std::string>& path,
                          const headless::SceneData& scene) {
  std::size_t index = 0;
  const bool hasIndex =
      path.size() > 2 && std::from_chars(path[1].data(), path[1].data() + path[1].size(), index).ec == std::errc();
  if (!hasIndex) return Joined(path, 0);
  if (path[0] == "accessors") return PlaceOfAccessor(root, index, scene);
  const std::string name = NameOf(Entry(Member(&root, path[0].c_str()), index));
  if (path[0] == "nodes") return fmt::format("the {} of {}", path[2], Quoted(name));
  return name.empty() ? Joined(path, 0) : fmt::format("{} of {} {}", Joined(path, 2), path[0], Quoted(name));
}

}  // namespace tool
