#include "document/buffer_data.h"

#include "document/images.h"

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
