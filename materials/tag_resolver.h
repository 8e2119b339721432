// From a polygon's material tag to one material, through the part of the shader tree that serves the tag.
#pragma once

#include "saver/save_state.h"

// The tag's material, made on first request: from the first glTF shader below the tag's mask, or with
// default values when there is none. Null only when the document has no scene to own it.
GltfMaterial* ResolvePolyTag(SaveState& state, const std::string& tag);
