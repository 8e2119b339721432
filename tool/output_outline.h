// The numbers of an exported JSON text by which its buffer is laid out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct OutlineView {
  std::uint64_t byteOffset = 0, byteLength = 0;
};

struct OutlineAccessor {
  std::uint64_t bufferView = 0, count = 0, componentType = 0;
  std::uint64_t components = 0;  // of one element, 0 for an unknown type
};

// A key that the text lacks leaves its 0.
struct OutputOutline {
  std::uint64_t bufferLength = 0;  // of the first buffer
  std::vector<OutlineView> views;
  std::vector<OutlineAccessor> accessors;
};

// Reads the text in one pass, however long it is, and keeps nothing else of it. Returns why it isn't JSON, with
// the place.
std::optional<std::string> ReadOutline(std::string_view text, OutputOutline& outline);

}  // namespace tool
