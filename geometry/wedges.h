// Folds the corners of a scan into the wedges of its mesh.
#pragma once

#include "geometry/scan_state.h"

// Makes room for the mesh's tables; the points are known. `corners` may be exceeded.
void StartWedges(MeshScanState& scan, std::size_t corners);

// Enters the next corner, whose values are in scan.corner. `place` is its point's among the positions. A corner
// whose point wasn't seen in the point walk has kUnknownPoint, and then the places of the corners behind it move
// up: its values wait for the next place. `keys` has an entry per scan.keyMaps, see IZyValueKeys; null when there
// are none.
void AddCorner(MeshScanState& scan, std::uint32_t place, const std::uint32_t* keys);

// Enters the next corner by its keys alone. False, and nothing done, when its values are needed.
bool AddKnownCorner(MeshScanState& scan, std::uint32_t place, const std::uint32_t* keys);

// After the last corner. Values that are equal but for the sign of a zero take the signs of the one that came
// first: in the mesh for normals and colours, at the point for UVs.
void FinishWedges(MeshScanState& scan);
