#include "tool/index_bits.h"

#include "headless/mesh_access.h"
#include "host/object.h"

#include <algorithm>

namespace tool {
namespace {

constexpr std::uint64_t kMaxShortCorners = 65535;

// More triangles than the corners of its polygons allow for has a mesh only when they are recorded.
std::uint64_t MostCorners(const headless::MeshData& mesh) {
  return 3 * std::max<std::uint64_t>(mesh.polygonPoints.size(), mesh.trianglePoints.size() / 3);
}

// As the host tells the savers.
std::uint64_t CountCorners(const std::shared_ptr<const headless::MeshData>& data) {
  std::size_t live = 0;
  CountedRef<IZyMesh> mesh;
  mesh.Take(headless::NewMesh(headless::MakeMeshStore(data), live));
  IZyObject* object = nullptr;
  if (ZyFailed(mesh.Raw()->PolygonAccessor(object))) return 0;
  CountedRef<IZyPolygon> polygon;
  polygon.Take(object);
  std::uint64_t corners = 0;
  for (std::uint32_t index = 0; index < data->PolygonCount(); ++index) {
    std::uint32_t triangles = 0;
    polygon.Raw()->SelectByIndex(index);
    polygon.Raw()->TriangleCount(triangles);
    corners += std::uint64_t{3} * triangles;
  }
  return corners;
}

}  // namespace

std::optional<LargeMesh> FindMeshFor32Bits(const headless::SceneData& scene) {
  for (const headless::ItemData& item : scene.items) {
    if (!item.mesh || MostCorners(*item.mesh) <= kMaxShortCorners) continue;
    const std::uint64_t corners = CountCorners(item.mesh);
    if (corners > kMaxShortCorners) return LargeMesh{item.name, corners};
  }
  return std::nullopt;
}

}  // namespace tool
