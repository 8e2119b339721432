// Reads the values of a triangle's corners from the host.
#pragma once

#include "geometry/scan_state.h"

// Fills scan.corners with what the triangle's three corners have in each map. scan.polygonAccessor stands on the
// polygon, `points` are the host's ids.
void ReadCornerValues(MeshScanState& scan, ZyPolygonId polygon, const ZyPointId (&points)[3]);
