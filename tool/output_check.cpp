#include "tool/output_check.h"

#include "readers/mapped_file.h"
#include "readers/read_scene.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>

namespace tool {
namespace {

using Bytes = std::span<const std::byte>;
using Fault = std::optional<std::string>;

constexpr std::uint32_t kComponentFloat = 5126;
constexpr std::uint64_t kLargestCount = 0xFFFFFFFF;  // of bytes, in the header of a .glb and in a saver

std::uint32_t ReadU32(Bytes bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= std::to_integer<std::uint32_t>(bytes[offset + i]) << (8 * i);
  return value;
}

std::uint64_t Number(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsUint64() ? member->value.GetUint64() : 0;
}

std::uint64_t ComponentCount(const rapidjson::Value& accessor) {
  static constexpr std::pair<const char*, std::uint64_t> kTypes[] = {
      {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
  for (const auto& [type, count] : kTypes)
    if (accessor["type"] == type) return count;
  return 0;
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

Fault CheckAccessor(const rapidjson::Value& root, std::size_t index, Bytes buffer) {
  const std::string name = "accessor " + std::to_string(index);
  const rapidjson::Value& accessor = root["accessors"][static_cast<rapidjson::SizeType>(index)];
  const rapidjson::Value& views = root["bufferViews"];
  const std::uint64_t view = Number(accessor, "bufferView");
  if (view >= views.Size()) return name + " names buffer view " + std::to_string(view);
  const rapidjson::Value& bufferView = views[static_cast<rapidjson::SizeType>(view)];
  const std::uint64_t offset = Number(bufferView, "byteOffset");
  const std::uint64_t length = Number(bufferView, "byteLength");
  if (offset + length > buffer.size()) return "buffer view " + std::to_string(view) + " reaches beyond the buffer";
  const std::uint64_t type = Number(accessor, "componentType");
  const std::uint64_t size = type == 5123 ? 2 : 4;
  const std::uint64_t needed = Number(accessor, "count") * ComponentCount(accessor) * size;
  if (needed > length) return name + " reaches beyond its buffer view";
  if (type == kComponentFloat && !AllFinite(buffer.subspan(offset, needed)))
    return name + " holds a number that isn't finite";
  return std::nullopt;
}

Fault CheckDocument(const rapidjson::Document& root, Bytes buffer) {
  if (root.HasParseError())
    return std::string("its JSON is broken: ") + rapidjson::GetParseError_En(root.GetParseError()) + " at byte " +
           std::to_string(root.GetErrorOffset()) + " (most likely a number that isn't finite)";
  if (buffer.size() > kLargestCount) return "its buffer takes more than 4 GiB, the most that a saver can write";
  const std::uint64_t length = Number(root["buffers"][0], "byteLength");
  if (length != buffer.size())
    return "its buffer has " + std::to_string(buffer.size()) + " bytes where the JSON says " +
           std::to_string(length);
  for (std::size_t index = 0; index < root["accessors"].Size(); ++index)
    if (Fault fault = CheckAccessor(root, index, buffer)) return fault;
  return std::nullopt;
}

Fault ParseAndCheck(Bytes json, Bytes buffer) {
  rapidjson::Document root;
  root.Parse<rapidjson::kParseIterativeFlag>(reinterpret_cast<const char*>(json.data()), json.size());
  return CheckDocument(root, buffer);
}

Fault CheckGlb(Bytes file) {
  if (file.size() > kLargestCount) return "it takes more than 4 GiB, the most that a .glb can hold";
  if (file.size() < 28 || ReadU32(file, 8) != file.size()) return "its length is not what its header says";
  const std::size_t jsonLength = ReadU32(file, 12);
  if (jsonLength > file.size() - 28) return "its JSON chunk reaches beyond the file";
  const std::size_t binaryLength = ReadU32(file, 20 + jsonLength);
  if (binaryLength != file.size() - 28 - jsonLength) return "its binary chunk does not end with the file";
  return ParseAndCheck(file.subspan(20, jsonLength), file.subspan(28 + jsonLength));
}

}  // namespace

Fault FindOutputFault(const std::filesystem::path& file) {
  try {
    const auto mapped = readers::MappedFile::Open(file);
    if (file.extension() == ".glb") return CheckGlb(mapped->Bytes());
    const auto binary = readers::MappedFile::Open(std::filesystem::path(file).replace_extension(".bin"));
    return ParseAndCheck(mapped->Bytes(), binary->Bytes());
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
