// Meshes of scene files.
#pragma once

#include "headless/mesh_data.h"
#include "readers/scene_arrays.h"
#include "readers/scene_json.h"

namespace readers {

// A mesh object. Throws a JsonFault for a mesh whose sizes, indices or numbers don't fit.
headless::MeshData ReadMesh(const Json& value, BinaryFiles& files);

}  // namespace readers
