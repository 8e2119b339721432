// The .glb container, all numbers little-endian u32:
//
//   0        "glTF", version 2, length of the file
//   12       J, "JSON", J bytes: the text, then spaces up to a multiple of 4
//   20 + J   B, "BIN\0", B bytes: the blocks
#pragma once

#include "document/document.h"

// Writes the path. False when any of it can't be written.
bool WriteGlb(GltfDocument& document, const std::string& path, const JsonPieces& text);
