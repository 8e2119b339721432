#include "geometry/wedges.h"

#include "geometry/value_table.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

// Corners of a mesh whose tables get room for a wedge each.
constexpr std::size_t kSmallMesh = 64;

std::array<double, 3> Normalised(const std::array<double, 3>& v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (length > 0) return {v[0] / length, v[1] / length, v[2] / length};
  return {1, 0, 0};
}

bool HasNormal(const MeshScanState& scan, std::uint32_t wedge, const std::array<double, 3>& normal) {
  // Corners of a point mostly have the same normal from the host, which then isn't normalised again.
  return scan.hostNormals[wedge] == normal || scan.currentMesh->normals[wedge] == Normalised(normal);
}

bool IsWedge(const MeshScanState& scan, std::uint32_t wedge, const CornerValues& corner) {
  if (!HasNormal(scan, wedge, corner.normal)) return false;
  const std::array<float, 2>* value = corner.uvs.data();
  const std::uint8_t* missing = corner.missingUvs.data();
  for (const UvScan& uv : scan.uvScans)
    if (uv.uvMap->data[wedge] != *value++ || uv.missing[wedge] != *missing++) return false;
  const std::array<float, 4>* color = corner.colors.data();
  for (const ColorScan& known : scan.colorScans)
    if (known.colorMap->data[wedge] != *color++) return false;
  return scan.tangentScans.empty() || scan.tangentScans[0].tangentMap->indices[wedge] == corner.tangent;
}

std::uint64_t HashOf(const CornerValues& corner) {
  std::uint64_t hash = corner.tangent;
  HashNumbers(hash, Normalised(corner.normal));
  for (const std::array<float, 2>& uv : corner.uvs) HashNumbers(hash, uv);
  for (const std::array<float, 4>& color : corner.colors) HashNumbers(hash, color);
  return hash;
}

// `keys` is the corner's row of keys, null for none.
std::uint32_t AddWedge(MeshScanState& scan, std::uint32_t place, const CornerValues& corner,
                       const std::uint32_t* keys) {
  GltfMesh& mesh = *scan.currentMesh;
  mesh.positionIndex.push_back(place);
  mesh.normals.push_back(Normalised(corner.normal));
  scan.hostNormals.push_back(corner.normal);
  for (std::size_t k = 0; k < scan.uvScans.size(); ++k) {
    scan.uvScans[k].uvMap->data.push_back(corner.uvs[k]);
    scan.uvScans[k].missing.push_back(corner.missingUvs[k]);
  }
  for (std::size_t k = 0; k < scan.colorScans.size(); ++k)
    scan.colorScans[k].colorMap->data.push_back(corner.colors[k]);
  if (!scan.tangentScans.empty()) scan.tangentScans[0].tangentMap->indices.push_back(corner.tangent);
  for (std::size_t m = 0; m < scan.keyMaps.size(); ++m)
    scan.keysOfWedge.push_back(keys ? keys[m] : IZyValueKeys::kNoKey);
  return scan.wedgesOfPoint.Append(place, [&] { return HashOf(corner); });
}

std::uint32_t FoldCorner(MeshScanState& scan, std::uint32_t place, const CornerValues& corner,
                         const std::uint32_t* keys) {
  const std::uint32_t wedge = scan.wedgesOfPoint.Find(
      place, [&](std::uint32_t known) { return IsWedge(scan, known, corner); }, [&] { return HashOf(corner); });
  return wedge == PointFold::kNone ? AddWedge(scan, place, corner, keys) : wedge;
}

template <class T, std::size_t N>
bool HasZero(const std::array<T, N>& value) {
  return std::any_of(value.begin(), value.end(), [](T number) { return number == 0; });
}

template <class T, std::size_t N>
bool HasNegativeZero(const std::vector<std::array<T, N>>& values) {
  return std::any_of(values.begin(), values.end(), [](const std::array<T, N>& value) {
    return std::any_of(value.begin(), value.end(), [](T number) { return number == 0 && std::signbit(number); });
  });
}

template <class T, std::size_t N>
void UnifyZeros(std::vector<std::array<T, N>>& values) {
  if (!HasNegativeZero(values)) return;
  ValueTable<T, N> table;
  std::vector<std::array<T, N>> distinct;
  for (std::array<T, N>& value : values)
    if (HasZero(value)) value = distinct[table.Fold(value, distinct)];
}

void UnifyZerosOfPoints(const GltfMesh& mesh, UvScan& uv) {
  if (!HasNegativeZero(uv.uvMap->data)) return;
  ValueTable<double, 3> table;  // holds point numbers and f32 values exactly
  std::vector<std::array<double, 3>> distinct;
  for (std::size_t wedge = 0; wedge < uv.uvMap->data.size(); ++wedge) {
    if (uv.missing[wedge] != 0 || !HasZero(uv.uvMap->data[wedge])) continue;
    auto& [u, v] = uv.uvMap->data[wedge];
    const auto& first = distinct[table.Fold({static_cast<double>(mesh.positionIndex[wedge]), u, v}, distinct)];
    u = static_cast<float>(first[1]);
    v = static_cast<float>(first[2]);
  }
}

}  // namespace

void StartWedges(MeshScanState& scan, std::size_t corners) {
  GltfMesh& mesh = *scan.currentMesh;
  const std::size_t points = mesh.positions.size();
  // Most meshes have few points with more than one wedge; those with many are small, boxes for instance.
  const std::size_t wedges = std::max(points, std::min(corners, kSmallMesh));
  scan.wedgesOfPoint = PointFold(points, wedges);
  mesh.wedgeIndex.reserve(corners);
  mesh.positionIndex.reserve(wedges);
  mesh.normals.reserve(wedges);
  scan.hostNormals.reserve(wedges);
  for (UvScan& uv : scan.uvScans) {
    uv.uvMap->data.reserve(wedges);
    uv.missing.reserve(wedges);
  }
  for (ColorScan& color : scan.colorScans) color.colorMap->data.reserve(wedges);
  scan.corner.colors.resize(scan.colorScans.size());
  scan.corner.uvs.resize(scan.uvScans.size());
  scan.corner.missingUvs.resize(scan.uvScans.size());
  scan.keysOfWedge.reserve(wedges * scan.keyMaps.size());
}

void AddCorner(MeshScanState& scan, std::uint32_t place, const std::uint32_t* keys) {
  std::vector<std::uint32_t>& wedges = scan.currentMesh->wedgeIndex;
  if (place != kUnknownPoint && scan.waiting.empty()) {
    wedges.push_back(FoldCorner(scan, place, scan.corner, keys));
    return;
  }
  scan.waiting.push_back(scan.corner);
  if (place == kUnknownPoint) return;
  wedges.push_back(FoldCorner(scan, place, scan.waiting.front(), nullptr));
  scan.waiting.pop_front();
}

void FinishWedges(MeshScanState& scan) {
  UnifyZeros(scan.currentMesh->normals);
  for (ColorScan& color : scan.colorScans) UnifyZeros(color.colorMap->data);
  for (UvScan& uv : scan.uvScans) UnifyZerosOfPoints(*scan.currentMesh, uv);
}
