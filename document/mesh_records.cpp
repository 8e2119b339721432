#include "document/mesh_records.h"

#include <cassert>

namespace {

// Clearing would keep the memory.
template <class... Containers>
void Free(Containers&... containers) {
  ((containers = Containers()), ...);
}

}  // namespace

GltfColorMap* GltfMesh::CreateColorMap() { return colorMaps.emplace_back(std::make_unique<GltfColorMap>()).get(); }

GltfTangentMap* GltfMesh::CreateTangentMap() {
  return tangentMaps.emplace_back(std::make_unique<GltfTangentMap>()).get();
}

GltfUvMap* GltfMesh::CreateUvMap() { return uvMaps.emplace_back(std::make_unique<GltfUvMap>()).get(); }

GltfSkin* GltfMesh::AddSkin(std::unique_ptr<GltfSkin> skin) { return skins.emplace_back(std::move(skin)).get(); }

void GltfMesh::FreeArrays() {
  Free(wedgeIndex, positionIndex, colorMaps, tangentMaps, normals, uvMaps, polygonsByTag, polygonsByPart,
       positions);
  for (const auto& skin : skins) Free(skin->jointIndices, skin->jointWeights, skin->influenceCount);
}

bool GltfSkin::AddInfluence(std::uint32_t point, float weight, std::uint32_t joint) {
  assert(point < influenceCount.size());
  std::uint32_t& used = influenceCount[point];
  if (used == jointIndices[point].size()) return false;
  jointIndices[point][used] = joint;
  jointWeights[point][used] = static_cast<double>(weight);
  ++used;
  return true;
}

void GltfSkin::ExtendPoints(std::uint32_t n) {
  const std::size_t points = influenceCount.size() + n;
  jointIndices.resize(points);
  jointWeights.resize(points);
  influenceCount.resize(points);
}
