#include "tool/written_document.h"

#include "readers/read_scene.h"

#include <algorithm>

namespace tool {
namespace {

constexpr std::size_t kHeadersBytes = 28;  // of the file and its two chunks
constexpr std::uint64_t kLargestCount = 0xFFFFFFFF;
constexpr std::uint32_t kMagic = 0x46546C67, kJsonChunk = 0x4E4F534A, kBinaryChunk = 0x004E4942;

std::uint32_t ReadU32(std::span<const std::byte> bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= std::to_integer<std::uint32_t>(bytes[offset + i]) << (8 * i);
  return value;
}

void SplitGlb(WrittenDocument& document) {
  const std::span<const std::byte> file = document.file->Bytes();
  if (file.size() > kLargestCount) throw WriteFault("it takes more than 4 GiB, the most that a .glb can hold");
  if (file.size() < kHeadersBytes || ReadU32(file, 8) != file.size())
    throw WriteFault("its length is not what its header says");
  if (ReadU32(file, 0) != kMagic || ReadU32(file, 4) != 2 || ReadU32(file, 16) != kJsonChunk)
    throw WriteFault("it doesn't begin like a .glb");
  const std::size_t jsonBytes = ReadU32(file, 12);
  if (jsonBytes > file.size() - kHeadersBytes) throw WriteFault("its JSON chunk reaches beyond the file");
  const std::size_t binaryBytes = ReadU32(file, 20 + jsonBytes);
  if (ReadU32(file, 24 + jsonBytes) != kBinaryChunk || binaryBytes != file.size() - kHeadersBytes - jsonBytes)
    throw WriteFault("its binary chunk does not end with the file");
  document.json = file.subspan(20, jsonBytes);
  document.buffer = file.subspan(kHeadersBytes + jsonBytes);
}

}  // namespace

OutputKind KindOf(const std::filesystem::path& file) {
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return extension == ".glb" ? OutputKind::Glb : OutputKind::Gltf;
}

const char* ExtensionOf(OutputKind kind) { return kind == OutputKind::Glb ? ".glb" : ".gltf"; }

WrittenDocument OpenDocument(const std::filesystem::path& file) {
  WrittenDocument document;
  try {
    document.file = readers::MappedFile::Open(file);
    if (KindOf(file) == OutputKind::Glb) {
      SplitGlb(document);
    } else {
      document.binary = readers::MappedFile::Open(std::filesystem::path(file).replace_extension(".bin"));
      document.json = document.file->Bytes();
      document.buffer = document.binary->Bytes();
      if (document.buffer.size() > kLargestCount)
        throw WriteFault("its buffer takes more than 4 GiB, the most that a saver can write");
    }
  } catch (const readers::InputError& error) {
    throw WriteFault(error.what());
  }
  return document;
}

}  // namespace tool
