// Laws that every exported file must keep. A broken one throws a std::logic_error that says which.
#pragma once

#include "headless/mesh_data.h"
#include "tests/support/glb_reader.h"

namespace test_support {

// The file's mesh holds, unfolded to triangle corners, what the mesh says: one primitive a material tag, in order
// of first sight, with the positions, normals, colours and UVs of its corners.
void CheckUnfolds(const GltfFile& file, unsigned meshIndex, const headless::MeshData& mesh);

// The bounds of accessors are those of their values.
void CheckBounds(const GltfFile& file);

// The .gltf "scene.gltf" has a uri where the .glb has none; all else is the same.
void CheckSame(const GltfFile& glb, GltfFile& gltf);

}  // namespace test_support
