#include "headless/mesh_check.h"

#include "host/fourcc.h"
#include "tests/support/polygon_meshes.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

namespace {

using headless::kNone;
using headless::MeshData;

using Indices = std::vector<std::uint32_t>;

// Braces of numbers in a lambda would take a line each.
template <class... T>
Indices U32(T... values) {
  return {static_cast<std::uint32_t>(values)...};
}

TEST(MeshCheck, NamesTheFirstFault) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  using Floats = std::vector<float>;
  struct Case {
    const char* fault;  // null for none
    std::function<void(MeshData&)> change;
  };
  const Case cases[] = {
      {nullptr, [](MeshData&) {}},
      {nullptr, [](MeshData& mesh) { mesh = {}; }},
      {"points: 16 numbers, not 3 per point", [](MeshData& mesh) { mesh.points = Floats(16); }},
      {"point 4, y: not finite",
       [](MeshData& mesh) { mesh.points = Floats{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, kNan, kNan}; }},
      {"point ids: 4 for 5 points",
       [](MeshData& mesh) {
         mesh.pointIds = std::vector<std::uint64_t>{1, 2, 3, 4};
       }},
      {"polygon corners: 7 without polygons", [](MeshData& mesh) { mesh.polygonStarts = Indices(); }},
      {"polygon start 0: 1, not 0", [](MeshData& mesh) { mesh.polygonStarts = U32(1, 4, 7); }},
      {"polygon start 2: 4 after 5", [](MeshData& mesh) { mesh.polygonStarts = U32(0, 5, 4, 7); }},
      {"polygon start 2: 8, not 7", [](MeshData& mesh) { mesh.polygonStarts = U32(0, 4, 8); }},
      {"polygon 1, corner 2: point 99 of 5",
       [](MeshData& mesh) { mesh.polygonPoints = U32(0, 1, 2, 3, 2, 1, 99); }},
      {"polygon 2, corner 0: point 5 of 5",
       [](MeshData& mesh) {
         mesh.polygonStarts = U32(0, 4, 4, 7);
         mesh.polygonPoints = U32(0, 1, 2, 3, 5, 1, 99);
       }},
      {"material tags: 1 for 2 polygons", [](MeshData& mesh) { mesh.material.perPolygon = U32(0); }},
      {"polygon 1, part tag: text 0 of 0", [](MeshData& mesh) { mesh.part.perPolygon = U32(kNone, 0); }},
      {"map \"both\", dimension: 3", [](MeshData& mesh) { mesh.maps[0].dimension = 3; }},
      {"map \"empty\", dimension: 0",
       [](MeshData& mesh) {
         mesh.maps[3].type = FourCC("TEST");
         mesh.maps[3].dimension = 0;
       }},
      {"map \"both\", values: 5 numbers, not 2 per value",
       [](MeshData& mesh) { mesh.maps[0].values = Floats(5); }},
      {"map \"points\", value 1: not finite",
       [](MeshData& mesh) {
         mesh.maps[1].values = Floats{0, kNan};
       }},
      {"map \"points\", point values: 6 for 5 points",
       [](MeshData& mesh) { mesh.maps[1].pointValues = Indices(6); }},
      {"map \"points\", point 4: value 2 of 2",
       [](MeshData& mesh) { mesh.maps[1].pointValues = U32(kNone, 0, 1, kNone, 2); }},
      {"map \"corners\", corner values: 6 for 7 polygon corners",
       [](MeshData& mesh) { mesh.maps[2].cornerValues = Indices(6); }},
      {"map \"corners\", polygon 1, corner 1: value 1 of 1",
       [](MeshData& mesh) { mesh.maps[2].cornerValues = U32(0, 0, kNone, 0, 0, 1, 4); }},
      {"triangle points: 3 without triangle starts", [](MeshData& mesh) { mesh.trianglePoints = U32(0, 1, 2); }},
      {"triangle start: 2 entries, not 3", [](MeshData& mesh) { mesh.triangleStarts = U32(0, 0); }},
      {"triangle points: 4, not 3 per triangle",
       [](MeshData& mesh) {
         mesh.triangleStarts = U32(0, 1, 1);
         mesh.trianglePoints = U32(0, 1, 2, 3);
       }},
      {nullptr,
       [](MeshData& mesh) {
         mesh.triangleStarts = U32(0, 1, 1);
         mesh.trianglePoints = U32(0, 1, 2);
       }},
      {"polygon 1, triangle 0: point 3 isn't one of the polygon's",
       [](MeshData& mesh) {
         mesh.triangleStarts = U32(0, 1, 2);
         mesh.trianglePoints = U32(0, 1, 2, 2, 1, 3);
       }},
      {"polygon 0, triangle 0: point 77 isn't one of the polygon's",
       [](MeshData& mesh) {
         mesh.triangleStarts = U32(0, 1, 1);
         mesh.trianglePoints = U32(0, 1, 77);
       }},
      {"smoothing angle: inf", [](MeshData& mesh) { mesh.smoothingAngle = kInfinity; }},
      {"smoothing angle: -1", [](MeshData& mesh) { mesh.smoothingAngle = -1; }},
      {"corner normals: 7 numbers for 7 polygon corners",
       [](MeshData& mesh) { mesh.cornerNormals = std::vector<double>(7); }},
      {"polygon 1, corner 2, normal z: not finite",
       [](MeshData& mesh) {
         std::vector<double> normals(21);
         normals[20] = -kInfinity;
         mesh.cornerNormals = normals;
       }},
  };
  for (const Case& test : cases) {
    MeshData mesh = TwoPolygonMesh();
    test.change(mesh);
    EXPECT_EQ(headless::FindMeshFault(mesh).value_or("none"), test.fault ? test.fault : "none");
  }
}

}  // namespace
