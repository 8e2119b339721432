// Material values from channels of shader tree items, in the edit state. Colours pass as they stand: there is
// no colour space conversion and no clamping.
#pragma once

#include "saver/save_state.h"

// Both make the item the frame's current one. A channel that is missing or can't be read keeps the field.
void ReadGltfShader(SaveState& state, GltfMaterial& material, IZyItem* shader);
// Transparency and double-sidedness of an Orvo advanced material.
void ReadOrvoMaterial(SaveState& state, GltfMaterial& material, IZyItem* orvoMaterial);
