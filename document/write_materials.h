// Materials with their textures as JSON.
#pragma once

#include "document/document.h"

// The material's index in "materials", writing it on first use; the texCoord values of the first mesh
// hold for all.
std::uint32_t WriteMaterial(GltfDocument& document, const GltfMaterial& material, const GltfMesh& mesh);
