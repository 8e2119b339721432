// Textures from image maps and the locators that place them.
#pragma once

#include "saver/save_state.h"

// The texture of an image map, which must be the frame's current item. One record per user name: an image
// map that serves several materials is read once. Null when the item has no texture or no image file.
GltfTexture* CreateTexture(SaveState& state, const CZyUser_Item& imageMap);
