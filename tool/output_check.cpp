#include "tool/output_check.h"

#include "readers/mapped_file.h"
#include "readers/read_scene.h"
#include "tool/output_outline.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

namespace tool {
namespace {

using Bytes = std::span<const std::byte>;
using Fault = std::optional<std::string>;

constexpr std::uint64_t kComponentU16 = 5123;
constexpr std::uint64_t kComponentFloat = 5126;
constexpr std::uint64_t kLargestCount = 0xFFFFFFFF;  // of bytes, in the header of a .glb and in a saver

std::uint32_t ReadU32(Bytes bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= std::to_integer<std::uint32_t>(bytes[offset + i]) << (8 * i);
  return value;
}

// A float is finite when its exponent isn't all ones.
bool AllFinite(Bytes floats) {
  bool finite = true;
  for (std::size_t offset = 0; offset + 4 <= floats.size(); offset += 4) {
    std::uint32_t bits;
    std::memcpy(&bits, floats.data() + offset, 4);
    finite &= (bits & 0x7F800000u) != 0x7F800000u;
  }
  return finite;
}

Fault CheckAccessor(const OutputOutline& outline, std::size_t index, Bytes buffer) {
  const auto fault = [index](const std::string& text) { return "accessor " + std::to_string(index) + text; };
  const OutlineAccessor& accessor = outline.accessors[index];
  if (accessor.bufferView >= outline.views.size())
    return fault(" names buffer view " + std::to_string(accessor.bufferView));
  const OutlineView& view = outline.views[accessor.bufferView];
  if (view.byteOffset + view.byteLength > buffer.size())
    return "buffer view " + std::to_string(accessor.bufferView) + " reaches beyond the buffer";
  const std::uint64_t size = accessor.componentType == kComponentU16 ? 2 : 4;
  const std::uint64_t needed = accessor.count * accessor.components * size;
  if (needed > view.byteLength) return fault(" reaches beyond its buffer view");
  if (accessor.componentType == kComponentFloat && !AllFinite(buffer.subspan(view.byteOffset, needed)))
    return fault(" holds a number that isn't finite");
  return std::nullopt;
}

Fault CheckDocument(std::string_view json, Bytes buffer) {
  OutputOutline outline;
  if (const Fault fault = ReadOutline(json, outline))
    return "its JSON is broken: " + *fault + " (most likely a number that isn't finite)";
  if (buffer.size() > kLargestCount) return "its buffer takes more than 4 GiB, the most that a saver can write";
  if (outline.bufferLength != buffer.size())
    return "its buffer has " + std::to_string(buffer.size()) + " bytes where the JSON says " +
           std::to_string(outline.bufferLength);
  for (std::size_t index = 0; index < outline.accessors.size(); ++index)
    if (Fault fault = CheckAccessor(outline, index, buffer)) return fault;
  return std::nullopt;
}

std::string_view TextOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

Fault CheckGlb(Bytes file) {
  if (file.size() > kLargestCount) return "it takes more than 4 GiB, the most that a .glb can hold";
  if (file.size() < 28 || ReadU32(file, 8) != file.size()) return "its length is not what its header says";
  const std::size_t jsonLength = ReadU32(file, 12);
  if (jsonLength > file.size() - 28) return "its JSON chunk reaches beyond the file";
  const std::size_t binaryLength = ReadU32(file, 20 + jsonLength);
  if (binaryLength != file.size() - 28 - jsonLength) return "its binary chunk does not end with the file";
  return CheckDocument(TextOf(file.subspan(20, jsonLength)), file.subspan(28 + jsonLength));
}

}  // namespace

Fault FindOutputFault(const std::filesystem::path& file) {
  try {
    const auto mapped = readers::MappedFile::Open(file);
    if (file.extension() == ".glb") return CheckGlb(mapped->Bytes());
    const auto binary = readers::MappedFile::Open(std::filesystem::path(file).replace_extension(".bin"));
    return CheckDocument(TextOf(mapped->Bytes()), binary->Bytes());
  } catch (const readers::InputError& error) {
    return error.what();
  }
}

std::optional<std::string> FindWriteFault(const std::filesystem::path& file) {
  std::FILE* const stream = std::fopen(file.c_str(), "ab");
  if (!stream) return std::strerror(errno);
  const std::string block(65536, '\0');
  const bool written = std::fwrite(block.data(), 1, block.size(), stream) == block.size();
  const int error = errno;
  if (std::fclose(stream) == 0 && written) return std::nullopt;
  return std::strerror(written ? errno : error);
}

}  // namespace tool
