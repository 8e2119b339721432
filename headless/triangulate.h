// Divides polygons into triangles with the polygon's winding.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace headless {

// Corners of the two triangles of a quad.
using QuadTriangles = std::uint32_t[2][3];

// Along the shorter diagonal, the one from corner 0 when both are alike, unless only the other one keeps both
// triangles facing the way of a concave quad. `points` holds x, y, z per point; `corners` four point indices.
const QuadTriangles& SplitQuad(const float* points, const std::uint32_t* corners);

// Divides polygons of more than four corners. Holds what can be used again from polygon to polygon.
class Triangulator {
 public:
  Triangulator();
  ~Triangulator();

  // Appends three point indices per triangle: n - 2 triangles for a polygon of n corners, fewer where corners
  // coincide. A polygon that crosses itself or has no area becomes a fan around its first corner.
  void Append(const float* points, std::span<const std::uint32_t> corners, std::vector<std::uint32_t>& triangles);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace headless
