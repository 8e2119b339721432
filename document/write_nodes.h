// Nodes and cameras as JSON.
#pragma once

#include "document/document.h"

// Writes the node and all below it, depth first, a parent before its children. Returns the node's index in
// "nodes".
std::uint32_t WriteNodeTree(GltfDocument& document, GltfNode& root);
