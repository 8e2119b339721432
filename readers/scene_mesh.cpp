#include "readers/scene_mesh.h"

#include "headless/mesh_check.h"
#include "host/fourcc.h"
#include "readers/scene_lists.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <numbers>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace readers {
namespace {

using headless::Array;
using headless::kNone;
using headless::MeshData;
using headless::MeshMapData;
using headless::PolygonTagData;
using Indices = std::vector<std::uint32_t>;

std::uint32_t ReadPoint(const Json& value, std::size_t pointCount) {
  if (!value.IsInt64() && !value.IsUint64()) Fail(value, "expected a point number");
  if (!value.IsUint() || value.GetUint() >= pointCount) {
    const std::string number =
        value.IsUint64() ? std::to_string(value.GetUint64()) : std::to_string(value.GetInt64());
    Fail(value, fmt::format("point {} of {}", number, pointCount));
  }
  return value.GetUint();
}

// 0, step, 2 step, ... : `count` things of `step` parts each.
Array<std::uint32_t> EvenStarts(std::size_t count, std::uint32_t step) {
  Indices starts(count + 1);
  for (std::size_t i = 0; i < starts.size(); ++i) starts[i] = static_cast<std::uint32_t>(i * step);
  return starts;
}

Array<std::uint32_t> Iota(std::size_t count) {
  Indices indices(count);
  std::iota(indices.begin(), indices.end(), 0u);
  return indices;
}

void ReadPolygons(const Json& value, BinaryFiles& files, MeshData& mesh) {
  if (value.IsArray()) {
    Indices starts = {0}, points;
    starts.reserve(ListSize(value) + 1);
    points.reserve(CountNumbers(value));
    ForEachEntry(value, [&](const Json& polygon) {
      ForEachEntry(ReadList(polygon),
                   [&](const Json& point) { points.push_back(ReadPoint(point, mesh.PointCount())); });
      starts.push_back(static_cast<std::uint32_t>(points.size()));
    });
    mesh.polygonStarts = std::move(starts);
    mesh.polygonPoints = std::move(points);
    return;
  }
  const Json* starts = Find(value, "starts");
  const Json* sides = Find(value, "sides");
  if ((starts != nullptr) == (sides != nullptr)) Fail(value, "needs either \"starts\" or \"sides\"");
  const Json& points = Require(value, "points");
  if (starts) {
    mesh.polygonPoints = ReadArray<std::uint32_t>(points, files);
    mesh.polygonStarts = ReadArray<std::uint32_t>(*starts, files);
    return;
  }
  if (!sides->IsUint() || sides->GetUint() == 0) Fail(*sides, "expected a whole number above 0");
  mesh.polygonPoints = ReadArray<std::uint32_t>(points, files, sides->GetUint());
  mesh.polygonStarts = EvenStarts(mesh.polygonPoints.size() / sides->GetUint(), sides->GetUint());
}

void ReadTriangles(const Json& value, BinaryFiles& files, MeshData& mesh) {
  if (!value.IsArray()) {
    mesh.triangleStarts = ReadArray<std::uint32_t>(Require(value, "starts"), files);
    mesh.trianglePoints = ReadArray<std::uint32_t>(Require(value, "points"), files, 3);
    return;
  }
  Indices starts = {0}, points;
  starts.reserve(ListSize(value) + 1);
  points.reserve(CountNumbers(value));
  ForEachEntry(value, [&](const Json& polygon) {
    ForEachEntry(ReadList(polygon), [&](const Json& triangle) {
      for (const Json& point : ReadList(triangle, 3).GetArray())
        points.push_back(ReadPoint(point, mesh.PointCount()));
    });
    starts.push_back(static_cast<std::uint32_t>(points.size() / 3));
  });
  mesh.triangleStarts = std::move(starts);
  mesh.trianglePoints = std::move(points);
}

PolygonTagData OneTag(std::string text, std::uint32_t polygonCount) {
  return {{std::move(text)}, Indices(polygonCount, 0u)};
}

PolygonTagData ReadPolygonTag(const Json& value, BinaryFiles& files, std::uint32_t polygonCount) {
  if (value.IsNull()) return {};
  if (value.IsString()) return OneTag(ReadText(value), polygonCount);
  PolygonTagData tag;
  if (value.IsObject()) {
    for (const Json& text : ReadList(Require(value, "texts")).GetArray()) tag.texts.push_back(ReadText(text));
    tag.perPolygon = ReadArray<std::uint32_t>(Require(value, "polygons"), files);
    return tag;
  }
  Indices perPolygon;
  std::map<std::string_view, std::uint32_t> places;
  for (const Json& entry : ReadList(value).GetArray()) {
    if (entry.IsNull()) {
      perPolygon.push_back(kNone);
      continue;
    }
    const auto [place, isNew] = places.emplace(TextView(entry), static_cast<std::uint32_t>(tag.texts.size()));
    if (isNew) tag.texts.emplace_back(place->first);
    perPolygon.push_back(place->second);
  }
  if (perPolygon.size() != polygonCount) {
    Fail(value, fmt::format("{} tags for {} polygons", perPolygon.size(), polygonCount));
  }
  tag.perPolygon = std::move(perPolygon);
  return tag;
}

constexpr MapType kMapTypes[] = {{kMapNormal, 3, "Vertex Normal"}, {kMapRgb, 3, "Color"},
                                 {kMapRgba, 4, "Color"},           {kMapUv, 2, "Texture"},
                                 {kMapTangentBasis, 6, "Tangent"}, {kMapWeight, 1, "Weight"}};

// Values listed in order, one for each point or corner, null where there is none. Gives the value of each.
Indices ReadGappedValues(const Json& values, MeshMapData& map) {
  Indices places;
  std::vector<float> numbers;
  places.reserve(ListSize(values));
  numbers.reserve(CountNumbers(values));
  ForEachEntry(values, [&](const Json& entry) {
    places.push_back(entry.IsNull() ? kNone : static_cast<std::uint32_t>(numbers.size() / map.dimension));
    if (entry.IsNull()) return;
    if (entry.IsArray()) {
      ForEachEntry(ReadList(entry, map.dimension),
                   [&](const Json& number) { numbers.push_back(ReadFloat(number)); });
    } else if (map.dimension == 1) {
      numbers.push_back(ReadFloat(entry));
    } else {
      Fail(entry, fmt::format("expected a list of {} numbers or null", map.dimension));
    }
  });
  map.values = std::move(numbers);
  return places;
}

// A map with one value for each of `count` points or corners.
Array<std::uint32_t> ReadOrderedValues(const Json& values, BinaryFiles& files, std::size_t count, const char* what,
                                       MeshMapData& map) {
  Array<std::uint32_t> places;
  if (values.IsArray() && HoldsNull(values)) {
    places = ReadGappedValues(values, map);
  } else {
    map.values = ReadArray<float>(values, files, map.dimension);
    places = Iota(map.values.size() / map.dimension);
  }
  if (places.size() != count) Fail(values, fmt::format("{} values for {} {}", places.size(), count, what));
  return places;
}

MeshMapData ReadMap(const Json& value, BinaryFiles& files, const MeshData& mesh) {
  MeshMapData map;
  map.type = ReadFourCC(Require(value, "type"));
  const MapType* known = FindMapType(map.type);
  const Json* dimension = Find(value, "dimension");
  if (!dimension && !known) Fail(value, "a map of this type needs its \"dimension\"");
  map.dimension = dimension ? static_cast<std::uint32_t>(ReadInteger(*dimension)) : known->dimension;
  if (map.dimension == 0 || (known && map.dimension != known->dimension)) {
    Fail(*dimension, "not the dimension of a map of this type");
  }
  const Json* name = Find(value, "name");
  map.name = name ? ReadText(*name) : known ? known->name : ReadText(value["type"]);

  const Json& values = Require(value, "values");
  const Json* per = Find(value, "per");
  const Json* points = Find(value, "points");
  const Json* corners = Find(value, "corners");
  if (per && (points || corners)) Fail(*per, "\"per\" stands in place of \"points\" and \"corners\"");
  if (!per) {
    map.values = ReadArray<float>(values, files, map.dimension);
    if (points) map.pointValues = ReadArray<std::uint32_t>(*points, files);
    if (corners) map.cornerValues = ReadArray<std::uint32_t>(*corners, files);
  } else if (ReadWord<bool>(*per, {{"point", true}, {"corner", false}})) {
    map.pointValues = ReadOrderedValues(values, files, mesh.PointCount(), "points", map);
  } else {
    map.cornerValues = ReadOrderedValues(values, files, mesh.polygonPoints.size(), "polygon corners", map);
  }
  return map;
}

// What all boxes share: each side is a quad with the whole UV square.
MeshData MakeBoxSides() {
  static constexpr std::uint32_t kQuads[] = {0, 1, 3, 2, 4, 6, 7, 5, 0, 4, 5, 1,
                                             2, 3, 7, 6, 0, 2, 6, 4, 1, 5, 7, 3};
  MeshData sides;
  sides.polygonStarts = EvenStarts(6, 4);
  sides.polygonPoints = Indices(std::begin(kQuads), std::end(kQuads));
  MeshMapData& uv = sides.maps.emplace_back();
  uv.type = kMapUv;
  uv.name = "Texture";
  uv.dimension = 2;
  uv.values = std::vector<float>{0, 0, 1, 0, 1, 1, 0, 1};
  Indices corners(24);
  for (std::size_t i = 0; i < corners.size(); ++i) corners[i] = i % 4;
  uv.cornerValues = std::move(corners);
  return sides;
}

// A box about the origin.
void BuildBox(const Json& value, MeshData& mesh) {
  static const MeshData sides = MakeBoxSides();
  ReadList(value, 3);
  const std::array size = {ReadNumber(value[0]), ReadNumber(value[1]), ReadNumber(value[2])};
  std::vector<float> points;
  points.reserve(24);
  for (unsigned corner = 0; corner < 8; ++corner) {
    // Bits of the corner's number: x, y, z.
    for (unsigned axis = 0; axis < 3; ++axis) {
      points.push_back(static_cast<float>((corner >> (2 - axis) & 1 ? 0.5 : -0.5) * size[axis]));
    }
  }
  mesh = sides;
  mesh.points = std::move(points);
}

void ReadShape(const Json& value, BinaryFiles& files, MeshData& mesh) {
  const Json* points = Find(value, "points");
  const Json* polygons = Find(value, "polygons");
  if (const Json* box = Find(value, "box")) {
    if (points || polygons) Fail(*box, "a box brings its own points and polygons");
    BuildBox(*box, mesh);
  }
  if (points) mesh.points = ReadArray<float>(*points, files, 3);
  if (const Json* ids = Find(value, "pointIds")) mesh.pointIds = ReadArray<std::uint64_t>(*ids, files);
  if (polygons) ReadPolygons(*polygons, files, mesh);
}

}  // namespace

const MapType* FindMapType(std::uint32_t type) {
  const auto known = std::find_if(std::begin(kMapTypes), std::end(kMapTypes),
                                  [type](const MapType& row) { return row.type == type; });
  return known == std::end(kMapTypes) ? nullptr : known;
}

double SmoothingRadians(double degrees) { return degrees * std::numbers::pi / 180; }

MeshData ReadMesh(const Json& value, BinaryFiles& files) {
  MeshData mesh;
  ReadShape(value, files, mesh);
  const Json* material = Find(value, "material");
  mesh.material =
      material ? ReadPolygonTag(*material, files, mesh.PolygonCount()) : OneTag("Default", mesh.PolygonCount());
  if (const Json* part = Find(value, "part")) mesh.part = ReadPolygonTag(*part, files, mesh.PolygonCount());
  if (const Json* maps = Find(value, "maps")) {
    mesh.maps.clear();
    for (const Json& map : ReadList(*maps).GetArray()) mesh.maps.push_back(ReadMap(map, files, mesh));
  }
  if (const Json* angle = Find(value, "smoothingAngle")) {
    mesh.smoothingAngle = SmoothingRadians(ReadNumber(*angle));
  }
  if (const Json* angle = Find(value, "smoothingRadians")) {
    if (Find(value, "smoothingAngle")) Fail(*angle, "stands in place of \"smoothingAngle\"");
    mesh.smoothingAngle = ReadNumber(*angle);
  }
  if (const Json* triangles = Find(value, "triangles")) ReadTriangles(*triangles, files, mesh);
  if (const Json* normals = Find(value, "cornerNormals"))
    mesh.cornerNormals = ReadArray<double>(*normals, files, 3);
  if (const auto fault = headless::FindMeshFault(mesh)) Fail(value, *fault);
  return mesh;
}

}  // namespace readers
