// Small meshes written as points and polygons.
#pragma once

#include "headless/mesh_data.h"
#include "host/fourcc.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

using MeshPoints = std::vector<std::array<float, 3>>;
using MeshPolygons = std::vector<std::vector<std::uint32_t>>;

inline headless::MeshData MeshOf(const MeshPoints& points, const MeshPolygons& polygons) {
  std::vector<float> numbers;
  for (const auto& point : points) numbers.insert(numbers.end(), point.begin(), point.end());
  std::vector<std::uint32_t> starts = {0};
  std::vector<std::uint32_t> corners;
  for (const auto& polygon : polygons) {
    corners.insert(corners.end(), polygon.begin(), polygon.end());
    starts.push_back(static_cast<std::uint32_t>(corners.size()));
  }
  headless::MeshData mesh;
  mesh.points = std::move(numbers);
  mesh.polygonStarts = std::move(starts);
  mesh.polygonPoints = std::move(corners);
  return mesh;
}

// Corners at -1 and 1, every face a quad that turns counterclockwise seen from outside.
inline headless::MeshData CubeMesh() {
  return MeshOf(
      {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},
      {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}});
}

// A quad and a triangle on its edge 1-2; maps with each kind of gap.
inline headless::MeshData TwoPolygonMesh() {
  headless::MeshData mesh =
      MeshOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0.5, 0}}, {{0, 1, 2, 3}, {2, 1, 4}});
  mesh.material = {{"Red", "Blue"}, std::vector<std::uint32_t>{1, headless::kNone}};
  mesh.maps = {
      {kMapUv, "both", 2, std::vector<float>{1, 2, 3, 4, 5, 6},
       std::vector<std::uint32_t>{0, 1, headless::kNone, headless::kNone, headless::kNone},
       std::vector<std::uint32_t>{headless::kNone, 2, 2, headless::kNone, headless::kNone, 0, headless::kNone}},
      {kMapWeight,
       "points",
       1,
       std::vector<float>{0.5f, 0.25f},
       std::vector<std::uint32_t>{headless::kNone, 1, headless::kNone, headless::kNone, 0},
       {}},
      {kMapUv,
       "corners",
       2,
       std::vector<float>{7, 8},
       {},
       std::vector<std::uint32_t>{headless::kNone, 0, headless::kNone, headless::kNone, headless::kNone,
                                  headless::kNone, headless::kNone}},
      {kMapWeight, "empty", 1, {}, {}, {}},
  };
  return mesh;
}
