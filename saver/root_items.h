// Where the export starts in the item hierarchy.
#pragma once

#include "saver/save_state.h"

// Fills state.rootItems by the option exportType and scans the items that it meets on the way. A type other
// than 0, 1 and 2 gives no roots.
void GatherRootItems(SaveState& state);
