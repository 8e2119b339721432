// Tells which mesh maps of a mesh are read, and in which order they get their places.
#pragma once

#include "saver/save_state.h"

// Fills the scans of state.scan for its current mesh: normal map, colours (RGB before RGBA), UV maps sorted by
// name, and tangent bases when the option asks for them.
void DiscoverMeshMaps(SaveState& state);
