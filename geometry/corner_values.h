// Reads the values of corners from the host.
#pragma once

#include "geometry/scan_state.h"

// Fills scan.corner with what the corner has in each map. `polygon` is the scan's current one.
void ReadCornerValues(MeshScanState& scan, ZyPolygonId polygon, ZyPointId point);

// Decides for which maps the host shall give keys; for none when keys can't stand for a corner's values.
void ChooseKeyMaps(MeshScanState& scan);
// Gives the points of a triangle, counted in the current polygon, and fills scan.keys for them. False, and nothing
// done, when there are no keys.
bool ReadKeys(MeshScanState& scan, std::uint32_t triangle, ZyPointId (&points)[3]);
