// Meshes made by choices: from a seed, or by whoever chooses.
#pragma once

#include "host/fourcc.h"
#include "tests/support/mesh_scenes.h"

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

// Chooses a number below a bound.
using Choice = std::function<std::uint32_t(std::uint32_t bound)>;

inline Choice ChooseBySeed(std::uint32_t seed) {
  return [random = std::mt19937(seed)](std::uint32_t bound) mutable {
    return static_cast<std::uint32_t>(random() % bound);
  };
}

class RandomMesh {
 public:
  explicit RandomMesh(std::uint32_t seed) : choice_(ChooseBySeed(seed)) {}
  explicit RandomMesh(Choice choice) : choice_(std::move(choice)) {}

  // Triangles and recorded fans of larger polygons, some without a tag, with every kind of map and gaps in each.
  headless::MeshData Make() {
    headless::MeshData mesh;
    const std::uint32_t points = 3 + Below(40);
    mesh.points = Floats(3 * points);
    AddPolygons(mesh, points, 1 + Below(60));
    mesh.material.texts = {"Red", "Green", "Blue"};
    mesh.material.perPolygon = Indices(mesh.PolygonCount(), 3);
    for (const auto& [type, dimension] :
         {std::pair{kMapUv, 2u}, {kMapRgba, 4u}, {kMapNormal, 3u}, {kMapUv, 2u}, {kMapRgb, 3u}})
      if (Below(3) != 0) AddMap(mesh, type, dimension, Below(4) == 0 ? 200 : 5);
    std::vector<double> normals;
    for (std::size_t i = 0; i < 3 * mesh.polygonPoints.size(); ++i) normals.push_back(Number(4, 2));
    mesh.cornerNormals = std::move(normals);
    return mesh;
  }

 private:
  std::uint32_t Below(std::uint32_t bound) { return choice_(bound); }

  // Zeros of both signs among them.
  float Number(std::uint32_t count, int middle) {
    const int number = static_cast<int>(Below(count)) - middle;
    return number == -middle ? -0.0F : static_cast<float>(number);
  }

  std::vector<float> Floats(std::size_t count) {
    std::vector<float> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(Number(18, 9) / 4);
    return values;
  }

  void AddMap(headless::MeshData& mesh, std::uint32_t type, std::uint32_t dimension, std::uint32_t values) {
    std::vector<float> numbers = Floats(std::size_t{values} * dimension);
    std::vector<std::uint32_t> ofPoints = Indices(mesh.PointCount(), values);
    mesh.maps.push_back(MakeMap(type, "map" + std::to_string(mesh.maps.size()), std::move(numbers),
                                std::move(ofPoints), Indices(mesh.polygonPoints.size(), values)));
  }

  // A quarter are gaps.
  std::vector<std::uint32_t> Indices(std::size_t count, std::uint32_t bound) {
    std::vector<std::uint32_t> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(Below(4) == 0 ? headless::kNone : Below(bound));
    return values;
  }

  void AddPolygons(headless::MeshData& mesh, std::uint32_t points, std::uint32_t count) {
    std::vector<std::uint32_t> starts = {0}, corners, triangleStarts = {0}, triangles;
    for (std::uint32_t polygon = 0; polygon < count; ++polygon) {
      const std::uint32_t size = std::min(points, 3 + Below(4)), first = Below(points);
      for (std::uint32_t i = 0; i < size; ++i) corners.push_back((first + i) % points);
      for (std::uint32_t i = 2; i < size; ++i)
        for (const std::uint32_t corner : {0u, i - 1, i}) triangles.push_back((first + corner) % points);
      starts.push_back(static_cast<std::uint32_t>(corners.size()));
      triangleStarts.push_back(static_cast<std::uint32_t>(triangles.size() / 3));
    }
    mesh.polygonStarts = std::move(starts);
    mesh.polygonPoints = std::move(corners);
    mesh.triangleStarts = std::move(triangleStarts);
    mesh.trianglePoints = std::move(triangles);
  }

  Choice choice_;
};

}  // namespace test_support
