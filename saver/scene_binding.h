// The saver's handles into the host's scene.
#pragma once

#include "saver/save_state.h"

// Binds the scene of the running pass with its graphs and channel reads, and looks up the type codes. What the
// host can't give stays empty. Returns the scene item, empty when there is none.
CZyUser_Item BindScene(SaveState& state);

// Fills state.channels.
void FindChannelNumbers(SaveState& state);
