#include "geometry/vertex_fold.h"

#include "geometry/point_fold.h"

#include <algorithm>

namespace {

bool SameAttributes(const CornerTables& tables, std::uint32_t a, std::uint32_t b) {
  for (const std::span<const std::uint32_t> attribute : tables.attributes)
    if (attribute[a] != attribute[b]) return false;
  return true;
}

std::uint64_t HashAttributes(const CornerTables& tables, std::uint32_t corner) {
  std::uint64_t hash = 0;
  for (const std::span<const std::uint32_t> attribute : tables.attributes) {
    hash = (hash ^ attribute[corner]) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  }
  return hash;
}

std::size_t CornerCount(const CornerTables& tables) {
  std::size_t count = tables.points.size();
  for (const std::span<const std::uint32_t> attribute : tables.attributes)
    count = std::min(count, attribute.size());
  return count;
}

}  // namespace

VertexFold FoldCorners(std::span<const std::uint32_t> triangles, const CornerTables& tables) {
  const std::size_t cornerCount = CornerCount(tables);
  VertexFold result;
  result.indices.reserve(3 * triangles.size());
  PointFold fold(tables.pointCount, 3 * triangles.size());
  for (const std::uint32_t triangle : triangles) {
    const std::size_t first = std::size_t{3} * triangle;
    if (first + 3 > cornerCount) continue;
    for (std::size_t c = 0; c < 3; ++c) {
      const auto corner = static_cast<std::uint32_t>(first + c);
      const std::uint32_t vertex = fold.Fold(
          tables.points[corner],
          [&](std::uint32_t known) { return SameAttributes(tables, result.corners[known], corner); },
          [&] { return HashAttributes(tables, corner); });
      if (vertex == result.corners.size()) result.corners.push_back(corner);
      result.indices.push_back(vertex);
    }
  }
  return result;
}
