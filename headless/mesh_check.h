// Checks meshes that come from outside.
#pragma once

#include "headless/mesh_data.h"

#include <optional>
#include <string>

namespace headless {

// The first fault with its place, "polygon 12, corner 3: point 99 of 40" for instance; none when every size
// fits, every index is in range and every number finite. Places count from 0.
std::optional<std::string> FindMeshFault(const MeshData& mesh);

}  // namespace headless
