#include "headless/mesh_check.h"

#include "host/fourcc.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace headless {
namespace {

using Fault = std::optional<std::string>;

constexpr std::size_t kBlock = 4096;
constexpr std::uint32_t kMostFloatsPerValue = 1024;

// First place whose value is bad, the array's size when none is. `isBad` must not branch: whole blocks are
// tested at once, the place is looked for only in a block that holds one.
template <class T, class IsBad>
std::size_t FindBad(const Array<T>& values, const IsBad& isBad) {
  for (std::size_t begin = 0; begin < values.size(); begin += kBlock) {
    const std::size_t end = std::min(begin + kBlock, values.size());
    unsigned bad = 0;
    for (std::size_t place = begin; place < end; ++place) bad |= isBad(values[place]) ? 1u : 0u;
    if (bad == 0) continue;
    for (std::size_t place = begin; place < end; ++place) {
      if (isBad(values[place])) return place;
    }
  }
  return values.size();
}

std::size_t FindNotFinite(const Array<float>& values) {
  constexpr std::uint32_t kExponent = 0x7F800000u;
  return FindBad(values, [](float v) { return (std::bit_cast<std::uint32_t>(v) & kExponent) == kExponent; });
}

std::size_t FindNotFinite(const Array<double>& values) {
  constexpr std::uint64_t kExponent = 0x7FF0000000000000u;
  return FindBad(values, [](double v) { return (std::bit_cast<std::uint64_t>(v) & kExponent) == kExponent; });
}

std::size_t FindNotBelow(const Array<std::uint32_t>& values, std::size_t limit) {
  return FindBad(values, [limit](std::uint32_t v) { return v >= limit; });
}

// kNone passes.
std::size_t FindNotBelowOrNone(const Array<std::uint32_t>& values, std::size_t limit) {
  return FindBad(values, [limit](std::uint32_t v) { return (v >= limit) & (v != kNone); });
}

char AxisName(std::size_t place) { return "xyz"[place % 3]; }

std::string CornerName(const MeshData& mesh, std::size_t corner) {
  const auto after = std::upper_bound(mesh.polygonStarts.begin(), mesh.polygonStarts.end(), corner);
  const std::ptrdiff_t polygon = after - mesh.polygonStarts.begin() - 1;
  return fmt::format("polygon {}, corner {}", polygon, corner - *(after - 1));
}

// Starts of `count` things that have `total` parts together.
Fault CheckStarts(const char* name, const Array<std::uint32_t>& starts, std::size_t count, std::size_t total) {
  if (starts.size() != count + 1) return fmt::format("{}: {} entries, not {}", name, starts.size(), count + 1);
  if (starts[0] != 0) return fmt::format("{} 0: {}, not 0", name, starts[0]);
  unsigned bad = 0;
  for (std::size_t place = 0; place < count; ++place) bad |= starts[place + 1] < starts[place] ? 1u : 0u;
  for (std::size_t place = 0; place < count && bad != 0; ++place) {
    if (starts[place + 1] >= starts[place]) continue;
    return fmt::format("{} {}: {} after {}", name, place + 1, starts[place + 1], starts[place]);
  }
  if (starts[count] != total) return fmt::format("{} {}: {}, not {}", name, count, starts[count], total);
  return std::nullopt;
}

Fault CheckPoints(const MeshData& mesh) {
  if (mesh.points.size() % 3 != 0) return fmt::format("points: {} numbers, not 3 per point", mesh.points.size());
  if (mesh.points.size() / 3 >= kNone) return fmt::format("points: {} are too many", mesh.points.size() / 3);
  const std::size_t place = FindNotFinite(mesh.points);
  if (place != mesh.points.size()) return fmt::format("point {}, {}: not finite", place / 3, AxisName(place));
  if (!mesh.pointIds.empty() && mesh.pointIds.size() != mesh.PointCount()) {
    return fmt::format("point ids: {} for {} points", mesh.pointIds.size(), mesh.PointCount());
  }
  return std::nullopt;
}

Fault CheckPolygons(const MeshData& mesh) {
  const std::size_t corners = mesh.polygonPoints.size();
  if (mesh.polygonStarts.empty()) {
    return corners == 0 ? Fault() : fmt::format("polygon corners: {} without polygons", corners);
  }
  if (mesh.polygonStarts.size() > kNone)
    return fmt::format("polygons: {} are too many", mesh.polygonStarts.size());
  if (Fault fault = CheckStarts("polygon start", mesh.polygonStarts, mesh.polygonStarts.size() - 1, corners)) {
    return fault;
  }
  const std::size_t corner = FindNotBelow(mesh.polygonPoints, mesh.PointCount());
  if (corner == corners) return std::nullopt;
  return fmt::format("{}: point {} of {}", CornerName(mesh, corner), mesh.polygonPoints[corner],
                     mesh.PointCount());
}

Fault CheckTag(const char* name, const PolygonTagData& tag, const MeshData& mesh) {
  if (tag.perPolygon.empty()) return std::nullopt;
  if (tag.perPolygon.size() != mesh.PolygonCount()) {
    return fmt::format("{} tags: {} for {} polygons", name, tag.perPolygon.size(), mesh.PolygonCount());
  }
  const std::size_t polygon = FindNotBelowOrNone(tag.perPolygon, tag.texts.size());
  if (polygon == tag.perPolygon.size()) return std::nullopt;
  return fmt::format("polygon {}, {} tag: text {} of {}", polygon, name, tag.perPolygon[polygon],
                     tag.texts.size());
}

// Floats per value that readers of a map of the type make room for; 0 for a type that says nothing.
std::uint32_t DimensionOfType(std::uint32_t type) {
  constexpr struct {
    std::uint32_t type;
    std::uint32_t dimension;
  } kDimensions[] = {{kMapNormal, 3}, {kMapRgb, 3},          {kMapRgba, 4},
                     {kMapUv, 2},     {kMapTangentBasis, 6}, {kMapWeight, 1}};
  for (const auto& entry : kDimensions) {
    if (entry.type == type) return entry.dimension;
  }
  return 0;
}

Fault CheckMap(const MeshMapData& map, const MeshData& mesh) {
  const auto fault = [&map](const std::string& text) { return fmt::format("map \"{}\", {}", map.name, text); };
  const std::uint32_t wanted = DimensionOfType(map.type);
  if (map.dimension == 0 || map.dimension > kMostFloatsPerValue || (wanted != 0 && map.dimension != wanted)) {
    return fault(fmt::format("dimension: {}", map.dimension));
  }
  if (map.values.size() % map.dimension != 0) {
    return fault(fmt::format("values: {} numbers, not {} per value", map.values.size(), map.dimension));
  }
  const std::size_t count = map.values.size() / map.dimension;
  if (const std::size_t place = FindNotFinite(map.values); place != map.values.size()) {
    return fault(fmt::format("value {}: not finite", place / map.dimension));
  }
  if (!map.pointValues.empty() && map.pointValues.size() != mesh.PointCount()) {
    return fault(fmt::format("point values: {} for {} points", map.pointValues.size(), mesh.PointCount()));
  }
  const std::size_t point = FindNotBelowOrNone(map.pointValues, count);
  if (point != map.pointValues.size()) {
    return fault(fmt::format("point {}: value {} of {}", point, map.pointValues[point], count));
  }
  const std::size_t corners = mesh.polygonPoints.size();
  if (!map.cornerValues.empty() && map.cornerValues.size() != corners) {
    return fault(fmt::format("corner values: {} for {} polygon corners", map.cornerValues.size(), corners));
  }
  const std::size_t corner = FindNotBelowOrNone(map.cornerValues, count);
  if (corner == map.cornerValues.size()) return std::nullopt;
  return fault(fmt::format("{}: value {} of {}", CornerName(mesh, corner), map.cornerValues[corner], count));
}

// A triangle may use only points of its own polygon: maps and normals are asked for at its corners.
Fault CheckTrianglePoints(const MeshData& mesh) {
  std::vector<std::uint32_t> lastPolygon(mesh.PointCount(), kNone);
  for (std::uint32_t polygon = 0; polygon < mesh.PolygonCount(); ++polygon) {
    for (std::uint32_t corner = mesh.polygonStarts[polygon]; corner < mesh.polygonStarts[polygon + 1]; ++corner) {
      lastPolygon[mesh.polygonPoints[corner]] = polygon;
    }
    const std::uint32_t begin = mesh.triangleStarts[polygon];
    for (std::uint32_t triangle = begin; triangle < mesh.triangleStarts[polygon + 1]; ++triangle) {
      for (std::size_t place = 0; place < 3; ++place) {
        const std::uint32_t point = mesh.trianglePoints[std::size_t{triangle} * 3 + place];
        if (point < mesh.PointCount() && lastPolygon[point] == polygon) continue;
        return fmt::format("polygon {}, triangle {}: point {} isn't one of the polygon's", polygon,
                           triangle - begin, point);
      }
    }
  }
  return std::nullopt;
}

Fault CheckTriangles(const MeshData& mesh) {
  const std::size_t points = mesh.trianglePoints.size();
  if (mesh.triangleStarts.empty()) {
    return points == 0 ? Fault() : fmt::format("triangle points: {} without triangle starts", points);
  }
  if (points % 3 != 0) return fmt::format("triangle points: {}, not 3 per triangle", points);
  if (Fault fault = CheckStarts("triangle start", mesh.triangleStarts, mesh.PolygonCount(), points / 3))
    return fault;
  return CheckTrianglePoints(mesh);
}

Fault CheckNormals(const MeshData& mesh) {
  if (!std::isfinite(mesh.smoothingAngle) || mesh.smoothingAngle < 0) {
    return fmt::format("smoothing angle: {}", mesh.smoothingAngle);
  }
  const std::size_t numbers = mesh.cornerNormals.size();
  if (numbers != 0 && numbers != mesh.polygonPoints.size() * 3) {
    return fmt::format("corner normals: {} numbers for {} polygon corners", numbers, mesh.polygonPoints.size());
  }
  const std::size_t place = FindNotFinite(mesh.cornerNormals);
  if (place == numbers) return std::nullopt;
  return fmt::format("{}, normal {}: not finite", CornerName(mesh, place / 3), AxisName(place));
}

}  // namespace

std::optional<std::string> FindMeshFault(const MeshData& mesh) {
  if (Fault fault = CheckPoints(mesh)) return fault;
  if (Fault fault = CheckPolygons(mesh)) return fault;
  if (Fault fault = CheckTag("material", mesh.material, mesh)) return fault;
  if (Fault fault = CheckTag("part", mesh.part, mesh)) return fault;
  for (const MeshMapData& map : mesh.maps) {
    if (Fault fault = CheckMap(map, mesh)) return fault;
  }
  if (Fault fault = CheckTriangles(mesh)) return fault;
  return CheckNormals(mesh);
}

}  // namespace headless
