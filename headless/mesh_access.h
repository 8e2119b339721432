// Serves a MeshData through the host's mesh surface.
#pragma once

#include "headless/demand.h"
#include "headless/mesh_data.h"
#include "host/mesh_api.h"

#include <cstddef>
#include <memory>

namespace headless {

// What a mesh computes once for all of its accessors: triangles, calculated normals, lookups by id.
class MeshStore;

// Cheap: nothing is computed before it is asked for. The data's indices must be in range. `triangles`, null for
// none, counts those handed out and outlives the store.
std::shared_ptr<MeshStore> MakeMeshStore(std::shared_ptr<const MeshData> data, DemandCount* triangles = nullptr);

// A counted mesh object. `live` is the host's counter of temporary objects.
IZyMesh* NewMesh(std::shared_ptr<MeshStore> store, std::size_t& live);

}  // namespace headless
