#include "geometry/skins.h"

#include "geometry/skin_roads.h"

#include <algorithm>

namespace {

// The deform groups that name the mesh item and have deformers. `meshIndexInGroup` is the item's place in
// the group of the last match, and serves every group.
DeformGroupPlaces FindGroups(const SaveState& state, const char* ident, std::uint32_t& meshIndexInGroup) {
  DeformGroupPlaces groups;
  for (std::size_t place = 0; place < state.deformGroups.size(); ++place) {
    CZyUser_Item group;
    group.Set(state.deformGroups[place]);
    std::uint32_t meshCount = 0;
    state.deformerService.MeshCount(group, meshCount);
    for (std::uint32_t index = 0; index < meshCount; ++index) {
      CZyUser_Item candidate;
      const char* candidateIdent = nullptr;
      if (ZyFailed(state.deformerService.MeshByIndex(group, index, candidate)) ||
          ZyFailed(candidate.Ident(candidateIdent)) || candidateIdent != ident)
        continue;
      meshIndexInGroup = index;
      CZyUser_GroupDeformer deformer;
      if (ZySucceeded(state.deformerService.GroupDeformer(group, state.chanBind, deformer)) &&
          deformer.DeformerCount() != 0)
        groups.push_back(place);
    }
  }
  return groups;
}

}  // namespace

void CreateDeformers(SaveState& state, GltfMesh* mesh, IZyItem* item) {
  CZyUser_Item meshItem;
  meshItem.Set(item);
  state.frame->SetItem(meshItem);
  state.log.Info("Creating deformers for mesh:%s", NameOf(meshItem));
  CZyUser_Mesh hostMesh;
  if (ZyFailed(ReadMesh(state, meshItem, hostMesh))) {
    state.log.Error("Failed to get mesh for item:%s", NameOf(meshItem));
    return;
  }
  const char* ident = "";
  meshItem.Ident(ident);
  std::uint32_t meshIndexInGroup = 0;
  const DeformGroupPlaces groups = FindGroups(state, ident, meshIndexInGroup);
  const bool created = groups.empty() ? CreateSkinFromGraph(state, *mesh, meshItem, hostMesh)
                                      : CreateSkinFromGroups(state, *mesh, hostMesh, groups, meshIndexInGroup);
  if (!created) state.log.Error("Failed to create skin deformer for mesh:%s", ident);
}

zyresult ReadMesh(const SaveState& state, const CZyUser_Item& item, CZyUser_Mesh& mesh) {
  std::int32_t channel = -1;
  const zyresult found = item.ChannelLookup("mesh", channel);
  return ZyFailed(found) ? found : state.chanSetup.ValueObject(item, channel, mesh);
}

std::uint32_t SkinPointCount(const GltfMesh& mesh, const CZyUser_Mesh& hostMesh) {
  std::uint32_t count = 0;
  hostMesh.PointCount(count);
  return std::max(count, static_cast<std::uint32_t>(mesh.positions.size()));
}

std::uint32_t AddJoint(const SaveState& state, GltfSkin& skin, GltfNode* node) {
  skin.joints.push_back(node);
  const auto bind = state.setupMatricesByName.find(node->name);
  if (bind != state.setupMatricesByName.end()) skin.inverseBindMatrices.push_back(Inverse(bind->second));
  return static_cast<std::uint32_t>(skin.joints.size() - 1);
}

const char* NodeName(const GltfMesh& mesh) { return mesh.node ? mesh.node->name.c_str() : ""; }

void WarnOfDroppedInfluences(SaveState& state, const GltfSkin& skin, const GltfMesh& mesh) {
  state.log.Warning(
      "Warning - Skin: %s Node: %s has more then four joints affecting at least one vertex. This skin may not "
      "properly display animation for some vertices.",
      skin.name.c_str(), NodeName(mesh));
}
