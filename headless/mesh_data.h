// A mesh as plain arrays. A polygon corner is one place of one polygon, counted over the mesh: the corners
// of polygon p are polygonStarts[p] up to polygonStarts[p + 1].
#pragma once

#include "headless/array.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace headless {

constexpr std::uint32_t kNone = 0xFFFFFFFFu;

// Values of one mesh map. The value of a polygon corner is the corner's own, else that of its point.
struct MeshMapData {
  std::uint32_t type = 0;  // four-character code
  std::string name;
  std::uint32_t dimension = 1;        // floats per value, see host/mesh_api.h
  Array<float> values;                // value v is values[v * dimension] and what follows
  Array<std::uint32_t> pointValues;   // per point: its value, kNone for none; empty: no point has one
  Array<std::uint32_t> cornerValues;  // per polygon corner, likewise
};

// A string tag per polygon, as an index into `texts`; kNone for none.
struct PolygonTagData {
  std::vector<std::string> texts;
  Array<std::uint32_t> perPolygon;  // empty: no polygon has the tag
};

struct MeshData {
  Array<float> points;                         // x, y, z per point, object space, metres
  Array<std::uint64_t> pointIds;               // empty: the id of point i is i + 1
  Array<std::uint32_t> polygonStarts;          // polygon count + 1 entries, the first 0; empty: no polygons
  Array<std::uint32_t> polygonPoints;          // per polygon corner: index of its point
  PolygonTagData material;                     // MATR
  PolygonTagData part;                         // PART
  std::vector<MeshMapData> maps;               // in the order in which the host lists them
  double smoothingAngle = 0.6981317007977318;  // radians; edges that bend more are hard (40 degrees)

  // Recorded results of a host, replayed exactly; what is absent is computed.
  // Triangles: those of polygon p are triangleStarts[p] up to triangleStarts[p + 1]; three point indices each.
  Array<std::uint32_t> triangleStarts;
  Array<std::uint32_t> trianglePoints;
  Array<double> cornerNormals;  // calculated normals: x, y, z per polygon corner

  std::uint32_t PointCount() const { return static_cast<std::uint32_t>(points.size() / 3); }
  std::uint32_t PolygonCount() const {
    return polygonStarts.empty() ? 0 : static_cast<std::uint32_t>(polygonStarts.size() - 1);
  }
};

}  // namespace headless
