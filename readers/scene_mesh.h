// Meshes of scene files.
#pragma once

#include "headless/mesh_data.h"
#include "readers/scene_arrays.h"
#include "readers/scene_json.h"

namespace readers {

// What a map type says of its maps.
struct MapType {
  std::uint32_t type;
  std::uint32_t dimension;
  const char* name;  // what a map without a name is called
};

// Null for a type that says nothing.
const MapType* FindMapType(std::uint32_t type);

// A smoothing angle given in degrees, in radians.
double SmoothingRadians(double degrees);

// A mesh object. Throws a JsonFault for a mesh whose sizes, indices or numbers don't fit.
headless::MeshData ReadMesh(const Json& value, BinaryFiles& files);

}  // namespace readers
