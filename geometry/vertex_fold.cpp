#include "geometry/vertex_fold.h"

#include <algorithm>
#include <unordered_map>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFFu;

// `vertexOf(wedge)` is the place of the wedge's vertex number, kNone when it has none yet.
template <class VertexOf>
void NumberVertices(std::span<const std::uint32_t> triangles, std::span<const std::uint32_t> wedgeIndex,
                    VertexFold& fold, const VertexOf& vertexOf) {
  for (const std::uint32_t triangle : triangles) {
    const std::size_t first = std::size_t{3} * triangle;
    if (first + 3 > wedgeIndex.size()) continue;
    for (const std::uint32_t wedge : wedgeIndex.subspan(first, 3)) {
      std::uint32_t& vertex = vertexOf(wedge);
      if (vertex == kNone) {
        vertex = static_cast<std::uint32_t>(fold.wedges.size());
        fold.wedges.push_back(wedge);
      }
      fold.indices.push_back(vertex);
    }
  }
}

}  // namespace

VertexFold FoldCorners(std::span<const std::uint32_t> triangles, std::span<const std::uint32_t> wedgeIndex,
                       std::size_t wedgeCount) {
  VertexFold fold;
  const std::size_t corners = 3 * triangles.size();
  fold.indices.reserve(corners);
  fold.wedges.reserve(std::min(corners, wedgeCount));
  if (corners * 8 >= wedgeCount) {
    std::vector<std::uint32_t> vertices(wedgeCount, kNone);
    NumberVertices(triangles, wedgeIndex, fold,
                   [&](std::uint32_t wedge) -> std::uint32_t& { return vertices[wedge]; });
  } else {  // many small primitives of a large mesh cost no table of all its wedges each
    std::unordered_map<std::uint32_t, std::uint32_t> vertices;
    NumberVertices(triangles, wedgeIndex, fold, [&](std::uint32_t wedge) -> std::uint32_t& {
      return vertices.try_emplace(wedge, kNone).first->second;
    });
  }
  return fold;
}
