// Nodes and cameras as JSON.
#pragma once

#include "document/document.h"

// Gives the node and all below it their indices in "nodes", depth first, a parent before its children, and writes
// their meshes and cameras. Returns the node's index.
std::uint32_t AddNodeTree(GltfDocument& document, GltfNode& root);

// Writes "nodes", when the skins are known.
void WriteNodes(GltfDocument& document);
