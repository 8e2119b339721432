// Warnings for image maps that look right in the host and wrong elsewhere. glTF packs metallic, roughness and
// occlusion into the channels of one image and wants the alpha in the base colour image, while the host
// follows the image map's own swizzling. The export doesn't rewrite images.
#pragma once

#include "saver/save_state.h"

#include <string_view>

// Swizzling of the image map read last. A material's image maps share one record: a map that lacks a channel
// counts with the value of the map before it.
struct SwizzleReads {
  std::int32_t swizzling = 0;  // zero is off
  std::int32_t rgba = 0;       // the image channel that is used
};

// Checks the image map, which must be the frame's current item, and stores its texture in the material's field
// for the channel. A channel that isn't one of a material's is passed over.
void ValidateImageMap(SaveState& state, std::string_view channel, const CZyUser_Item& imageMap,
                      GltfTexture& texture, GltfMaterial& material, SwizzleReads& reads);
