#include "tests/support/mesh_laws.h"

#include "host/fourcc.h"
#include "host/mesh_api.h"
#include "tests/support/mesh_scenes.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace test_support {
namespace {

using headless::kNone;
using headless::MeshData;
using headless::MeshMapData;
using Rows = std::vector<std::vector<double>>;

void Require(bool holds, const std::string& law) {
  if (!holds) throw std::logic_error("broken law: " + law);
}

// What the file must say of the corners of one tag, read off the mesh.
class ExpectedCorners {
 public:
  ExpectedCorners(const MeshData& mesh, std::uint32_t tag) : mesh_(mesh), tag_(tag) {}

  Rows Positions() const {
    return Collect([&](std::uint32_t point, std::uint32_t) {
      const float* p = &mesh_.points[3 * point];
      return std::vector<double>{p[0], p[1], p[2]};
    });
  }

  Rows Values(const MeshMapData& map) const {
    return Collect([&](std::uint32_t point, std::uint32_t corner) {
      std::vector<double> value(map.type == kMapUv ? 2 : 4, 0.0);
      if (const float* stored = Stored(map, point, corner))
        std::copy(stored, stored + map.dimension, value.begin());
      if (map.type == kMapUv) value[1] = 1.0f - static_cast<float>(value[1]);
      return value;
    });
  }

  Rows Normals(const MeshMapData* map) const {
    return Collect([&](std::uint32_t point, std::uint32_t corner) {
      const float* stored = map ? Stored(*map, point, corner) : nullptr;
      std::vector<double> normal(3);
      for (std::size_t axis = 0; axis < 3; ++axis)
        normal[axis] = stored ? stored[axis] : mesh_.cornerNormals[3 * corner + axis];
      const double length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
      if (!(length > 0)) return std::vector<double>{1, 0, 0};
      for (double& component : normal) component = static_cast<float>(component / length);
      return normal;
    });
  }

 private:
  static const float* Stored(const MeshMapData& map, std::uint32_t point, std::uint32_t corner) {
    const std::uint32_t value =
        map.cornerValues[corner] != kNone ? map.cornerValues[corner] : map.pointValues[point];
    return value == kNone ? nullptr : &map.values[map.dimension * value];
  }

  template <class Value>
  Rows Collect(Value value) const {
    Rows rows;
    for (std::uint32_t polygon = 0; polygon < mesh_.PolygonCount(); ++polygon) {
      if (mesh_.material.perPolygon[polygon] != tag_) continue;
      for (std::uint32_t i = 3 * mesh_.triangleStarts[polygon]; i < 3 * mesh_.triangleStarts[polygon + 1]; ++i) {
        const std::uint32_t point = mesh_.trianglePoints[i];
        std::uint32_t corner = mesh_.polygonStarts[polygon];
        while (mesh_.polygonPoints[corner] != point) ++corner;
        rows.push_back(value(point, corner));
      }
    }
    return rows;
  }

  const MeshData& mesh_;
  std::uint32_t tag_;
};

std::vector<const MeshMapData*> MapsOf(const MeshData& mesh, std::initializer_list<std::uint32_t> types) {
  std::vector<const MeshMapData*> maps;
  for (const std::uint32_t type : types)
    for (const MeshMapData& map : mesh.maps)
      if (map.type == type) maps.push_back(&map);
  return maps;
}

void CheckPrimitive(const SavedPrimitive& primitive, const ExpectedCorners& expected, const MeshData& mesh) {
  const auto check = [&](const std::string& attribute, const Rows& rows) {
    Require(primitive.Corners(attribute) == rows, attribute + " is that of the mesh");
  };
  check("POSITION", expected.Positions());
  const auto normalMaps = MapsOf(mesh, {kMapNormal});
  check("NORMAL", expected.Normals(normalMaps.empty() ? nullptr : normalMaps.front()));
  const auto colors = MapsOf(mesh, {kMapRgb, kMapRgba});
  for (std::size_t n = 0; n < colors.size(); ++n) check("COLOR_" + std::to_string(n), expected.Values(*colors[n]));
  const auto uvs = MapsOf(mesh, {kMapUv});
  for (std::size_t n = 0; n < uvs.size(); ++n) check("TEXCOORD_" + std::to_string(n), expected.Values(*uvs[n]));
  Require(!primitive.Has("COLOR_" + std::to_string(colors.size())), "there are no more colours");
  Require(!primitive.Has("TEXCOORD_" + std::to_string(uvs.size())), "there are no more UVs");
}

}  // namespace

void CheckUnfolds(const GltfFile& file, unsigned meshIndex, const MeshData& mesh) {
  std::vector<std::uint32_t> tags;  // in order of first sight
  for (const std::uint32_t tag : mesh.material.perPolygon)
    if (tag != kNone && std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(tag);
  Require(file.json["meshes"][meshIndex]["primitives"].Size() == tags.size(), "a primitive a tag");
  for (unsigned index = 0; index < tags.size(); ++index)
    CheckPrimitive(PrimitiveOf(file, meshIndex, index), ExpectedCorners(mesh, tags[index]), mesh);
}

void CheckBounds(const GltfFile& file) {
  for (unsigned index = 0; index < file.json["accessors"].Size(); ++index) {
    const rapidjson::Value& accessor = file.json["accessors"][index];
    if (!accessor.HasMember("min")) continue;
    const std::vector<double> values = AccessorValues(file, index);
    const unsigned width = accessor["min"].Size();
    for (unsigned axis = 0; axis < width; ++axis) {
      double low = values[axis], high = values[axis];
      for (std::size_t i = axis; i < values.size(); i += width) {
        low = std::min(low, values[i]);
        high = std::max(high, values[i]);
      }
      Require(accessor["min"][axis].GetDouble() == low && accessor["max"][axis].GetDouble() == high,
              "bounds of accessor " + std::to_string(index));
    }
  }
}

void CheckSame(const GltfFile& glb, GltfFile& gltf) {
  Require(std::string(gltf.json["buffers"][0]["uri"].GetString()) == "scene.bin", "the buffer is named");
  gltf.json["buffers"][0].RemoveMember("uri");
  Require(TextOf(glb.json) == TextOf(gltf.json) && glb.bytes == gltf.bytes, "both forms say the same");
}

}  // namespace test_support
