// The animation step of a save.
#pragma once

#include "saver/save_state.h"

// Samples the scene, or each action clip that the options ask for, into animations of the document, and
// puts the host's active clip back. Always 0.
zyresult ExportAnimation(SaveState& state);
