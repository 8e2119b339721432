// What the scan learns from one item of the scene.
#pragma once

#include "saver/save_state.h"

// Enters the item in the tables that fit its type: IK roots, masks, deform groups, bind matrices. Items that
// no table wants are passed over.
void ScanItem(SaveState& state, const CZyUser_Item& item);
