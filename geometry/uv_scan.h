// Finishes a UV map after the scan.
#pragma once

#include "geometry/scan_state.h"

// Turns the corners' values into the map's indices and distinct values. Values are shared among the corners of
// one point only; the corners without a value share entry 0, (0, 0), which is there only when one lacks it.
void FinishUvScan(const GltfMesh& mesh, UvScan& scan);
