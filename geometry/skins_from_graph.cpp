#include "geometry/skin_roads.h"

namespace {

struct DeformerEntry {
  GltfNode* node = nullptr;
  std::string mapName;  // empty: the joint carries no weights
};

using DeformerEntries = InsertionMap<std::string, DeformerEntry>;  // by the deformer's name; the first stays

// The weight map of a deformer whose influence comes from a map (type 1), else empty.
std::string WeightMapName(const SaveState& state, const CZyUser_Item& deformer) {
  std::int32_t channel = -1, type = -1;
  if (ZySucceeded(deformer.ChannelLookup("type", channel))) state.chanEdit.Integer(deformer, channel, type);
  const char* name = nullptr;
  if (type == 1 && ZySucceeded(deformer.ChannelLookup("name", channel)))
    state.chanEdit.String(deformer, channel, name);
  return name ? name : "";
}

// Gathers the deformers linked to the item. False, after a message, when there is to be no skin.
bool GatherDeformers(SaveState& state, const CZyUser_Item& item, const CZyUser_ItemGraph& graph,
                     std::uint32_t linkCount, DeformerEntries& entries) {
  for (std::uint32_t link = 0; link < linkCount; ++link) {
    CZyUser_Item deformer, driver;
    if (ZyFailed(graph.RevByIndex(item, link, deformer))) {
      state.log.Error("Failed to obtain deformer:%d for mesh", static_cast<int>(link));
      return false;
    }
    if (ZyFailed(state.deformerService.DeformerDeformationItem(deformer, driver))) continue;
    GltfNode* node = state.gltfScene->FindNode(NameOf(driver));
    if (!node) {
      state.log.Error("Failed to find node:%s (for skin deformer)", NameOf(driver));
      return false;
    }
    entries.insert({NameOf(deformer), DeformerEntry{node, WeightMapName(state, deformer)}});
  }
  return true;
}

}  // namespace

bool CreateSkinFromGraph(SaveState& state, GltfMesh& mesh, const CZyUser_Item& item,
                         const CZyUser_Mesh& hostMesh) {
  CZyUser_ItemGraph graph;
  std::uint32_t linkCount = 0;
  if (ZyFailed(state.scene.GraphLookup("deformers", graph)) || ZyFailed(graph.RevCount(item, linkCount)) ||
      linkCount == 0)
    return true;
  DeformerEntries entries;
  if (!GatherDeformers(state, item, graph, linkCount, entries)) return true;

  GltfSkin& skin = *mesh.AddSkin(std::make_unique<GltfSkin>());
  skin.name = std::string(NameOf(item)) + "_Skin";
  state.log.Info("   deformers:%d", static_cast<int>(entries.size()));
  const std::uint32_t pointCount = SkinPointCount(mesh, hostMesh);
  skin.ExtendPoints(pointCount);
  CZyUser_MeshMap map;
  hostMesh.MeshMapAccessor(map);
  CZyUser_Point point;
  hostMesh.PointAccessor(point);

  for (const auto& [name, entry] : entries) {
    const PointInfluences influences = GatherMapInfluences(map, entry.mapName, point, pointCount);
    state.log.Info("   name:\"%s\" loc:%s map:\"%s\" count:%ld", name.c_str(), entry.node->name.c_str(),
                   entry.mapName.c_str(), static_cast<long>(influences.weights.size()));
    // The warning comes for each joint that finds a point full, not once for the skin.
    if (!AddInfluences(skin, influences, AddJoint(state, skin, entry.node)))
      WarnOfDroppedInfluences(state, skin, mesh);
  }
  return true;
}
