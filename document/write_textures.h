// Textures with their samplers as JSON, and the references by which materials name them.
#pragma once

#include "document/document.h"

#include <optional>

// The texture's index in "textures", writing it on first use. None when its image can't be had.
std::optional<std::uint32_t> WriteTexture(GltfDocument& document, const GltfTexture& texture);

// A factor inside a reference, left out when it is exactly 1.
struct ReferenceFactor {
  const char* key = "";
  double value = 1;
};

// A written texture, with the UV map that a material lays it on by.
struct TextureReference {
  const GltfTexture* texture = nullptr;
  std::uint32_t index = 0;
  std::uint32_t texCoord = 0;
};

void WriteTextureReference(JsonText& text, const TextureReference& reference, ReferenceFactor factor);
