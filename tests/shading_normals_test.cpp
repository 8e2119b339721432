#include "headless/shading_normals.h"

#include "tests/support/polygon_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

using headless::CalculateCornerNormals;
using headless::MeshData;

constexpr double kPi = std::numbers::pi;
constexpr double kDegree = kPi / 180;
const std::array<double, 3> kNoNormal = {0, 0, 0};

std::array<double, 3> NormalAt(const std::vector<double>& normals, std::size_t corner) {
  return {normals[corner * 3], normals[corner * 3 + 1], normals[corner * 3 + 2]};
}

void ExpectNormal(const std::array<double, 3>& normal, const std::array<double, 3>& wanted, std::size_t corner) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(normal[axis], wanted[axis], 1e-7) << "corner " << corner << ", axis " << axis;
  }
}

TEST(ShadingNormals, CubeIsHardBelowItsAngleAndSmoothFromItOn) {
  MeshData cube = CubeMesh();
  const std::array<double, 3> faces[] = {{0, 0, -1}, {0, 0, 1}, {0, -1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
  for (const double angle : {0.0, 40 * kDegree, 89.999 * kDegree, 90 * kDegree, kPi, 7.0}) {
    SCOPED_TRACE(angle);
    cube.smoothingAngle = angle;
    const std::vector<double> normals = CalculateCornerNormals(cube);
    ASSERT_EQ(normals.size(), 72u);
    for (std::size_t corner = 0; corner < 24; ++corner) {
      std::array<double, 3> wanted = faces[corner / 4];
      if (angle >= 90 * kDegree) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
          wanted[axis] = cube.points[cube.polygonPoints[corner] * 3 + axis] / std::sqrt(3.0);
        }
      }
      ExpectNormal(NormalAt(normals, corner), wanted, corner);
    }
  }
}

TEST(ShadingNormals, CylinderIsRoundWithSharpCaps) {
  constexpr std::uint32_t kSides = 16;  // bends of 22.5 degrees
  MeshPoints points;
  MeshPolygons polygons;
  std::vector<std::uint32_t> cap;
  for (std::uint32_t side = 0; side < kSides; ++side) {
    const double turn = side * 2 * kPi / kSides;
    const auto x = static_cast<float>(std::cos(turn));
    const auto y = static_cast<float>(std::sin(turn));
    points.push_back({x, y, 0});
    points.push_back({x, y, 2});
    const std::uint32_t next = (side + 1) % kSides;
    polygons.push_back({side * 2, next * 2, next * 2 + 1, side * 2 + 1});
    cap.push_back(side * 2 + 1);
  }
  polygons.push_back(cap);
  const MeshData mesh = MeshOf(points, polygons);
  const std::vector<double> normals = CalculateCornerNormals(mesh);
  for (std::size_t corner = 0; corner < mesh.polygonPoints.size(); ++corner) {
    const auto& point = points[mesh.polygonPoints[corner]];
    const bool onCap = corner >= kSides * 4;
    ExpectNormal(NormalAt(normals, corner),
                 onCap ? std::array{0.0, 0.0, 1.0} : std::array<double, 3>{point[0], point[1], 0}, corner);
  }
}

// Two triangles along the z axis; the second is bent by the angle and twice as big.
MeshData Hinge(double bend) {
  const auto x = static_cast<float>(2 * std::cos(bend));
  const auto y = static_cast<float>(2 * std::sin(bend));
  return MeshOf({{0, 0, 0}, {0, 0, 1}, {-1, 0, 0}, {x, y, 0}}, {{0, 2, 1}, {0, 1, 3}});
}

TEST(ShadingNormals, WeighsByAreaUpToTheAngle) {
  for (const double bend : {0.0, 10 * kDegree, 60 * kDegree, 120 * kDegree, 179 * kDegree}) {
    for (const double slack : {-0.01, 0.01, 2.0 * bend}) {
      MeshData hinge = Hinge(bend);
      hinge.smoothingAngle = std::max(bend + slack, 0.0);
      const bool smooth = hinge.smoothingAngle >= bend;
      SCOPED_TRACE(testing::Message() << "bend " << bend << ", angle " << hinge.smoothingAngle);
      const std::vector<double> normals = CalculateCornerNormals(hinge);
      const std::array<double, 3> flat = {0, 1, 0};
      const std::array<double, 3> bent = {-std::sin(bend), std::cos(bend), 0};
      const double length = std::sqrt(5 + 4 * std::cos(bend));
      const std::array<double, 3> both = {2 * bent[0] / length, (1 + 2 * bent[1]) / length, 0};
      for (const std::size_t corner : {0u, 2u})
        ExpectNormal(NormalAt(normals, corner), smooth ? both : flat, corner);
      for (const std::size_t corner : {3u, 4u})
        ExpectNormal(NormalAt(normals, corner), smooth ? both : bent, corner);
      ExpectNormal(NormalAt(normals, 1), flat, 1);
      ExpectNormal(NormalAt(normals, 5), bent, 5);
      if (smooth) {
        EXPECT_EQ(NormalAt(normals, 0), NormalAt(normals, 3)) << "not one normal to the last bit";
      }
    }
  }
}

TEST(ShadingNormals, AnglesAreMeasuredPairByPair) {
  // Three triangles of one size around an edge, at bends of -30, 0 and 30 degrees, in each order.
  for (const std::array<int, 3>& order : {std::array{0, 1, 2}, std::array{1, 0, 2}, std::array{2, 0, 1}}) {
    MeshPoints points = {{0, 0, 0}, {0, 0, 1}};
    MeshPolygons polygons;
    for (const int place : order) {
      const double bend = (place - 1) * 30 * kDegree;
      polygons.push_back({0, 1, static_cast<std::uint32_t>(points.size())});
      points.push_back({static_cast<float>(std::cos(bend)), static_cast<float>(std::sin(bend)), 0});
    }
    const std::vector<double> normals = CalculateCornerNormals(MeshOf(points, polygons));
    for (std::size_t polygon = 0; polygon < 3; ++polygon) {
      const double turn = (90 + (order[polygon] - 1) * 15) * kDegree;  // midway between the neighbours' facings
      SCOPED_TRACE(testing::Message() << "first " << order[0] << ", polygon " << order[polygon]);
      ExpectNormal(NormalAt(normals, polygon * 3), {std::cos(turn), std::sin(turn), 0}, polygon * 3);
    }
  }
}

TEST(ShadingNormals, PolygonsWithoutAreaNeitherLendNorHaveOne) {
  // A triangle of no area, a point, and two polygons that cancel each other out.
  MeshData mesh = MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}, {5, 5, 5}, {6, 5, 5}, {5, 6, 5}},
                         {{0, 1, 2}, {0, 1, 3}, {0}, {4, 5, 6}, {4, 6, 5}});
  std::vector<double> normals = CalculateCornerNormals(mesh);
  for (std::size_t corner = 0; corner < 3; ++corner) ExpectNormal(NormalAt(normals, corner), {0, 0, 1}, corner);
  for (std::size_t corner = 3; corner < 7; ++corner) EXPECT_EQ(NormalAt(normals, corner), kNoNormal) << corner;
  ExpectNormal(NormalAt(normals, 7), {0, 0, 1}, 7);
  ExpectNormal(NormalAt(normals, 10), {0, 0, -1}, 10);

  mesh.smoothingAngle = kPi;
  normals = CalculateCornerNormals(mesh);
  ExpectNormal(NormalAt(normals, 3), {0, 0, 1}, 3);
  EXPECT_EQ(NormalAt(normals, 5), kNoNormal) << "no polygon with an area is at the point";
  for (std::size_t corner = 7; corner < 13; ++corner) EXPECT_EQ(NormalAt(normals, corner), kNoNormal) << corner;
}

TEST(ShadingNormals, PolygonThatNamesAPointTwiceCountsOnce) {
  // A slit square of area 4 and a wall of area 4 on its edge, through point 0.
  MeshData mesh = MeshOf({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {1, 1, 0}, {0, 0, 2}, {2, 0, 2}},
                         {{0, 1, 2, 3, 0, 4}, {1, 0, 5, 6}});
  mesh.smoothingAngle = 90 * kDegree;
  const std::vector<double> normals = CalculateCornerNormals(mesh);
  const double half = std::sqrt(0.5);
  for (const std::size_t corner : {0u, 1u, 4u, 6u, 7u})
    ExpectNormal(NormalAt(normals, corner), {0, half, half}, corner);
  ExpectNormal(NormalAt(normals, 5), {0, 0, 1}, 5);
}

// The apex of a cone of right angle, with a flat triangle over it.
TEST(ShadingNormals, PointOfVeryManyPolygons) {
  constexpr std::uint32_t kSides = 50000;
  MeshPoints points = {{0, 0, 0}};
  MeshPolygons polygons;
  for (std::uint32_t side = 0; side < kSides; ++side) {
    const double turn = side * 2 * kPi / kSides;
    points.push_back({static_cast<float>(std::cos(turn)), static_cast<float>(std::sin(turn)), -1});
    polygons.push_back({0, side + 1, (side + 1) % kSides + 1});
  }
  // It bends by 45 degrees from each side.
  points.insert(points.end(), {{1, 0, 0}, {0, 1, 0}});
  polygons.push_back({0, kSides + 1, kSides + 2});
  MeshData mesh = MeshOf(points, polygons);

  struct Case {
    double angle;
    bool roofSmooth;
  };
  for (const Case& test : {Case{0.5, false}, Case{60 * kDegree, true}, Case{kPi, true}}) {
    mesh.smoothingAngle = test.angle;
    const std::vector<double> normals = CalculateCornerNormals(mesh);
    for (std::uint32_t side = 0; side < kSides; side += 997) {
      const auto normal = NormalAt(normals, side * 3);
      const double turn = (side + 0.5) * 2 * kPi / kSides;
      const double outwards = normal[0] * std::cos(turn) + normal[1] * std::sin(turn);
      if (test.angle >= kPi) {
        EXPECT_GT(normal[2], 0.9999);
      } else {
        // The sides within the angle lie evenly to the left and the right.
        EXPECT_GT(outwards, 0.05);
        EXPECT_NEAR(normal[0] * std::sin(turn) - normal[1] * std::cos(turn), 0, 0.05) << side;
      }
    }
    const auto roof = NormalAt(normals, kSides * 3);
    if (test.roofSmooth) {
      EXPECT_GT(roof[2], 0.99);
    } else {
      ExpectNormal(roof, {0, 0, 1}, kSides * 3);
    }
  }
}

}  // namespace
