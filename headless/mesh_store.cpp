#include "headless/mesh_store.h"

#include "headless/shading_normals.h"
#include "headless/triangulate.h"

#include <utility>

namespace headless {
namespace {

// An empty view of a mapped file has an address too.
template <class T>
const T* DataOrNull(const Array<T>& array) {
  return array.empty() ? nullptr : array.data();
}

}  // namespace

MeshStore::MeshStore(std::shared_ptr<const MeshData> data, DemandCount* triangles)
    : data_(std::move(data)), handedOut_(triangles) {
  maps_.reserve(data_->maps.size());
  for (const MeshMapData& map : data_->maps) {
    maps_.push_back({map.values.data(), DataOrNull(map.pointValues), DataOrNull(map.cornerValues), map.dimension});
  }
  if (!data_->triangleStarts.empty()) {
    triangles_ = {data_->triangleStarts.data(), data_->trianglePoints.data()};
  }
}

const std::unordered_map<ZyPointId, std::uint32_t>& MeshStore::PointsById() {
  if (!pointsById_) {
    std::unordered_map<ZyPointId, std::uint32_t> points;
    points.reserve(data_->pointIds.size());
    std::uint32_t index = 0;
    for (const ZyPointId pointId : data_->pointIds) points.emplace(pointId, index++);
    pointsById_ = std::move(points);
  }
  return *pointsById_;
}

std::uint32_t MeshStore::FindExplicitId(ZyPointId id) {
  const auto& points = PointsById();
  const auto found = points.find(id);
  return found != points.end() ? found->second : kNone;
}

bool MeshStore::HasDistinctIds() { return PointsById().size() == data_->pointIds.size(); }

const TriangleTable& MeshStore::Triangles() {
  if (!triangles_.starts) TriangulatePolygons();
  return triangles_;
}

void MeshStore::TriangulatePolygons() {
  Triangulator triangulator;
  const MeshData& mesh = *data_;
  triangleStarts_.assign(1, 0);
  triangleStarts_.reserve(std::size_t{mesh.PolygonCount()} + 1);
  trianglePoints_.clear();
  for (std::uint32_t polygon = 0; polygon < mesh.PolygonCount(); ++polygon) {
    const std::uint32_t begin = mesh.polygonStarts[polygon];
    const std::uint32_t size = mesh.polygonStarts[polygon + 1] - begin;
    if (size > 4) {
      triangulator.Append(mesh.points.data(), {mesh.polygonPoints.data() + begin, size}, trianglePoints_);
    }
    triangleStarts_.push_back(static_cast<std::uint32_t>(trianglePoints_.size() / 3));
  }
  triangles_ = {triangleStarts_.data(), trianglePoints_.data()};
}

std::shared_ptr<const double> MeshStore::CornerNormals() {
  if (!data_->cornerNormals.empty()) return {data_, data_->cornerNormals.data()};
  std::shared_ptr<const std::vector<double>> normals = calculatedNormals_.lock();
  if (!normals) {
    normals = std::make_shared<const std::vector<double>>(CalculateCornerNormals(*data_));
    calculatedNormals_ = normals;
  }
  return {normals, normals->data()};
}

std::shared_ptr<MeshStore> MakeMeshStore(std::shared_ptr<const MeshData> data, DemandCount* triangles) {
  return std::make_shared<MeshStore>(std::move(data), triangles);
}

}  // namespace headless
