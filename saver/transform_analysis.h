// What a locator's transform stack is made of, for the sampling of animations.
#pragma once

#include "saver/save_state.h"

// Fills `info`. ZYe_NO_LOCATOR when the item is none.
zyresult AnalyseTransforms(SaveState& state, const CZyUser_Item& item, TransformInfo& info);
