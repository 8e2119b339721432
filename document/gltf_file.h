// A .gltf text file, the .bin with its buffer, and the image copies beside them.
#pragma once

#include "document/document.h"

// The buffer's uri for a path: the bare name of the .bin, not percent-encoded.
std::string BufferUri(const std::string& path);

// Writes the path with its extension replaced by ".gltf", the same with ".bin", and the image copies. False
// when any of them can't be written.
bool WriteGltf(GltfDocument& document, const std::string& path, const JsonPieces& text);
