// The actor of a scene: the group of items and channels that its action clips animate.
#pragma once

#include "saver/save_state.h"

// Loads the actor record from an actor's group item. Always 0.
zyresult FillActor(SaveState& state, const CZyUser_Item& item);
