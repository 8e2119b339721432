// Folds the corners of a scan into the wedges of its mesh.
#pragma once

#include "geometry/scan_state.h"

// Makes room for the mesh's tables; the points are known. `corners` may be exceeded.
void StartWedges(MeshScanState& scan, std::size_t corners);

// Enters scan.corners, the corners of the next triangle, whose points have these ids. A corner whose point wasn't
// seen in the point walk has no place among the positions, and then the places of the corners behind it move up:
// its values wait for the next place.
void AddCorners(MeshScanState& scan, const ZyPointId (&points)[3]);

// After the last corner. Values that are equal but for the sign of a zero take the signs of the one that came
// first: in the mesh for normals and colours, at the point for UVs.
void FinishWedges(MeshScanState& scan);
