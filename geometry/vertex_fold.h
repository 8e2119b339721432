// Numbers the vertices of one primitive.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Vertices are numbered in the order in which corners first show them.
struct VertexFold {
  std::vector<std::uint32_t> indices;  // three per triangle, vertex numbers
  std::vector<std::uint32_t> wedges;   // per vertex
};

// `triangles` are triangle numbers, `wedgeIndex` has the wedge of each corner of the mesh, below `wedgeCount`. Two
// corners are one vertex when they have the same wedge. A triangle beyond the table is left out.
VertexFold FoldCorners(std::span<const std::uint32_t> triangles, std::span<const std::uint32_t> wedgeIndex,
                       std::size_t wedgeCount);
