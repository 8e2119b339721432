// The placement of a texture on its UV map.
#pragma once

#include "document/material_records.h"

// The host turns and scales an image about its middle p = (0.5, 0.5), KHR_texture_transform about the
// origin. With the rotation R = (c s; -s c) and the scale S the offset that makes up for it is
//
//   offset - (S p - p) + S (R (-p) + p)
std::array<double, 2> TextureOffset(const GltfTexture& texture);
