// What the check of an export needs of its JSON: how the buffer is laid out, and how much there is of everything.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The arrays under the root.
enum class OutputArray : std::size_t {
  Nodes,
  Meshes,
  Materials,
  Textures,
  Images,
  Cameras,
  Skins,
  Animations,
  Buffers,
  BufferViews,
  Accessors,
  None,  // all others
};

struct OutlineView {
  std::uint64_t byteOffset = 0, byteLength = 0;
};

struct OutlineAccessor {
  std::uint64_t bufferView = 0, componentType = 0, count = 0;
  std::uint64_t components = 0;  // of one element, 0 for an unknown type
};

struct OutlineImage {
  std::uint64_t bufferView = 0;
  std::optional<std::string> uri;
};

// A number that the text lacks is 0.
struct OutputOutline {
  std::array<std::uint64_t, static_cast<std::size_t>(OutputArray::None)> sizes = {};  // by OutputArray
  std::uint64_t bufferLength = 0;                                                     // of the first buffer
  std::vector<OutlineView> views;
  std::vector<OutlineAccessor> accessors;
  std::vector<OutlineImage> images;
  std::uint64_t primitives = 0;
  // The accessors that primitives and samplers name.
  std::vector<std::uint64_t> indices, positions, inputs;

  std::uint64_t SizeOf(OutputArray array) const { return sizes[static_cast<std::size_t>(array)]; }
  // Elements of an accessor, 0 when there is none of the index.
  std::uint64_t CountOf(std::uint64_t accessor) const {
    return accessor < accessors.size() ? accessors[accessor].count : 0;
  }
};

struct JsonError {
  std::string reason;
  std::size_t offset = 0;  // bytes
};

// Fills an empty outline in one pass over the text. A tree of it would take several times its memory.
std::optional<JsonError> ReadOutline(std::string text, OutputOutline& outline);

}  // namespace tool
