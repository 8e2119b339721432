// Reads back what an export wrote: a .glb, or a .gltf with its .bin. Whatever breaks the container throws a
// std::runtime_error that names the file and the fault.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace test_support {

struct GlbChunks {
  std::string text;                 // without the spaces behind it
  std::size_t padding = 0;          // those spaces
  std::vector<std::uint8_t> bytes;  // of the BIN chunk
};

struct GltfFile {
  std::string text;
  rapidjson::Document json;
  std::vector<std::uint8_t> bytes;  // of the one buffer
};

// Checks header, chunk types and all lengths, but not the text.
GlbChunks ReadGlbChunks(const std::filesystem::path& path);

// Reads by the path's extension. Also checks that the text is whole, that the buffer has its byteLength, and
// that the views lie behind one another and fill it.
GltfFile ReadGltfFile(const std::filesystem::path& path);

std::string ReadWholeFile(const std::filesystem::path& path);

// The components of the accessor's elements in order.
std::vector<double> AccessorValues(const GltfFile& file, std::uint32_t accessor);

// The value's compact text.
std::string TextOf(const rapidjson::Value& value);

}  // namespace test_support
