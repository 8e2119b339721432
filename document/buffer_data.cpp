#include "document/buffer_data.h"

#include "document/images.h"

std::uint64_t BufferBytes(const GltfDocument& document) {
  std::uint64_t bytes = 0;
  for (const GltfDataBlock& block : document.dataBlocks) {
    if (const auto* shorts = std::get_if<std::vector<std::uint16_t>>(&block.data))
      bytes += shorts->size() * sizeof(std::uint16_t) + block.padding;
    else if (const auto* words = std::get_if<std::vector<std::uint32_t>>(&block.data))
      bytes += words->size() * sizeof(std::uint32_t);
    else if (const auto* floats = std::get_if<std::vector<float>>(&block.data))
      bytes += floats->size() * sizeof(float);
    else if (document.format == GltfFormat::Glb)
      bytes += block.byteLength;  // an image
  }
  return bytes;
}

bool WriteBufferData(GltfDocument& document, FileStream& stream, const std::string& directory) {
  bool copied = true;
  for (GltfDataBlock& block : document.dataBlocks) {
    const auto data = std::move(block.data);
    const auto writeValues = [&stream](const auto& values) {
      stream.Write(values.data(), values.size() * sizeof(values[0]));
    };
    switch (block.kind) {
      case GltfDataKind::U16:
        writeValues(std::get<std::vector<std::uint16_t>>(data));
        break;
      case GltfDataKind::U32:
        writeValues(std::get<std::vector<std::uint32_t>>(data));
        break;
      case GltfDataKind::F32:
        writeValues(std::get<std::vector<float>>(data));
        break;
      case GltfDataKind::ImageFile:
        if (document.format == GltfFormat::Glb)
          EmbedImage(stream, std::get<std::string>(data), block.byteLength - block.padding);
        else
          copied = CopyImage(std::get<std::string>(data), directory) && copied;
        break;
    }
    stream.PutRepeated('\0', block.padding);
  }
  return copied;
}
