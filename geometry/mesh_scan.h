// Turns a host mesh into a GltfMesh: one walk over its points, one over the triangles of its polygons. It makes
// no vertices, only per-corner tables of distinct values; see primitive_writer.cpp for the folding.
#pragma once

#include "saver/save_state.h"

// The mesh of the frame's current item `item`, made on first sight of the item. Null for an item that gives
// none: without points, hidden, or too large for 16-bit indices.
GltfMesh* CreateMeshForItem(SaveState& state, const CZyUser_Item& item);

// What the frame's point and polygon scans call, on the frame's current point and polygon.
void VisitScannedPoint(SaveState& state);
void VisitScannedPolygon(SaveState& state);
