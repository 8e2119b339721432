// Skins as JSON.
#pragma once

#include "document/document.h"

// Writes a skin and gives its node the "skin" key. All nodes must have their index before and be written after.
// Joints that no node of the file stands for are left out.
void WriteSkin(GltfDocument& document, const GltfSkin& skin);
