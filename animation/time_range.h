// When an animation is sampled: range and rate of the scene, and the pass over an actor's keys.
#pragma once

#include "saver/save_state.h"

#include <string>

// Reads start and end time (seconds) and the sample rate, multiplier included, from the scene item; what
// isn't found is 0.
void ReadTimeRange(SaveState& state);

// Widens min and max (seconds) by the first and last key of a channel in the edit layer. False, with both
// as they were, when the channel has no keys.
bool KeyRange(const SaveState& state, const CZyUser_Item& item, std::int32_t channel, double& min, double& max);

// Walks the actor's items for the range of their keys and warns of animated items that have no node. The
// range goes no further: every clip is sampled over the scene's range. Opens a block of the log.
void GatherActorTimeRange(SaveState& state, const std::string& animationName);
