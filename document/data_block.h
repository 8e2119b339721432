// One piece of the binary buffer, in its final layout.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

enum class GltfDataKind : std::uint32_t { U16 = 1, U32 = 2, F32 = 3, ImageFile = 4 };

struct GltfDataBlock {
  // The values, or for an image file its path.
  std::variant<std::vector<std::uint16_t>, std::vector<std::uint32_t>, std::vector<float>, std::string> data;
  std::uint32_t count = 0;       // elements, three per VEC3 vertex; 0 for an image file
  std::uint32_t byteLength = 0;  // length in the buffer, padding included
  GltfDataKind kind = GltfDataKind::F32;
  std::uint32_t padding = 0;  // zero bytes behind the data, 0 to 3
};
