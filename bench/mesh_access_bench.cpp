// The per-corner questions of an exporter, on meshes of about a million polygon corners.

#include "headless/mesh_access.h"
#include "headless/mesh_check.h"
#include "headless/shading_normals.h"
#include "host/fourcc.h"
#include "host/user_mesh.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace {

using headless::MeshData;

constexpr std::uint32_t kCorners = 1'000'000;

enum class Ids { Default, Explicit };
enum class Shape { Triangles, Quads, RowPolygons };

// Polygons of one cell of a hilly grid, which is `side` cells wide; a row polygon takes half a row.
std::vector<std::vector<std::uint32_t>> CellPolygons(Shape shape, std::uint32_t side, std::uint32_t x,
                                                     std::uint32_t y) {
  const std::uint32_t at = y * (side + 1) + x;
  const std::uint32_t above = at + side + 1;
  if (shape == Shape::Quads) return {{at, at + 1, above + 1, above}};
  if (shape == Shape::Triangles) return {{at, at + 1, above + 1}, {at, above + 1, above}};
  const std::uint32_t half = side / 2;
  if (x % half != 0) return {};
  std::vector<std::uint32_t> polygon;
  for (std::uint32_t step = 0; step <= half; ++step) polygon.push_back(at + step);
  for (std::uint32_t step = half + 1; step-- > 0;) polygon.push_back(above + step);
  return {polygon};
}

MeshData GridMesh(Shape shape, Ids ids) {
  const std::uint32_t perCell = shape == Shape::Triangles ? 6 : shape == Shape::Quads ? 4 : 2;
  const auto side = static_cast<std::uint32_t>(std::sqrt(kCorners / perCell)) & ~1u;
  std::vector<float> points, uvs;
  for (std::uint32_t y = 0; y <= side; ++y) {
    for (std::uint32_t x = 0; x <= side; ++x) {
      const float u = static_cast<float>(x) / static_cast<float>(side);
      const float v = static_cast<float>(y) / static_cast<float>(side);
      points.insert(points.end(), {u, v, 0.05f * std::sin(20 * u) * std::sin(20 * v)});
      uvs.insert(uvs.end(), {u, v});
    }
  }
  std::vector<std::uint32_t> starts = {0}, corners;
  for (std::uint32_t y = 0; y < side; ++y) {
    for (std::uint32_t x = 0; x < side; ++x) {
      for (const auto& polygon : CellPolygons(shape, side, x, y)) {
        corners.insert(corners.end(), polygon.begin(), polygon.end());
        starts.push_back(static_cast<std::uint32_t>(corners.size()));
      }
    }
  }
  MeshData mesh;
  if (ids == Ids::Explicit) {
    std::vector<std::uint64_t> pointIds;
    for (std::size_t point = 0; point < points.size() / 3; ++point) pointIds.push_back(0x5000'0000 + point * 64);
    mesh.pointIds = std::move(pointIds);
  }
  mesh.points = std::move(points);
  mesh.polygonStarts = std::move(starts);
  mesh.polygonPoints = corners;
  mesh.maps = {{kMapUv, "Texture", 2, std::move(uvs), {}, std::move(corners)}};
  return mesh;
}

// What an exporter asks at each triangle corner: a map at the corner, its stored values, the normal.
double ScanMesh(const CZyUser_Mesh& mesh) {
  CZyUser_Point point;
  CZyUser_Polygon polygon;
  mesh.PointAccessor(point);
  mesh.PolygonAccessor(polygon);
  std::uint32_t polygons = 0;
  mesh.PolygonCount(polygons);
  double sum = 0;
  for (std::uint32_t index = 0; index < polygons; ++index) {
    polygon.SelectByIndex(index);
    ZyPolygonId id = 0;
    polygon.Id(id);
    std::uint32_t triangles = 0;
    polygon.TriangleCount(triangles);
    for (std::uint32_t triangle = 0; triangle < triangles; ++triangle) {
      ZyPointId corners[3] = {};
      polygon.TriangleByIndex(triangle, corners);
      for (const ZyPointId corner : corners) {
        float uv[2] = {};
        double normal[3] = {};
        polygon.SelectById(id);
        point.SelectById(corner);
        polygon.MapEvaluate(1, corner, uv);
        polygon.MapValue(1, corner, uv);
        point.MapValue(1, uv);
        point.Normal(id, normal);
        sum += uv[0] + normal[2];
      }
    }
  }
  return sum;
}

template <Shape shape, Ids ids>
void ScanCorners(benchmark::State& state) {
  const auto data = std::make_shared<const MeshData>(GridMesh(shape, ids));
  std::size_t live = 0;
  CZyUser_Mesh mesh;
  mesh.Take(headless::NewMesh(headless::MakeMeshStore(data), live));
  ScanMesh(mesh);  // what is computed once stays out of it
  for (auto _ : state) benchmark::DoNotOptimize(ScanMesh(mesh));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(data->polygonPoints.size()));
}
BENCHMARK(ScanCorners<Shape::Triangles, Ids::Default>)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanCorners<Shape::Triangles, Ids::Explicit>)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanCorners<Shape::Quads, Ids::Default>)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanCorners<Shape::RowPolygons, Ids::Default>)->Unit(benchmark::kMillisecond);

// All triangles of a mesh of polygons of about a thousand corners, worked out anew.
void TriangulateRows(benchmark::State& state) {
  const auto data = std::make_shared<const MeshData>(GridMesh(Shape::RowPolygons, Ids::Default));
  for (auto _ : state) {
    std::size_t live = 0;
    CZyUser_Mesh mesh;
    CZyUser_Polygon polygon;
    mesh.Take(headless::NewMesh(headless::MakeMeshStore(data), live));
    mesh.PolygonAccessor(polygon);
    polygon.SelectByIndex(0);
    std::uint32_t count = 0;
    polygon.TriangleCount(count);
    benchmark::DoNotOptimize(count);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(data->polygonPoints.size()));
}
BENCHMARK(TriangulateRows)->Unit(benchmark::kMillisecond);

void CalculateNormals(benchmark::State& state) {
  const MeshData mesh = GridMesh(Shape::Triangles, Ids::Default);
  for (auto _ : state) benchmark::DoNotOptimize(headless::CalculateCornerNormals(mesh).data());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(mesh.polygonPoints.size()));
}
BENCHMARK(CalculateNormals)->Unit(benchmark::kMillisecond);

void CheckMesh(benchmark::State& state) {
  const MeshData mesh = GridMesh(Shape::Triangles, Ids::Default);
  for (auto _ : state) benchmark::DoNotOptimize(headless::FindMeshFault(mesh).has_value());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(mesh.polygonPoints.size()));
}
BENCHMARK(CheckMesh)->Unit(benchmark::kMillisecond);

}  // namespace
