// The two halves of a save.
#pragma once

#include "saver/save_state.h"

// Reads the options, makes the document and scans the scene for what is exported. ZYe_OK on every path: what
// the host refuses is passed over.
zyresult InitSaver(SaveState& state);

// Builds the document from what InitSaver found, writes it to state.filename and frees it. ZYe_FAILED only when
// the file can't be written.
zyresult RunSaver(SaveState& state);
