#include "document/glb_file.h"

#include "document/buffer_data.h"
#include "document/buffers.h"

namespace {

constexpr std::uint32_t kMagic = 0x46546C67;      // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;  // "JSON"
constexpr std::uint32_t kBinChunk = 0x004E4942;   // "BIN\0"
constexpr std::uint32_t kVersion = 2;
constexpr std::uint32_t kHeaderBytes = 12;
constexpr std::uint32_t kChunkHeaderBytes = 8;

void PutU32(FileStream& stream, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) stream.Put(static_cast<char>(value >> shift & 0xFFu));
}

}  // namespace

bool WriteGlb(GltfDocument& document, const std::string& path, const JsonPieces& text) {
  std::uint32_t textBytes = 0;
  for (const std::string_view piece : text) textBytes += static_cast<std::uint32_t>(piece.size());
  const std::uint32_t textPadding = PaddingOf(textBytes);
  const std::uint32_t jsonBytes = textBytes + textPadding;
  std::uint32_t blockBytes = 0;
  for (const GltfDataBlock& block : document.dataBlocks) blockBytes += block.byteLength;
  const std::uint32_t binPadding = PaddingOf(blockBytes);
  const std::uint32_t binBytes = blockBytes + binPadding;

  FileStream stream(path);
  if (stream.Failed()) return false;
  PutU32(stream, kMagic);
  PutU32(stream, kVersion);
  PutU32(stream, kHeaderBytes + kChunkHeaderBytes + jsonBytes + kChunkHeaderBytes + binBytes);
  PutU32(stream, jsonBytes);
  PutU32(stream, kJsonChunk);
  stream.Write(text);
  stream.PutRepeated(' ', textPadding);
  PutU32(stream, binBytes);
  PutU32(stream, kBinChunk);
  WriteBufferData(document, stream, "");
  stream.PutRepeated('\0', binPadding);
  return stream.Close();
}
