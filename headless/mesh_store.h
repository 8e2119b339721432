// What a mesh computes once for all of its accessors.
#pragma once

#include "headless/boxed.h"
#include "headless/mesh_access.h"
#include "headless/mesh_data.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace headless {

// Triangles of a mesh: those of polygon p are starts[p] up to starts[p + 1], three point indices each.
struct TriangleTable {
  const std::uint32_t* starts = nullptr;
  const std::uint32_t* points = nullptr;
};

// The values of one map; what isn't there is null.
struct MapView {
  const float* values = nullptr;
  const std::uint32_t* pointValues = nullptr;
  const std::uint32_t* cornerValues = nullptr;
  std::uint32_t dimension = 1;
};

class MeshStore {
 public:
  MeshStore(std::shared_ptr<const MeshData> data, DemandCount* triangles);

  const MeshData& Data() const { return *data_; }
  const std::vector<MapView>& Maps() const { return maps_; }
  void CountTriangle() const {
    if (handedOut_) handedOut_->Add();
  }

  // The point that an explicit id belongs to, the first one when several carry it; kNone for an unknown id.
  std::uint32_t FindExplicitId(ZyPointId id);
  // Whether each explicit id belongs to one point.
  bool HasDistinctIds();
  // All triangles when they were recorded, else those of polygons of more than four corners alone.
  const TriangleTable& Triangles();
  // x, y, z per polygon corner; never null. What is calculated lasts as long as somebody holds it, so that a scene
  // of many meshes doesn't keep the normals of all.
  std::shared_ptr<const double> CornerNormals();

 private:
  const std::unordered_map<ZyPointId, std::uint32_t>& PointsById();
  void TriangulatePolygons();

  std::shared_ptr<const MeshData> data_;
  DemandCount* handedOut_;
  std::vector<MapView> maps_;
  Boxed<std::unordered_map<ZyPointId, std::uint32_t>> pointsById_;
  TriangleTable triangles_;
  std::vector<std::uint32_t> triangleStarts_;
  std::vector<std::uint32_t> trianglePoints_;
  std::weak_ptr<const std::vector<double>> calculatedNormals_;
};

}  // namespace headless
