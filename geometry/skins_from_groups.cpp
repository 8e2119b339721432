#include "geometry/skin_roads.h"

#include <algorithm>

namespace {

// Adds the deformer as a joint. False when its driving item was not exported, which ends the skin.
bool AddDeformer(SaveState& state, const CZyUser_Item& deformer, const PointInfluences& influences, GltfSkin& skin,
                 bool& overflowed) {
  CZyUser_Item driver;
  if (ZyFailed(state.deformerService.DeformerDeformationItem(deformer, driver))) return true;
  const char* name = NameOf(driver);
  const char* ident = "";
  deformer.Ident(ident);
  state.log.Info("   deformer:%s ident:%s weights:%ld", name, ident, static_cast<long>(influences.weights.size()));
  GltfNode* node = state.gltfScene->FindNode(name);
  if (!node) {
    state.log.Error("Failed to find node:%s", name);
    return false;
  }
  overflowed |= !AddInfluences(skin, influences, AddJoint(state, skin, node));
  return true;
}

// Weights that the host may give for a point: as many as the mesh has points, or a tiny one deformers. The place
// was found in the last group, and in this one it may be that of another mesh, with more points.
std::uint32_t RoomForWeights(const SaveState& state, const CZyUser_Item& group, std::uint32_t meshIndexInGroup,
                             std::uint32_t pointCount, std::uint32_t deformerCount) {
  CZyUser_Item member;
  CZyUser_Mesh memberMesh;
  std::uint32_t memberPoints = 0;
  if (ZySucceeded(state.deformerService.MeshByIndex(group, meshIndexInGroup, member)) &&
      ZySucceeded(ReadMesh(state, member, memberMesh)))
    memberMesh.PointCount(memberPoints);
  return std::max({pointCount, deformerCount, memberPoints});
}

void CreateGroupSkin(SaveState& state, GltfMesh& mesh, const CZyUser_Mesh& hostMesh, const CZyUser_Item& group,
                     std::uint32_t meshIndexInGroup, const std::string& name) {
  auto skin = std::make_unique<GltfSkin>();
  skin->name = name;
  CZyUser_GroupDeformer deformer;
  state.deformerService.GroupDeformer(group, state.chanBind, deformer);
  std::uint32_t pointCount = 0;
  hostMesh.PointCount(pointCount);
  skin->ExtendPoints(SkinPointCount(mesh, hostMesh));
  CZyUser_Point point;
  hostMesh.PointAccessor(point);
  const std::uint32_t room = RoomForWeights(state, group, meshIndexInGroup, pointCount, deformer.DeformerCount());
  const auto influences = GatherGroupInfluences(deformer, meshIndexInGroup, point, pointCount, room);

  bool overflowed = false;
  for (std::uint32_t index = 0; index < influences.size(); ++index) {
    CZyUser_Item item;
    if (ZyFailed(deformer.DeformerByIndex(index, item))) continue;
    if (!AddDeformer(state, item, influences[index], *skin, overflowed)) break;
  }
  const GltfSkin& added = *mesh.AddSkin(std::move(skin));
  if (overflowed) WarnOfDroppedInfluences(state, added, mesh);
}

}  // namespace

bool CreateSkinFromGroups(SaveState& state, GltfMesh& mesh, const CZyUser_Mesh& hostMesh,
                          const DeformGroupPlaces& groups, std::uint32_t meshIndexInGroup) {
  CZyUser_Item group;
  group.Set(state.deformGroups[groups.front()]);
  // All skins of a mesh have this one name.
  const std::string name = std::string(groups.size() == 1 ? NameOf(group) : NodeName(mesh)) + "_Skin";
  for (const std::size_t place : groups) {
    group.Set(state.deformGroups[place]);
    CreateGroupSkin(state, mesh, hostMesh, group, meshIndexInGroup, name);
  }
  return true;
}
