// What an OBJ file holds, in the file's own numbering.
#pragma once

#include "headless/mesh_data.h"
#include "readers/name_table.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace readers {

// The polygons from `firstPolygon` up to the next run's have this text; kNone for none.
struct TagRun {
  std::uint32_t firstPolygon = 0;
  std::uint32_t text = headless::kNone;
};

// The polygons of one object or group. The three index streams have an entry per polygon corner, counted
// from 0 over the whole file; kNone for none. uvs and normals may end early: what lacks is kNone.
struct ObjMesh {
  std::string name;
  std::vector<std::uint32_t> polygonStarts = {0};  // as in headless::MeshData
  std::vector<std::uint32_t> points;
  std::vector<std::uint32_t> uvs;
  std::vector<std::uint32_t> normals;
  std::vector<TagRun> materials;  // into ObjData::materialNames
  std::vector<TagRun> parts;      // into ObjData::partNames
  bool smooth = false;            // a polygon at least isn't under "s off"
};

enum class Skipped {
  Lines,
  PointStatements,
  CurvesAndSurfaces,
  DisplayStatements,
  Calls,
  ShortFaces,
  BrokenExponents,
  Unknown,
  Count
};

struct ObjData {
  std::vector<float> points;   // three each
  std::vector<float> uvs;      // two each
  std::vector<float> normals;  // three each
  // Colours: red, green, blue, alpha of the points that have one.
  std::vector<float> colors;
  std::vector<std::uint32_t> pointColors;  // per point, may end early
  bool hasAlpha = false;

  std::vector<ObjMesh> meshes;  // in the order of their first polygons
  NameTable materialNames;
  NameTable partNames;
  std::vector<std::string> libraries;  // what stands behind each mtllib

  std::array<std::uint64_t, static_cast<std::size_t>(Skipped::Count)> skipped{};
  std::string firstUnknown;  // the first unknown statement's word
  bool hasStatements = false;
};

}  // namespace readers
