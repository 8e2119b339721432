// Random meshes through a whole save, checked by laws that every file must keep.
#include "host/mesh_api.h"
#include "tests/support/failing_host.h"
#include "tests/support/mesh_laws.h"
#include "tests/support/mesh_scenes.h"
#include "tests/support/random_mesh.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

namespace {

using headless::MeshData;
using test_support::GltfFile;
using test_support::RandomMesh;

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
    test_support::CheckUnfolds(glb, glb.json["nodes"][node]["mesh"].GetUint(), meshes[node]);
    ++written;
  }
  EXPECT_EQ(written, glb.json["meshes"].Size());
  test_support::CheckBounds(glb);
  const GltfFile withoutKeys = SaveWithoutValueKeys(scene);
  EXPECT_EQ(test_support::TextOf(glb.json), test_support::TextOf(withoutKeys.json));
  EXPECT_EQ(glb.bytes, withoutKeys.bytes);
  GltfFile gltf = test_support::ReadGltfFile(test_support::RunSave(scene, "scene.gltf").output);
  test_support::CheckSame(glb, gltf);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScene, testing::Range(1u, 33u));

}  // namespace
