// Materials of a save: one per polygon tag that the meshes use.
#pragma once

#include "saver/save_state.h"

// Resolves the collected tags and hands each mesh the materials of its tags. Does nothing when the option
// `materials` is 0. Always ZYe_OK: problems are log lines.
zyresult CreateMaterials(SaveState& state);
