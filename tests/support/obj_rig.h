// Reads OBJ texts and shows what they mean, apart from all numbering.
#pragma once

#include "host/fourcc.h"
#include "readers/read_scene.h"
#include "tests/support/host_directory.h"

#include <string>
#include <vector>

namespace test_support {

struct Result {
  headless::SceneData scene;
  std::vector<std::string> warnings;  // without the directory
  std::string error;                  // likewise; empty when the file is read
};

inline std::string WithoutDirectory(std::string text, const HostDirectory& directory) {
  const std::string prefix = directory.Path().string() + "/";
  const std::size_t place = text.find(prefix);
  return place == std::string::npos ? text : text.erase(place, prefix.size());
}

inline Result ReadText(const std::string& text) {
  const HostDirectory directory;
  directory.WriteFile("model.obj", text);
  Result result;
  readers::ReadReport report;
  try {
    result.scene = readers::ReadScene(directory / "model.obj", report);
  } catch (const readers::InputError& error) {
    result.error = WithoutDirectory(error.what(), directory);
  }
  for (const std::string& warning : report.warnings)
    result.warnings.push_back(WithoutDirectory(warning, directory));
  return result;
}

inline std::vector<const headless::ItemData*> Meshes(const headless::SceneData& scene) {
  std::vector<const headless::ItemData*> meshes;
  for (const headless::ItemData& item : scene.items)
    if (item.mesh) meshes.push_back(&item);
  return meshes;
}

inline const headless::MeshMapData* FindMap(const headless::MeshData& mesh, std::uint32_t type) {
  for (const headless::MeshMapData& map : mesh.maps)
    if (map.type == type) return &map;
  return nullptr;
}

inline std::string Tag(const headless::PolygonTagData& tags, std::size_t polygon) {
  if (tags.perPolygon.empty() || tags.perPolygon[polygon] == headless::kNone) return {};
  return tags.texts.at(tags.perPolygon[polygon]);
}

inline std::vector<float> CornerValue(const headless::MeshMapData* map, std::size_t corner) {
  if (!map || map->cornerValues[corner] == headless::kNone) return {};
  const float* value = &map->values[std::size_t{map->cornerValues[corner]} * map->dimension];
  return {value, value + map->dimension};
}

struct Corner {
  std::vector<float> position;
  std::vector<float> uv;  // empty for none
  std::vector<float> normal;
  bool operator==(const Corner&) const = default;
};

struct Polygon {
  std::string material;
  std::string part;
  std::vector<Corner> corners;
  bool operator==(const Polygon&) const = default;
};

// What a mesh says, without its numbering.
inline std::vector<Polygon> Unfold(const headless::MeshData& mesh) {
  const headless::MeshMapData* uvs = FindMap(mesh, kMapUv);
  const headless::MeshMapData* normals = FindMap(mesh, kMapNormal);
  std::vector<Polygon> polygons;
  for (std::uint32_t p = 0; p < mesh.PolygonCount(); ++p) {
    Polygon& polygon = polygons.emplace_back();
    polygon.material = Tag(mesh.material, p);
    polygon.part = Tag(mesh.part, p);
    for (std::size_t c = mesh.polygonStarts[p]; c < mesh.polygonStarts[p + 1]; ++c) {
      const float* point = &mesh.points[3 * std::size_t{mesh.polygonPoints[c]}];
      polygon.corners.push_back({{point, point + 3}, CornerValue(uvs, c), CornerValue(normals, c)});
    }
  }
  return polygons;
}

}  // namespace test_support
