// Skins: how the host's deformers bend a mesh, as joints with weights.
#pragma once

#include "saver/save_state.h"

// Adds to the mesh a skin for each deform group that names its item; without a group, one skin of the
// deformers that are linked to the item.
void CreateDeformers(SaveState& state, GltfMesh* mesh, IZyItem* item);
