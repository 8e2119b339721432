// Decides which locators move, and which paths of their nodes are sampled.
#pragma once

#include "saver/save_state.h"

// Adds what the item needs to the sampling records. `read` is the layer whose keys count.
void PlanSampling(SaveState& state, const CZyUser_Item& item, GltfNode* node, const CZyUser_ChannelRead& read);

// Plans every item that has a node, by the keys of the edit layer.
void PlanAllNodes(SaveState& state);

// True for a node that stands at the top of the export although its item may have a parent: its world
// matrix is its local one.
bool IsTopLevel(const SaveState& state, const GltfNode& node);
