#include "geometry/uv_scan.h"

#include "geometry/point_fold.h"

#include <algorithm>
#include <bit>

namespace {

std::uint64_t HashPair(const std::array<float, 2>& uv) {
  // Adding 0 makes -0 hash as 0, which it equals.
  return std::uint64_t{std::bit_cast<std::uint32_t>(uv[0] + 0.0f)} << 32 |
         std::bit_cast<std::uint32_t>(uv[1] + 0.0f);
}

}  // namespace

void FinishUvScan(const GltfMesh& mesh, UvScan& scan) {
  GltfUvMap& map = *scan.uvMap;
  const bool allValid = scan.valid.empty();
  if (!allValid) map.data.push_back({0, 0});
  const auto first = static_cast<std::uint32_t>(map.data.size());
  map.indices.resize(scan.values.size(), 0);

  PointFold fold(mesh.positions.size(), scan.values.size());
  // A corner of an unknown point has no place in the positions and so no point to share a value with.
  const std::size_t corners = std::min(scan.values.size(), mesh.positionIndex.size());
  for (std::size_t corner = 0; corner < corners; ++corner) {
    if (!allValid && !scan.valid[corner]) continue;
    const std::array<float, 2>& uv = scan.values[corner];
    const std::uint32_t entry = fold.Fold(
        mesh.positionIndex[corner], [&](std::uint32_t number) { return map.data[first + number] == uv; },
        [&] { return HashPair(uv); });
    if (first + entry == map.data.size()) map.data.push_back(uv);
    map.indices[corner] = first + entry;
  }
}
