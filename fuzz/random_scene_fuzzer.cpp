// Bytes as the choices that make a valid scene: its export goes through, the file keeps the laws, both forms say
// the same, a second export and one from the scene's own file have equal bytes.
#include "fuzz/exported_scene.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/random_scene.h"
#include "readers/read_scene.h"
#include "readers/scene_writer.h"
#include "tests/support/glb_reader.h"
#include "tests/support/mesh_laws.h"
#include "tests/support/scene_difference.h"

#include <map>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using test_support::GltfFile;

// Meshes as they are modelled; skinned ones may be moved into the world's space.
void CheckMeshes(const GltfFile& file, const headless::SceneData& scene) {
  std::map<std::string, const headless::MeshData*> meshes;
  for (const headless::ItemData& item : scene.items)
    if (item.mesh) meshes.emplace(item.name, item.mesh.get());
  if (!file.json.HasMember("nodes")) return;
  for (const auto& node : file.json["nodes"].GetArray()) {
    if (!node.HasMember("mesh") || node.HasMember("skin")) continue;
    const auto mesh = meshes.find(node["name"].GetString());
    if (mesh != meshes.end()) test_support::CheckUnfolds(file, node["mesh"].GetUint(), *mesh->second);
  }
}

headless::SceneData ThroughAFile(const headless::SceneData& scene, readers::ArrayForm form) {
  const fs::path file = fuzz::Folder() / "again.orvo";
  readers::WriteSceneFile(scene, file, form);
  readers::ReadReport report;
  headless::SceneData again = readers::ReadScene(file, report);
  const std::string difference = test_support::FindDifference(scene, again);
  fuzz::Require(difference.empty(), "a scene comes back from its file: " + difference);
  return again;
}

void CheckExports(const headless::SceneData& scene, readers::ArrayForm form) {
  const fs::path glb = fuzz::Folder() / "scene.glb", gltf = fuzz::Folder() / "scene.gltf";
  const fs::path second = fuzz::Folder() / "second.glb";
  fuzz::ExportScene(scene, glb, fuzz::Refusal::Unexpected);
  const GltfFile file = test_support::ReadGltfFile(glb);
  CheckMeshes(file, scene);
  test_support::CheckBounds(file);
  fuzz::ExportScene(ThroughAFile(scene, form), second, fuzz::Refusal::Unexpected);
  fuzz::Require(test_support::ReadWholeFile(glb) == test_support::ReadWholeFile(second),
                "a second export has the same bytes");
  if (file.json.HasMember("images")) return;  // lie beside the other form
  fuzz::ExportScene(scene, gltf, fuzz::Refusal::Unexpected);
  GltfFile other = test_support::ReadGltfFile(gltf);
  test_support::CheckSame(file, other);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::WriteFile(fuzz::Folder() / "red.png", "\x89PNG\r\n\x1A\n some image");
  fuzz::WriteFile(fuzz::Folder() / "blue.jpg", "\xFF\xD8\xFF another");
  const test_support::Choice choice = fuzz::ChooseByBytes(data, size);
  const auto form = choice(2) == 0 ? readers::ArrayForm::Text : readers::ArrayForm::Binary;
  const headless::SceneData scene = fuzz::MakeRandomScene(choice, fuzz::Folder().string());
  try {
    CheckExports(scene, form);
  } catch (const std::logic_error& broken) {
    fuzz::Require(false, broken.what());
  }
  return 0;
}
