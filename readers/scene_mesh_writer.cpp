// Meshes of scene files, written.
#include "headless/mesh_check.h"
#include "readers/scene_mesh.h"
#include "readers/scene_writer_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <span>

namespace readers {
namespace {

using headless::Array;
using headless::MeshData;
using headless::MeshMapData;
using headless::PolygonTagData;
using Indices = Array<std::uint32_t>;

constexpr std::uint32_t kMostSides = 65536;  // that a file may give polygons in one number

template <class T>
std::span<const T> View(const Array<T>& values) {
  return {values.data(), values.size()};
}

// True for 0, step, 2 step, ...
bool IsEven(const Indices& values, std::uint32_t step) {
  for (std::size_t i = 0; i < values.size(); ++i)
    if (values[i] != i * step) return false;
  return true;
}

class MeshWriter {
 public:
  MeshWriter(SceneText& text, ArrayWriter& arrays, const MeshData& mesh)
      : text_(text), arrays_(arrays), mesh_(mesh) {}

  void Write();

 private:
  template <class T>
  void WriteArray(const char* key, const Array<T>& values, std::uint32_t group = 1);
  void WritePolygons();
  void WriteTag(const char* key, const PolygonTagData& tag, const char* usual);
  void WriteMap(const MeshMapData& map);
  void WriteSmoothingAngle();
  void WriteTriangles();

  SceneText& text_;
  ArrayWriter& arrays_;
  const MeshData& mesh_;
};

void MeshWriter::Write() {
  text_.BeginObject(Layout::Lines);
  WriteArray("points", mesh_.points, 3);
  WriteArray("pointIds", mesh_.pointIds);
  if (!mesh_.polygonStarts.empty()) WritePolygons();
  WriteTag("material", mesh_.material, "Default");
  WriteTag("part", mesh_.part, nullptr);
  if (!mesh_.maps.empty()) {
    text_.Key("maps");
    text_.BeginList(Layout::Lines);
    for (const MeshMapData& map : mesh_.maps) WriteMap(map);
    text_.EndList();
  }
  WriteSmoothingAngle();
  if (!mesh_.triangleStarts.empty()) WriteTriangles();
  WriteArray("cornerNormals", mesh_.cornerNormals, 3);
  text_.EndObject();
}

template <class T>
void MeshWriter::WriteArray(const char* key, const Array<T>& values, std::uint32_t group) {
  if (values.empty()) return;
  text_.Key(key);
  arrays_.Write(View(values), group);
}

void MeshWriter::WritePolygons() {
  text_.Key("polygons");
  if (!arrays_.IsBinary(mesh_.polygonPoints.size())) {
    text_.BeginList(Layout::Filled);
    for (std::uint32_t polygon = 0; polygon < mesh_.PolygonCount(); ++polygon) {
      text_.BeginList(Layout::Tight);
      for (std::uint32_t corner = mesh_.polygonStarts[polygon]; corner < mesh_.polygonStarts[polygon + 1];
           ++corner)
        text_.Natural(mesh_.polygonPoints[corner]);
      text_.EndList();
    }
    text_.EndList();
    return;
  }
  const std::uint32_t sides = mesh_.polygonStarts[1];
  text_.BeginObject(Layout::Filled);
  WriteArray("points", mesh_.polygonPoints);
  if (sides > 0 && sides <= kMostSides && IsEven(mesh_.polygonStarts, sides)) {
    text_.Key("sides");
    text_.Natural(sides);
  } else {
    WriteArray("starts", mesh_.polygonStarts);
  }
  text_.EndObject();
}

// `usual` is the tag of all polygons when the key is missing, null for none.
void MeshWriter::WriteTag(const char* key, const PolygonTagData& tag, const char* usual) {
  const bool isNone = tag.texts.empty() && tag.perPolygon.empty();
  const bool isOne =
      tag.texts.size() == 1 && tag.perPolygon.size() == mesh_.PolygonCount() && IsEven(tag.perPolygon, 0);
  if (usual ? isOne && tag.texts[0] == usual : isNone) return;
  text_.Key(key);
  if (isNone) return text_.Null();
  if (isOne) return text_.Text(tag.texts[0]);
  text_.BeginObject(Layout::Filled);
  text_.Key("texts");
  text_.BeginList(Layout::Filled);
  for (const std::string& text : tag.texts) text_.Text(text);
  text_.EndList();
  text_.Key("polygons");
  arrays_.Write(View(tag.perPolygon));
  text_.EndObject();
}

void MeshWriter::WriteMap(const MeshMapData& map) {
  const MapType* type = FindMapType(map.type);
  const std::size_t count = map.values.size() / map.dimension;
  const auto isOrdered = [&](const Indices& own, const Indices& other) {
    return !own.empty() && own.size() == count && other.empty() && IsEven(own, 1);
  };
  text_.BeginObject(Layout::Filled);
  text_.Key("type");
  text_.Text(FourCCText(map.type));
  if (!type || map.name != type->name) {
    text_.Key("name");
    text_.Text(map.name);
  }
  if (!type) {
    text_.Key("dimension");
    text_.Natural(map.dimension);
  }
  const bool perPoint = isOrdered(map.pointValues, map.cornerValues);
  const bool perCorner = isOrdered(map.cornerValues, map.pointValues);
  if (perPoint || perCorner) {
    text_.Key("per");
    text_.Text(perPoint ? "point" : "corner");
  }
  text_.Break();
  text_.Key("values");
  arrays_.Write(View(map.values), map.dimension);
  if (!perPoint && !perCorner) {
    text_.Break();
    WriteArray("points", map.pointValues);
    text_.Break();
    WriteArray("corners", map.cornerValues);
  }
  text_.EndObject();
}

// In degrees when some number of degrees means just this angle.
void MeshWriter::WriteSmoothingAngle() {
  if (mesh_.smoothingAngle == MeshData().smoothingAngle) return;
  if (const std::optional<double> degrees = FindDegrees(mesh_.smoothingAngle, SmoothingRadians)) {
    text_.Key("smoothingAngle");
    text_.Number(*degrees);
  } else {
    text_.Key("smoothingRadians");
    text_.Number(mesh_.smoothingAngle);
  }
}

void MeshWriter::WriteTriangles() {
  text_.Key("triangles");
  text_.BeginObject(Layout::Filled);
  WriteArray("starts", mesh_.triangleStarts);
  text_.Break();
  text_.Key("points");
  arrays_.Write(View(mesh_.trianglePoints), 3);
  text_.EndObject();
}

}  // namespace

std::optional<double> FindDegrees(double radians, double (*toRadians)(double degrees)) {
  const double near = radians * 180 / std::numbers::pi;
  const double round = std::round(near * 1e9) / 1e9;  // what a person would have typed
  double below = near, above = near;
  for (int step = 0; step < 4; ++step) {
    for (const double degrees : {round, below, above})
      if (toRadians(degrees) == radians && std::signbit(degrees) == std::signbit(radians)) return degrees;
    below = std::nextafter(below, -HUGE_VAL);
    above = std::nextafter(above, HUGE_VAL);
  }
  return std::nullopt;
}

std::string FourCCText(std::uint32_t code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
  const auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
  if (!std::all_of(text.begin(), text.end(), isPlain)) return fmt::format("0x{:08X}", code);
  text.erase(std::max<std::size_t>(text.find_last_not_of(' ') + 1, 1));
  return text;
}

void WriteMesh(SceneText& text, ArrayWriter& arrays, const MeshData& mesh) {
  if (const auto fault = headless::FindMeshFault(mesh)) throw WriteFault{*fault};
  MeshWriter(text, arrays, mesh).Write();
}

}  // namespace readers
