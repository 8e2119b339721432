#include "geometry/wedges.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace {

// Corners of a mesh whose tables get room for a wedge each.
constexpr std::size_t kSmallMesh = 64;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<double, 3> kNoNormal = {kNaN, kNaN, kNaN};

std::array<double, 3> Normalised(const std::array<double, 3>& v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (length > 0) return {v[0] / length, v[1] / length, v[2] / length};
  return {1, 0, 0};
}

void Forget(MeshScanState& scan, std::uint32_t wedge) {
  scan.hostNormals[wedge] = kNoNormal;
  const std::size_t count = scan.keyMaps.size();
  std::fill_n(scan.keysOfWedge.begin() + static_cast<std::ptrdiff_t>(wedge * count), count, IZyValueKeys::kNoKey);
}

// Once a table has grown, what was another's alias may have an entry of its own: neither the host's normals nor
// keys tell its wedge any longer.
void ForgetAliases(MeshScanState& scan) {
  std::uint64_t generation = scan.normalEntries.Generation();
  for (const ColorScan& color : scan.colorScans) generation += color.entries.Generation();
  if (std::exchange(scan.generation, generation) == generation) return;
  for (const std::uint32_t wedge : scan.aliases) Forget(scan, wedge);
  scan.aliases.clear();
}

// Gives the corner the entries of the mesh's tables for its normal and colours.
void FindEntries(MeshScanState& scan, std::uint32_t place, CornerValues& corner) {
  const GltfMesh& mesh = *scan.currentMesh;
  // Corners of a point mostly have the same normal from the host, which then isn't normalised again.
  const std::uint32_t known = scan.wedgesOfPoint.FindListed(
      place, [&](std::uint32_t wedge) { return IsSame(scan.hostNormals[wedge], corner.hostNormal); });
  if (known != PointFold::kNone) {
    corner.normal = mesh.normals[known];
    corner.isAlias = !scan.aliases.empty();
  } else {
    const std::array<double, 3> normal = Normalised(corner.hostNormal);
    corner.normal = scan.normalEntries.Take(normal, mesh.normals);
    corner.isAlias = !IsSame(corner.normal, normal);
  }
  for (std::size_t k = 0; k < scan.colorScans.size(); ++k) {
    ColorScan& color = scan.colorScans[k];
    const std::array<float, 4> value = corner.colors[k];
    corner.colors[k] = color.entries.Take(value, color.colorMap->data);
    corner.isAlias |= !IsSame(corner.colors[k], value);
  }
  ForgetAliases(scan);
}

bool IsWedge(const MeshScanState& scan, std::uint32_t wedge, const CornerValues& corner) {
  if (!IsSame(scan.currentMesh->normals[wedge], corner.normal)) return false;
  const std::array<float, 2>* value = corner.uvs.data();
  const std::uint8_t* missing = corner.missingUvs.data();
  for (const UvScan& uv : scan.uvScans)
    if (uv.uvMap->data[wedge] != *value++ || uv.missing[wedge] != *missing++) return false;
  const std::array<float, 4>* color = corner.colors.data();
  for (const ColorScan& known : scan.colorScans)
    if (!IsSame(known.colorMap->data[wedge], *color++)) return false;
  return scan.tangentScans.empty() || scan.tangentScans[0].tangentMap->indices[wedge] == corner.tangent;
}

std::uint64_t HashOf(const CornerValues& corner) {
  std::uint64_t hash = corner.tangent;
  HashNumbers(hash, corner.normal);
  for (const std::array<float, 2>& uv : corner.uvs) HashNumbers(hash, uv);
  for (const std::array<float, 4>& color : corner.colors) HashNumbers(hash, color);
  return hash;
}

// `keys` is the corner's row of keys, null for none.
std::uint32_t AddWedge(MeshScanState& scan, std::uint32_t place, const CornerValues& corner,
                       const std::uint32_t* keys) {
  GltfMesh& mesh = *scan.currentMesh;
  mesh.positionIndex.push_back(place);
  mesh.normals.push_back(corner.normal);
  scan.hostNormals.push_back(corner.hostNormal);
  for (std::size_t k = 0; k < scan.uvScans.size(); ++k) {
    scan.uvScans[k].uvMap->data.push_back(corner.uvs[k]);
    scan.uvScans[k].missing.push_back(corner.missingUvs[k]);
  }
  for (std::size_t k = 0; k < scan.colorScans.size(); ++k)
    scan.colorScans[k].colorMap->data.push_back(corner.colors[k]);
  if (!scan.tangentScans.empty()) scan.tangentScans[0].tangentMap->indices.push_back(corner.tangent);
  for (std::size_t m = 0; m < scan.keyMaps.size(); ++m)
    scan.keysOfWedge.push_back(keys ? keys[m] : IZyValueKeys::kNoKey);
  const std::uint32_t wedge = scan.wedgesOfPoint.Append(place, [&] { return HashOf(corner); });
  if (corner.isAlias) scan.aliases.push_back(wedge);
  return wedge;
}

std::uint32_t FoldCorner(MeshScanState& scan, std::uint32_t place, CornerValues& corner,
                         const std::uint32_t* keys) {
  FindEntries(scan, place, corner);
  const std::uint32_t wedge = scan.wedgesOfPoint.Find(
      place, [&](std::uint32_t known) { return IsWedge(scan, known, corner); }, [&] { return HashOf(corner); });
  return wedge == PointFold::kNone ? AddWedge(scan, place, corner, keys) : wedge;
}

// UVs of a point that are equal but for the sign of a zero take the signs of the one that came first.
void UnifyZeros(const GltfMesh& mesh, UvScan& uv) {
  std::map<std::array<std::uint32_t, 3>, std::array<float, 2>> firstByPoint;
  for (std::size_t wedge = 0; wedge < uv.uvMap->data.size(); ++wedge) {
    std::array<float, 2>& value = uv.uvMap->data[wedge];
    if (uv.missing[wedge] != 0 || !HasZero(value)) continue;
    const auto bits = [](float number) { return std::bit_cast<std::uint32_t>(number + 0.0f); };  // of 0 for -0
    value =
        firstByPoint.try_emplace({mesh.positionIndex[wedge], bits(value[0]), bits(value[1])}, value).first->second;
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
  for (UvScan& uv : scan.uvScans) {
    const std::vector<std::array<float, 2>>& data = uv.uvMap->data;
    if (std::any_of(data.begin(), data.end(), HasNegativeZero<float, 2>)) UnifyZeros(*scan.currentMesh, uv);
  }
}
