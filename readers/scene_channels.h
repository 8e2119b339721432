// Channels of scene files: values, keys, whole channel lists.
#pragma once

#include "headless/scene_data.h"
#include "readers/scene_json.h"

#include <array>
#include <string_view>

namespace readers {

// Keys in ascending order of time, at least one.
headless::EnvelopeData ReadEnvelope(const Json& value);

// A value for a channel that holds values like `pattern`.
headless::ChannelValue ReadChannelValue(const Json& value, const headless::ChannelValue& pattern);

// An object sets channels by name, a list replaces all channels of the item.
void ReadChannels(const Json& value, headless::ItemData& item);

// Three channels at once.
struct VectorData {
  std::array<double, 3> value = {};
  std::optional<std::array<headless::EnvelopeData, 3>> envelopes;
};

// Every number is multiplied by `unit`.
VectorData ReadVector(const Json& value, double unit);

// Names of the three channels of a transform item, null for types without them.
const std::array<const char*, 3>* VectorChannels(std::string_view transformType);

// Sets the three channels of a transform item from a vector; a rotation's is in degrees.
void ReadTransformValue(const Json& value, headless::ItemData& transform);

// What a vector's numbers are multiplied by for a transform item: rotations are typed in degrees.
double VectorUnit(std::string_view transformType);

}  // namespace readers
