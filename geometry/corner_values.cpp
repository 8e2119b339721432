#include "geometry/corner_values.h"

#include <algorithm>
#include <cmath>

namespace {

// Folds a value into its table. The corners of a point mostly share one value, so the one that the point had
// last is tried before the table is asked.
template <class T, std::size_t N>
std::uint32_t FoldCornerValue(ValueTable<T, N>& table, std::vector<std::uint32_t>& lastOfPoint,
                              const std::array<T, N>& value, std::vector<std::array<T, N>>& data,
                              std::uint32_t place) {
  if (place >= lastOfPoint.size()) return table.Fold(value, data);
  std::uint32_t& last = lastOfPoint[place];
  if (last == kUnknownPoint || data[last] != value) last = table.Fold(value, data);
  return last;
}

// The normal map's value at the corner; false when neither the corner nor its point holds one.
bool ReadMappedNormal(const MeshScanState& scan, const Corner& corner, double (&normal)[3]) {
  float mapped[3] = {0, 0, 0};
  scan.polygonAccessor.MapEvaluate(scan.normalMapId, corner.point, mapped);
  float stored[3];
  if (scan.polygonAccessor.MapValue(scan.normalMapId, corner.point, stored) == ZYe_NO_VALUE &&
      scan.pointAccessor.MapValue(scan.normalMapId, stored) == ZYe_NO_VALUE)
    return false;
  for (int axis = 0; axis < 3; ++axis) normal[axis] = mapped[axis];
  return true;
}

std::array<double, 3> Normalised(const double (&v)[3]) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (length > 0) return {v[0] / length, v[1] / length, v[2] / length};
  return {1, 0, 0};
}

// Folds the normalised normal. The corners of a point mostly share one normal, which is then neither normalised
// nor looked up again.
std::uint32_t FoldNormal(MeshScanState& scan, std::uint32_t place, const double (&normal)[3]) {
  GltfMesh& mesh = *scan.currentMesh;
  if (place >= scan.lastNormalOfPoint.size())
    return scan.normalIndexByValue.Fold(Normalised(normal), mesh.normals);
  LastNormal& last = scan.lastNormalOfPoint[place];
  if (last.index == kUnknownPoint || !std::equal(normal, normal + 3, last.normal)) {
    std::copy(normal, normal + 3, last.normal);
    last.index = scan.normalIndexByValue.Fold(Normalised(normal), mesh.normals);
  }
  return last.index;
}

}  // namespace

void ReadColor(MeshScanState& scan, ColorScan& color, const Corner& corner) {
  // Four floats for an RGB map too: its alpha comes out as 0.
  std::array<float, 4> value = {};
  scan.pointAccessor.SelectById(corner.point);
  if (scan.polygonAccessor.MapEvaluate(color.mapId, corner.point, value.data()) != ZYe_OK) value = {};
  color.colorMap->indices.push_back(
      FoldCornerValue(color.values, color.lastOfPoint, value, color.colorMap->data, corner.place));
}

void ReadTangent(MeshScanState& scan, std::size_t k, const Corner& corner) {
  GltfTangentMap& map = *scan.tangentScans[k].tangentMap;
  TangentBasis basis = {};
  scan.pointAccessor.SelectById(corner.point);
  if (scan.polygonAccessor.MapEvaluate(scan.tangentScans[k].mapId, corner.point, basis.data()) != ZYe_OK)
    basis = {};
  map.indices.push_back(scan.tangentValueTables[k].Fold(basis, map.data));
}

void ReadNormal(MeshScanState& scan, const Corner& corner) {
  double normal[3] = {0, 0, 0};
  scan.pointAccessor.SelectById(corner.point);
  if (!scan.hasNormalMap || !ReadMappedNormal(scan, corner, normal))
    scan.pointAccessor.Normal(corner.polygon, normal);
  scan.currentMesh->normalIndex.push_back(FoldNormal(scan, corner.place, normal));
}

void ReadUv(MeshScanState& scan, UvScan& uv, const Corner& corner) {
  std::array<float, 2> value = {};
  const bool valid = scan.polygonAccessor.MapEvaluate(uv.mapId, corner.point, value.data()) == ZYe_OK;
  if (!valid && uv.valid.empty()) uv.valid.assign(uv.values.size(), true);
  uv.values.push_back(value);
  if (!valid || !uv.valid.empty()) uv.valid.push_back(valid);
}
