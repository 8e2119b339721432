#include "geometry/corner_values.h"

namespace {

// False when the corner has no value, which then is zeros.
template <std::size_t N>
bool Evaluate(const MeshScanState& scan, ZyMeshMapId map, ZyPointId point, std::array<float, N>& value) {
  value = {};
  if (scan.polygonAccessor.MapEvaluate(map, point, value.data()) == ZYe_OK) return true;
  value = {};
  return false;
}

std::uint32_t ReadTangent(MeshScanState& scan, std::size_t k, ZyPointId point) {
  TangentBasis basis;
  Evaluate(scan, scan.tangentScans[k].mapId, point, basis);
  return scan.tangentValueTables[k].Fold(basis, scan.tangentScans[k].tangentMap->data);
}

// The normal map's value at the corner; false when neither the corner nor its point holds one.
bool ReadMappedNormal(const MeshScanState& scan, ZyPointId point, std::array<double, 3>& normal) {
  float mapped[3] = {0, 0, 0};
  scan.polygonAccessor.MapEvaluate(scan.normalMapId, point, mapped);
  float stored[3];
  if (scan.polygonAccessor.MapValue(scan.normalMapId, point, stored) == ZYe_NO_VALUE) {
    scan.pointAccessor.SelectById(point);
    if (scan.pointAccessor.MapValue(scan.normalMapId, stored) == ZYe_NO_VALUE) return false;
  }
  normal = {mapped[0], mapped[1], mapped[2]};
  return true;
}

void ReadNormal(const MeshScanState& scan, ZyPolygonId polygon, ZyPointId point, std::array<double, 3>& normal) {
  if (scan.hasNormalMap && ReadMappedNormal(scan, point, normal)) return;
  double calculated[3] = {0, 0, 0};
  scan.pointAccessor.SelectById(point);
  scan.pointAccessor.Normal(polygon, calculated);
  normal = {calculated[0], calculated[1], calculated[2]};
}

}  // namespace

void ReadCornerValues(MeshScanState& scan, ZyPolygonId polygon, ZyPointId point) {
  // Most polygons have only corners that are known by their keys.
  if (!scan.isSelected) scan.isSelected = ZySucceeded(scan.polygonAccessor.SelectById(polygon));
  CornerValues& corner = scan.corner;
  // Four floats for an RGB map too: its alpha comes out as 0.
  for (std::size_t k = 0; k < scan.colorScans.size(); ++k)
    Evaluate(scan, scan.colorScans[k].mapId, point, corner.colors[k]);
  for (std::size_t k = 0; k < scan.tangentScans.size(); ++k) {
    const std::uint32_t tangent = ReadTangent(scan, k, point);
    if (k == 0) corner.tangent = tangent;  // the others aren't written
  }
  ReadNormal(scan, polygon, point, corner.hostNormal);
  for (std::size_t k = 0; k < scan.uvScans.size(); ++k)
    corner.missingUvs[k] = !Evaluate(scan, scan.uvScans[k].mapId, point, corner.uvs[k]);
}

// Keys tell of evaluated maps only: not of calculated normals, nor of tangent tables, which count every corner.
void ChooseKeyMaps(MeshScanState& scan) {
  if (!scan.valueKeys || !scan.hasNormalMap || !scan.tangentScans.empty()) return;
  scan.keyMaps.push_back(scan.normalMapId);
  for (const UvScan& uv : scan.uvScans) scan.keyMaps.push_back(uv.mapId);
  for (const ColorScan& color : scan.colorScans) scan.keyMaps.push_back(color.mapId);
  scan.keys.resize(3 * scan.keyMaps.size());
}

bool ReadKeys(MeshScanState& scan, std::uint32_t triangle, ZyPointId (&points)[3]) {
  const auto count = static_cast<std::uint32_t>(scan.keyMaps.size());
  if (count == 0) return false;
  return ZySucceeded(scan.valueKeys.TriangleKeys(triangle, scan.keyMaps.data(), count, points, scan.keys.data()));
}
