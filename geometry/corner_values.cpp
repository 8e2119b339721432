#include "geometry/corner_values.h"

namespace {

using TrianglePoints = ZyPointId[3];

constexpr std::uint32_t BitOf(std::size_t place) { return 1u << place; }

// Bit c stands for corner c: whether it has a value, and whether it or its point holds one of its own.
struct CornerBits {
  std::uint32_t evaluated = 0, stored = 0;
};

// Whether the corner or its point holds a value of its own in the normal map.
bool IsStored(const MeshScanState& scan, ZyMeshMapId map, ZyPointId point) {
  float value[3];
  if (scan.polygonAccessor.MapValue(map, point, value) != ZYe_NO_VALUE) return true;
  scan.pointAccessor.SelectById(point);
  return scan.pointAccessor.MapValue(map, value) != ZYe_NO_VALUE;
}

// The road for hosts without IZyTriangleMaps.
void EvaluateEach(const MeshScanState& scan, ZyMeshMapId map, const TrianglePoints& points,
                  float* const (&values)[3], CornerBits& bits) {
  bits = {};
  for (std::size_t c = 0; c < 3; ++c) {
    if (scan.polygonAccessor.MapEvaluate(map, points[c], values[c]) == ZYe_OK) bits.evaluated |= BitOf(c);
    if (map == scan.normalMapId && IsStored(scan, map, points[c])) bits.stored |= BitOf(c);
  }
}

// Evaluates a map at the three corners; `stored` is for the normal map alone.
void Evaluate(const MeshScanState& scan, ZyMeshMapId map, const TrianglePoints& points, float* const (&values)[3],
              CornerBits& bits) {
  if (ZyFailed(scan.triangleMaps.MapEvaluateTriangle(map, points, values, bits.evaluated, bits.stored)))
    EvaluateEach(scan, map, points, values, bits);
}

// `valueOf(corner)` is the array of a corner that takes the map's value, zeros when there is none.
template <class ValueOf>
std::uint32_t EvaluateInto(MeshScanState& scan, ZyMeshMapId map, const TrianglePoints& points,
                           const ValueOf& valueOf) {
  float* values[3];
  for (std::size_t c = 0; c < 3; ++c) {
    valueOf(scan.corners[c]) = {};
    values[c] = valueOf(scan.corners[c]).data();
  }
  CornerBits bits;
  Evaluate(scan, map, points, values, bits);
  for (std::size_t c = 0; c < 3; ++c)
    if ((bits.evaluated & BitOf(c)) == 0) valueOf(scan.corners[c]) = {};
  return bits.evaluated;
}

void ReadTangents(MeshScanState& scan, std::size_t k, const TrianglePoints& points) {
  EvaluateInto(scan, scan.tangentScans[k].mapId, points,
               [](CornerValues& corner) -> TangentBasis& { return corner.basis; });
  for (CornerValues& corner : scan.corners) {
    const std::uint32_t index =
        scan.tangentValueTables[k].Fold(corner.basis, scan.tangentScans[k].tangentMap->data);
    if (k == 0) corner.tangent = index;  // the others aren't written
  }
}

void ReadCalculatedNormal(const MeshScanState& scan, ZyPolygonId polygon, ZyPointId point,
                          std::array<double, 3>& normal) {
  double calculated[3] = {0, 0, 0};
  scan.pointAccessor.SelectById(point);
  scan.pointAccessor.Normal(polygon, calculated);
  normal = {calculated[0], calculated[1], calculated[2]};
}

// Where neither the corner nor its point holds a value in the normal map, the host calculates the normal.
void ReadNormals(MeshScanState& scan, ZyPolygonId polygon, const TrianglePoints& points) {
  float mapped[3][3] = {};
  CornerBits bits;
  if (scan.hasNormalMap) Evaluate(scan, scan.normalMapId, points, {mapped[0], mapped[1], mapped[2]}, bits);
  for (std::size_t c = 0; c < 3; ++c) {
    if ((bits.stored & BitOf(c)) != 0)
      scan.corners[c].normal = {mapped[c][0], mapped[c][1], mapped[c][2]};
    else
      ReadCalculatedNormal(scan, polygon, points[c], scan.corners[c].normal);
  }
}

}  // namespace

void ReadCornerValues(MeshScanState& scan, ZyPolygonId polygon, const ZyPointId (&points)[3]) {
  // Four floats for an RGB map too: its alpha comes out as 0.
  for (std::size_t k = 0; k < scan.colorScans.size(); ++k)
    EvaluateInto(scan, scan.colorScans[k].mapId, points,
                 [k](CornerValues& corner) -> std::array<float, 4>& { return corner.colors[k]; });
  for (std::size_t k = 0; k < scan.tangentScans.size(); ++k) ReadTangents(scan, k, points);
  ReadNormals(scan, polygon, points);
  for (std::size_t k = 0; k < scan.uvScans.size(); ++k) {
    const std::uint32_t evaluated =
        EvaluateInto(scan, scan.uvScans[k].mapId, points,
                     [k](CornerValues& corner) -> std::array<float, 2>& { return corner.uvs[k]; });
    for (std::size_t c = 0; c < 3; ++c) scan.corners[c].missingUvs[k] = (evaluated & BitOf(c)) == 0;
  }
}
