// Looks at the JSON of a glTF model that anybody may have written, before it is handed on.
#pragma once

#include "readers/scene_json.h"

#include <cstdint>

namespace tool {

// Most bytes that a model may have, all its files together: browsers hold no much larger page.
constexpr std::uint64_t kLargestModel = 256u << 20;

// A whole number from 0 to 2^32 - 1. Throws JsonFault.
std::uint64_t ReadNatural(const readers::Json& value);

// Checks the version, the types of what holds other values, that every index has its target, that nodes form
// trees, that views lie in their buffers and accessors in their views. Throws JsonFault for the first fault.
void CheckModel(const readers::Json& root);

}  // namespace tool
