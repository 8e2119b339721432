// The one call back from the document into geometry; geometry/primitive_writer.cpp defines it.
#pragma once

#include "document/document.h"

// One entry of polygonsByTag: a material tag and its triangle numbers.
using TagTriangles = std::pair<std::string, std::vector<std::uint32_t>>;

// Folds the corners of the tag's triangles into vertices, adds their data to the buffer and appends the
// primitive's object to `primitives`.
void WritePrimitive(GltfDocument& document, const GltfMesh& mesh, const TagTriangles& entry, JsonText& primitives);
