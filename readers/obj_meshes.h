// Turns the polygons of an OBJ file into meshes of the host.
#pragma once

#include "readers/obj_data.h"

#include <memory>
#include <vector>

namespace readers {

// A mesh for each entry of data.meshes. Each has the points its polygons use, in the order of their first use,
// and shares the file's texture coordinates, normals and colours with the others. Empties `data` of what the
// meshes take over.
std::vector<std::shared_ptr<const headless::MeshData>> BuildMeshes(ObjData& data);

}  // namespace readers
