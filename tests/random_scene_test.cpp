// Random meshes through a whole save, checked by laws that every file must keep.
#include "host/fourcc.h"
#include "host/mesh_api.h"
#include "tests/support/failing_host.h"
#include "tests/support/mesh_scenes.h"
#include "tests/support/random_mesh.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>

namespace {

using headless::kNone;
using headless::MeshData;
using headless::MeshMapData;
using test_support::AccessorValues;
using test_support::GltfFile;
using test_support::PrimitiveOf;
using test_support::RandomMesh;
using Rows = std::vector<std::vector<double>>;

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

void ExpectUnfolds(const GltfFile& file, unsigned meshIndex, const MeshData& mesh) {
  std::vector<std::uint32_t> tags;  // in order of first sight
  for (const std::uint32_t tag : mesh.material.perPolygon)
    if (tag != kNone && std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(tag);
  ASSERT_EQ(file.json["meshes"][meshIndex]["primitives"].Size(), tags.size());
  for (unsigned index = 0; index < tags.size(); ++index) {
    const ExpectedCorners expected(mesh, tags[index]);
    const test_support::SavedPrimitive primitive = PrimitiveOf(file, meshIndex, index);
    EXPECT_EQ(primitive.Corners("POSITION"), expected.Positions());
    const auto normalMaps = MapsOf(mesh, {kMapNormal});
    EXPECT_EQ(primitive.Corners("NORMAL"), expected.Normals(normalMaps.empty() ? nullptr : normalMaps.front()));
    const auto colors = MapsOf(mesh, {kMapRgb, kMapRgba});
    for (std::size_t n = 0; n < colors.size(); ++n)
      EXPECT_EQ(primitive.Corners("COLOR_" + std::to_string(n)), expected.Values(*colors[n]));
    const auto uvs = MapsOf(mesh, {kMapUv});
    for (std::size_t n = 0; n < uvs.size(); ++n)
      EXPECT_EQ(primitive.Corners("TEXCOORD_" + std::to_string(n)), expected.Values(*uvs[n]));
    EXPECT_FALSE(primitive.Has("COLOR_" + std::to_string(colors.size())));
    EXPECT_FALSE(primitive.Has("TEXCOORD_" + std::to_string(uvs.size())));
  }
}

void ExpectBoundsAreTrue(const GltfFile& file) {
  for (unsigned index = 0; index < file.json["accessors"].Size(); ++index) {
    const rapidjson::Value& accessor = file.json["accessors"][index];
    if (!accessor.HasMember("min")) continue;
    const std::vector<double> values = AccessorValues(file, index);
    for (unsigned axis = 0; axis < 3; ++axis) {
      double low = values[axis], high = values[axis];
      for (std::size_t i = axis; i < values.size(); i += 3) {
        low = std::min(low, values[i]);
        high = std::max(high, values[i]);
      }
      EXPECT_EQ(accessor["min"][axis].GetDouble(), low);
      EXPECT_EQ(accessor["max"][axis].GetDouble(), high);
    }
  }
}

// The .gltf has a uri where the .glb has none; all else is the same.
void ExpectSame(const GltfFile& glb, GltfFile& gltf) {
  EXPECT_STREQ(gltf.json["buffers"][0]["uri"].GetString(), "scene.bin");
  gltf.json["buffers"][0].RemoveMember("uri");
  EXPECT_EQ(test_support::TextOf(glb.json), test_support::TextOf(gltf.json));
  EXPECT_EQ(glb.bytes, gltf.bytes);
}

// Saved from a host that doesn't say which corners share a value.
test_support::GltfFile SaveWithoutValueKeys(const headless::SceneData& scene) {
  const test_support::TempDirectory directory;
  headless::Host inner(scene);
  test_support::FailingHost host(inner, *inner.Scene());
  host.HideInterface(IZyValueKeys::kId);
  IZyScene* target = host.Scene();
  const test_support::LoadedModule module(host);
  const std::filesystem::path output = directory.Path() / "scene.glb";
  EXPECT_EQ(module.NewSaver("gltf.bin").Raw()->Save(target, test_support::HostPath(output).c_str(), nullptr),
            ZYe_OK);
  return test_support::ReadGltfFile(output);
}

class RandomScene : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomScene, KeepsTheLaws) {
  RandomMesh random(GetParam());
  std::vector<MeshData> meshes = {random.Make(), random.Make(), random.Make()};
  headless::SceneData scene = test_support::MeshScene(meshes);
  test_support::SetOption(scene, "indicesExport", GetParam() % 2);
  const test_support::SaveRun run = test_support::RunSave(scene);
  const GltfFile glb = test_support::ReadGltfFile(run.output);
  EXPECT_EQ(run.leakedObjects, 0u);
  unsigned written = 0;
  for (unsigned node = 0; node < meshes.size(); ++node) {
    if (!glb.json["nodes"][node].HasMember("mesh")) continue;
    ExpectUnfolds(glb, glb.json["nodes"][node]["mesh"].GetUint(), meshes[node]);
    ++written;
  }
  EXPECT_EQ(written, glb.json["meshes"].Size());
  ExpectBoundsAreTrue(glb);
  const GltfFile withoutKeys = SaveWithoutValueKeys(scene);
  EXPECT_EQ(test_support::TextOf(glb.json), test_support::TextOf(withoutKeys.json));
  EXPECT_EQ(glb.bytes, withoutKeys.bytes);
  GltfFile gltf = test_support::ReadGltfFile(test_support::RunSave(scene, "scene.gltf").output);
  ExpectSame(glb, gltf);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScene, testing::Range(1u, 33u));

}  // namespace
