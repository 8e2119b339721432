#include "document/images.h"

#include "document/buffers.h"
#include "saver/log_message.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace {

struct ImageExtension {
  std::string_view text;
  GltfImageKind kind;
};
constexpr std::array<ImageExtension, 3> kImageExtensions = {
    {{"png", GltfImageKind::Png}, {"jpg", GltfImageKind::Jpeg}, {"jpeg", GltfImageKind::Jpeg}}};

// By GltfImageKind.
constexpr std::array<const char*, 3> kMimeTypes = {nullptr, "image/png", "image/jpeg"};

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The length in its low 32 bits.
std::optional<std::uint32_t> LengthOf(const std::string& path) {
  // A directory or pipe can be opened too, but has no bytes to take.
  std::error_code error;
  if (!std::filesystem::is_regular_file(SystemPath(path), error)) return std::nullopt;
  const FilePtr file = OpenForReading(path);
  if (!file || std::fseek(file.get(), 0, SEEK_END) != 0) return std::nullopt;
  return static_cast<std::uint32_t>(std::ftell(file.get()));
}

// True for a name that leads out of the directory that it is appended to.
bool LeavesDirectory(const std::string& name) {
  const auto parts = SystemPath(name);
  return std::any_of(parts.begin(), parts.end(), [](const auto& part) { return part == ".."; });
}

}  // namespace

GltfImageFile MakeImageFile(const std::string& path) {
  std::string extension = ExtensionOf(path);
  std::transform(extension.begin(), extension.end(), extension.begin(), LowerAscii);
  for (const ImageExtension& known : kImageExtensions)
    if (extension == known.text) return {path, known.kind};
  return {path, GltfImageKind::Unknown};
}

std::optional<std::uint32_t> AddImage(GltfDocument& document, const GltfImageFile& image) {
  if (const auto found = document.imageIndex.find(image.path); found != document.imageIndex.end())
    return found->second;
  const auto length = LengthOf(image.path);
  if (!length) {
    if (document.log) document.log->Error("Image file path: %s doesn't exist!", image.path.c_str());
    return std::nullopt;
  }

  JsonText& text = document.json->images.Append();
  text.StartObject();
  if (const char* mimeType = kMimeTypes[static_cast<std::size_t>(image.kind)]) text.Member("mimeType", mimeType);
  GltfDataBlock block;
  block.data = image.path;
  block.kind = GltfDataKind::ImageFile;
  block.byteLength = *length + PaddingOf(*length);
  if (document.format == GltfFormat::Glb) {
    block.padding = PaddingOf(*length);
    const std::uint32_t offset = GrowBuffer(document, block.byteLength);
    text.Member("bufferView", AddBufferView(document, 0, block.byteLength, offset, 0, 0));
  } else {
    // The copy is a file of its own: the length is only a note and the buffer doesn't grow.
    text.Member("uri", FileNameOf(image.path));
  }
  text.EndObject();
  AddDataBlock(document, std::move(block));
  const std::uint32_t index = document.json->images.Size() - 1;
  document.imageIndex.insert({image.path, index});
  return index;
}

void EmbedImage(FileStream& stream, const std::string& path, std::uint32_t byteCount) {
  const FilePtr file = OpenForReading(path);
  const std::uint64_t copied = file ? stream.CopyFrom(file.get(), byteCount) : 0;
  if (!stream.Failed()) stream.PutRepeated('\0', byteCount - copied);
}

bool CopyImage(const std::string& path, const std::string& directory) {
  const std::string name = FileNameOf(path);
  const std::string target = directory + name;
  if (target == path) return true;
  // The same file under another spelling would be emptied by opening it for writing.
  std::error_code error;
  if (std::filesystem::equivalent(SystemPath(path), SystemPath(target), error)) return true;
  if (LeavesDirectory(name)) return false;

  const FilePtr source = OpenForReading(path);
  if (!source) return true;
  FileStream copy(target);
  copy.CopyFrom(source.get(), std::numeric_limits<std::uint64_t>::max());
  return copy.Close();
}
