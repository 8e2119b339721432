// The working store of the mesh scan, reused for each mesh.
#pragma once

#include "document/mesh_records.h"
#include "geometry/point_fold.h"
#include "geometry/point_index_table.h"
#include "geometry/tangent_table.h"
#include "geometry/value_table.h"
#include "host/user_mesh.h"

#include <cstdint>
#include <list>
#include <vector>

struct UvScan {
  GltfUvMap* uvMap = nullptr;
  ZyMeshMapId mapId = 0;
  std::vector<std::uint8_t> missing = {};  // one per wedge: not 0 when its corners lack a value
};

struct ColorScan {
  GltfColorMap* colorMap = nullptr;
  ZyMeshMapId mapId = 0;
  ValueEntries<float, 4> entries = {};
};

struct TangentScan {
  GltfTangentMap* tangentMap = nullptr;
  ZyMeshMapId mapId = 0;
};

// What the host says of one corner; colours and UVs have an element per scan of their kind.
struct CornerValues {
  std::array<double, 3> hostNormal = {};  // not normalised
  std::uint32_t tangent = 0;              // index in the first tangent map
  std::vector<std::array<float, 4>> colors;
  std::vector<std::array<float, 2>> uvs;  // zeros when missing
  std::vector<std::uint8_t> missingUvs;   // per element of uvs: not 0 when the corner has none

  // Known once the corner is folded, which puts entries in the place of its colours too.
  std::array<double, 3> normal = {};  // the entry of the normalised normal
  bool isAlias = false;               // an entry may differ from its value in signs of zeros
};

// The entry of a tag table that the last polygon used. Polygons mostly come in runs of one tag, and a host
// text keeps its pointer.
struct TagCursor {
  const char* text = nullptr;
  std::vector<std::uint32_t>* triangles = nullptr;  // stands until the table gets another entry
};

struct MeshScanState {
  PointIndexTable pointIndexById;  // place of a point in GltfMesh::positions
  ZyMeshMapId normalMapId = 0;     // 0 for none
  bool hasNormalMap = false;       // normalMapId is to be used
  CZyUser_MeshMap meshMapAccessor;
  CZyUser_Polygon currentPolygon;   // walks along with the frame's scan
  CZyUser_ValueKeys valueKeys;      // of currentPolygon, when the host has them
  CZyUser_Polygon polygonAccessor;  // for the values of corners
  bool isSelected = false;          // polygonAccessor is known to stand on the current polygon
  CZyUser_Point pointAccessor;
  std::vector<UvScan> uvScans;
  std::vector<ColorScan> colorScans;
  std::vector<TangentScan> tangentScans;
  GltfMesh* currentMesh = nullptr;  // null outside a scan
  TagCursor materialCursor, partCursor;
  std::uint32_t pointCount = 0;     // points seen, the next index into positions
  std::uint32_t triangleCount = 0;  // triangles seen, the triangle number

  PointFold wedgesOfPoint;
  std::vector<std::array<double, 3>> hostNormals;  // one per wedge, as the host gave it; NaNs when forgotten
  ValueEntries<double, 3> normalEntries;
  std::vector<std::uint32_t> aliases;  // wedges of such corners since a table has grown
  std::uint64_t generation = 0;        // of all tables then
  CornerValues corner;                 // of the corner that is being read
  std::list<CornerValues> waiting;     // for the place of a point, see wedges.h; mostly empty

  // By their keys most corners are known without a look at their values; empty when keys can't tell that.
  std::vector<ZyMeshMapId> keyMaps;
  std::vector<std::uint32_t> keys;         // of the triangle's corners, a row of keyMaps.size() each
  std::vector<std::uint32_t> keysOfWedge;  // a row per wedge

  // One for each tangent map of each mesh so far; see tangent_table.h.
  std::vector<TangentTable> tangentValueTables;
};

// Empties everything but the tangent tables.
void ResetScan(MeshScanState& scan);
