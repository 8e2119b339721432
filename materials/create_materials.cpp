#include "materials/create_materials.h"

#include "materials/tag_resolver.h"

namespace {

void AssignMaterials(const SaveState& state, GltfMesh& mesh, const std::vector<std::string>& tags) {
  for (const std::string& tag : tags) {
    const auto found = state.polyTagMaterials.find(tag);
    if (found != state.polyTagMaterials.end()) mesh.materialByTag.insert({tag, found->second});
  }
}

}  // namespace

zyresult CreateMaterials(SaveState& state) {
  if (state.options.materials == 0) return ZYe_OK;
  state.log.Info("Creating materials");
  for (const std::string& tag : state.collectedTags)
    if (!ResolvePolyTag(state, tag)) state.log.Error("Failed to create material:%s", tag.c_str());
  for (const auto& [mesh, tags] : state.meshTags) AssignMaterials(state, *mesh, tags);
  return ZYe_OK;
}
