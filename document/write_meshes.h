// Meshes as JSON.
#pragma once

#include "document/document.h"

#include <optional>

// The mesh's index in "meshes"; none, and nothing is written, when it has no positions or no polygons. Its
// skins join the document's, also when they are there already.
std::optional<std::uint32_t> WriteMesh(GltfDocument& document, const GltfMesh& mesh);
