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
// Stands here for its callers to be compiled with it: it runs for every corner.
inline bool AddKnownCorner(MeshScanState& scan, std::uint32_t place, const std::uint32_t* keys) {
  if (place == kUnknownPoint || !scan.waiting.empty()) return false;
  const std::size_t count = scan.keyMaps.size();
  const std::uint32_t* const rows = scan.keysOfWedge.data();
  const std::uint32_t wedge = scan.wedgesOfPoint.FindListed(place, [=](std::uint32_t known) {
    const std::uint32_t* const row = rows + known * count;
    for (std::size_t m = 0; m < count; ++m)
      if (keys[m] != row[m] || keys[m] == IZyValueKeys::kNoKey) return false;
    return true;
  });
  if (wedge == PointFold::kNone) return false;
  scan.currentMesh->wedgeIndex.push_back(wedge);
  return true;
}

// After the last corner. UVs of a point that are equal but for the sign of a zero take the signs of the one that
// came first.
void FinishWedges(MeshScanState& scan);
