// Curves over time.
#pragma once

#include "headless/scene_data.h"

#include <cstddef>

namespace headless {

// The curve's value. `hint` is 0 at first; handing it in again makes a walk through time cheap.
double EvaluateEnvelope(const EnvelopeData& envelope, double time, std::size_t& hint);

}  // namespace headless
