// Reads the values of corners from the host.
#pragma once

#include "geometry/scan_state.h"

// Fills scan.corner with what the corner has in each map. scan.polygonAccessor stands on the polygon.
void ReadCornerValues(MeshScanState& scan, ZyPolygonId polygon, ZyPointId point);

// Decides for which maps the host shall give keys; for none when keys can't stand for a corner's values.
void ChooseKeyMaps(MeshScanState& scan);
// Fills scan.keys with those of the corners of a triangle, counted in the polygon. False when there are none.
bool ReadKeys(MeshScanState& scan, std::uint32_t triangle);
