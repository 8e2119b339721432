// Folds the corners of one primitive into vertices.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Vertices are numbered in the order in which corners first show them.
struct VertexFold {
  std::vector<std::uint32_t> indices;  // three per triangle, vertex numbers
  std::vector<std::uint32_t> corners;  // per vertex: the corner that showed it first
};

// What a corner refers to. Each span has an entry per corner of the mesh, corner 3t + c being place c of
// triangle t: an index into a table of values. Two corners are one vertex exactly when all their entries are
// equal: no value is looked at and there is no tolerance.
struct CornerTables {
  std::span<const std::uint32_t> points;
  std::size_t pointCount = 0;                              // entries of `points` are below
  std::vector<std::span<const std::uint32_t>> attributes;  // normals, colours, UVs, tangents
};

// `triangles` are triangle numbers. One whose corners lie beyond a table is left out.
VertexFold FoldCorners(std::span<const std::uint32_t> triangles, const CornerTables& tables);
