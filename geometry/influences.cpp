#include "geometry/influences.h"

#include "host/fourcc.h"

#include <algorithm>

namespace {

// Collects the values of a weight map.
class WeightVisitor final : public CZyImpl_AbstractVisitor {
 public:
  WeightVisitor(const CZyUser_Point& point, ZyMeshMapId map, std::uint32_t pointCount, PointInfluences& influences)
      : point_(point), map_(map), pointCount_(pointCount), influences_(influences) {}

  zyresult Evaluate() override {
    std::uint32_t index = 0;
    float weight = 0;
    if (ZyFailed(point_.Index(index)) || index >= pointCount_) return ZYe_OK;
    point_.MapValue(map_, &weight);
    influences_.points.push_back(index);
    influences_.weights.push_back(weight);
    return ZYe_OK;
  }

 private:
  const CZyUser_Point& point_;  // stands on the visited point
  ZyMeshMapId map_;
  std::uint32_t pointCount_;
  PointInfluences& influences_;
};

}  // namespace

std::vector<PointInfluences> GatherGroupInfluences(const CZyUser_GroupDeformer& group, std::uint32_t mesh,
                                                   const CZyUser_Point& point, std::uint32_t pointCount,
                                                   std::uint32_t room) {
  const std::uint32_t deformerCount = group.DeformerCount();
  std::vector<PointInfluences> influences(deformerCount);
  std::vector<std::uint32_t> deformers(room);
  std::vector<float> weights(room);
  for (std::uint32_t index = 0; index < pointCount; ++index) {
    ZyPointId id = 0;
    std::uint32_t count = 0;
    if (ZyFailed(point.SelectByIndex(index)) || ZyFailed(point.Id(id)) ||
        ZyFailed(group.PointWeights(mesh, id, deformers.data(), weights.data(), count)))
      continue;
    for (std::uint32_t pair = 0; pair < std::min(count, room); ++pair) {
      if (deformers[pair] >= deformerCount) continue;
      influences[deformers[pair]].points.push_back(index);
      influences[deformers[pair]].weights.push_back(weights[pair]);
    }
  }
  return influences;
}

PointInfluences GatherMapInfluences(const CZyUser_MeshMap& map, const std::string& mapName,
                                    const CZyUser_Point& point, std::uint32_t pointCount) {
  PointInfluences influences;
  if (mapName.empty()) return influences;  // of a deformer without a map; a map without a name is another's
  ZyMeshMapId id = 0;
  if (ZyFailed(map.SelectByName(kMapWeight, mapName.c_str())) || ZyFailed(map.Id(id))) return influences;
  WeightVisitor visitor(point, id, pointCount, influences);
  map.EnumerateContents(visitor, point);
  return influences;
}

bool AddInfluences(GltfSkin& skin, const PointInfluences& influences, std::uint32_t joint) {
  bool allTaken = true;
  for (std::size_t pair = 0; pair < influences.points.size(); ++pair)
    allTaken &= skin.AddInfluence(influences.points[pair], influences.weights[pair], joint);
  return allTaken;
}
