// Steps the scene through time and bakes the planned records into one animation.
#pragma once

#include "saver/save_state.h"

// The host objects that one record asks at every time. Siblings share the inverse of their parent's matrix.
struct SampleSource {
  // An inverse stays good for as long as the host gives the same bits.
  struct ParentMatrix {
    Matrix4 world;
    Matrix4 inverse;
    bool known = false;
  };

  CZyUser_Locator locator;
  CZyUser_Locator parent;                // empty when the parent gives none, or can't be asked
  ParentMatrix* parentMatrix = nullptr;  // null when the world matrix is taken as it is
};

// Samples the records at `rate` samples a second from start to end time. Without records no animation is
// made. Always 0.
zyresult SampleScene(SaveState& state, double rate);

// Appends a key at `time` (seconds) to each sampled path of the record. A matrix that can't be read counts
// as the identity, and that of a parent as if there were no parent.
void SampleAt(const XformRecord& record, const SampleSource& source, const CZyUser_ChannelRead& read, double time);
