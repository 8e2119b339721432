// Items that an IK solver moves.
#pragma once

#include "saver/save_state.h"

// Fills state.ikItems with the subtree of each of state.ikRoots.
void CollectIkItems(SaveState& state);
