// The working store of the mesh scan, reused for each mesh.
#pragma once

#include "document/mesh_records.h"
#include "geometry/point_index_table.h"
#include "geometry/tangent_table.h"
#include "geometry/value_table.h"
#include "host/user_mesh.h"

#include <cstdint>
#include <vector>

// A UV map during the scan. Its values wait here for the end of the scan, since only then is it known whether
// any corner lacked one.
struct UvScan {
  GltfUvMap* uvMap = nullptr;
  ZyMeshMapId mapId = 0;
  std::vector<std::array<float, 2>> values;  // one per corner
  std::vector<bool> valid;                   // one per corner once a corner lacked a value, until then empty
};

struct ColorScan {
  GltfColorMap* colorMap = nullptr;
  ZyMeshMapId mapId = 0;
  ValueTable<float, 4> values;
  std::vector<std::uint32_t> lastOfPoint;  // place of the colour that a corner of the point had last
};

struct TangentScan {
  GltfTangentMap* tangentMap = nullptr;
  ZyMeshMapId mapId = 0;
};

// The entry of a tag table that the last polygon used. Polygons mostly come in runs of one tag, and a host
// text keeps its pointer.
struct TagCursor {
  const char* text = nullptr;
  std::size_t place = 0;
};

// The normal that a point's corner had last, as the host gave it, and its place among the mesh's normals.
struct LastNormal {
  double normal[3] = {0, 0, 0};
  std::uint32_t index = 0xFFFFFFFFu;  // none yet
};

struct MeshScanState {
  PointIndexTable pointIndexById;  // place of a point in GltfMesh::positions
  ValueTable<double, 3> normalIndexByValue;
  std::vector<LastNormal> lastNormalOfPoint;
  ZyMeshMapId normalMapId = 0;                   // 0 for none
  bool hasNormalMap = false;                     // normalMapId is to be used
  CZyUser_MeshMap meshMapAccessor;
  CZyUser_Polygon polygonAccessor;
  CZyUser_Point pointAccessor;
  std::vector<UvScan> uvScans;
  std::vector<ColorScan> colorScans;
  std::vector<TangentScan> tangentScans;
  GltfMesh* currentMesh = nullptr;  // null outside a scan
  TagCursor materialCursor, partCursor;
  std::uint32_t pointCount = 0;     // points seen, the next index into positions
  std::uint32_t triangleCount = 0;  // triangles seen, the triangle number

  // One for each tangent map of each mesh so far; see tangent_table.h.
  std::vector<TangentTable> tangentValueTables;
};

// Empties everything but the tangent tables.
void ResetScan(MeshScanState& scan);
