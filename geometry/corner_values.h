// Reads the values of one corner and enters them into the tables of distinct values.
#pragma once

#include "geometry/scan_state.h"

constexpr std::uint32_t kUnknownPoint = 0xFFFFFFFFu;

struct Corner {
  ZyPolygonId polygon;  // scan.polygonAccessor stands on it
  ZyPointId point;
  std::uint32_t place;  // of the point in GltfMesh::positions, kUnknownPoint for an id not seen in the point walk
};

void ReadColor(MeshScanState& scan, ColorScan& color, const Corner& corner);
// `k` is the place in scan.tangentScans.
void ReadTangent(MeshScanState& scan, std::size_t k, const Corner& corner);
void ReadNormal(MeshScanState& scan, const Corner& corner);
void ReadUv(MeshScanState& scan, UvScan& uv, const Corner& corner);
