// Shading normals as the host calculates them.
#pragma once

#include "headless/mesh_data.h"

#include <vector>

namespace headless {

// x, y, z per polygon corner: the unit normal of the summed area vectors of those polygons around the corner's
// point that bend no more than the mesh's smoothing angle from the corner's own polygon; a half turn or more
// takes all of them. Polygons are summed in index order. (0, 0, 0) where there is no normal: polygons without
// area have none and lend none.
std::vector<double> CalculateCornerNormals(const MeshData& mesh);

}  // namespace headless
