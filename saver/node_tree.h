// From root items to the tree of nodes.
#pragma once

#include "saver/save_state.h"

// Makes the nodes of state.rootItems and of what hangs below them, in the host's order, with their meshes,
// cameras and matrices. ZYe_FAILED when the walk met an item that can't be taken; what was built stays.
zyresult CreateNodes(SaveState& state);
