#include "importer/textures.h"

#include "importer/axes.h"
#include "importer/import_model.h"
#include "importer/source_check.h"
#include "readers/text_utf8.h"

#include <assimp/commonMetaData.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <png.h>
#include <string_view>

namespace importer {
namespace {

constexpr std::size_t kLongestStem = 100;
constexpr std::uint64_t kMostTexels = 1u << 28;

struct Magic {
  std::string_view bytes;
  const char* extension;
};

constexpr Magic kMagics[] = {
    {"\x89PNG\r\n\x1A\n", "png"},
    {"\xFF\xD8\xFF", "jpg"},
    {"GIF8", "gif"},
    {"BM", "bmp"},
    {"DDS ", "dds"},
    {"II*", "tif"},
    {"8BPS", "psd"},
    {"#?RADIANCE", "hdr"},
};

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

// The bytes tell the kind; the file's own word is taken where they don't.
std::string ExtensionOf(const aiTexture& texture) {
  const std::string_view bytes(reinterpret_cast<const char*>(texture.pcData), texture.mWidth);
  for (const Magic& magic : kMagics)
    if (bytes.starts_with(magic.bytes)) return magic.extension;
  if (bytes.size() > 12 && bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP") return "webp";
  std::string hint(texture.achFormatHint, strnlen(texture.achFormatHint, sizeof(texture.achFormatHint)));
  const bool plain = std::all_of(hint.begin(), hint.end(), [](char c) { return IsPlain(c); });
  return plain && !hint.empty() ? hint : "bin";
}

// The name of a path, either slash between folders, without its extension, and nothing in it but what any file
// system takes.
std::string StemOf(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  std::string stem = slash == std::string::npos ? path : path.substr(slash + 1);
  if (const std::size_t dot = stem.rfind('.'); dot != std::string::npos) stem.resize(dot);
  std::string safe;
  for (const char c : stem) {
    if (safe.size() == kLongestStem) break;
    safe += IsPlain(c) || (c == '.' && !safe.empty()) ? c : '_';
  }
  return safe.empty() ? "texture" : safe;
}

std::string LowerCase(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

void WriteBytes(const std::filesystem::path& file, const aiTexture& texture) {
  const auto close = [](std::FILE* stream) { std::fclose(stream); };
  std::unique_ptr<std::FILE, decltype(close)> stream(std::fopen(file.c_str(), "wb"), close);
  const bool written = stream && std::fwrite(texture.pcData, 1, texture.mWidth, stream.get()) == texture.mWidth;
  if (!written || std::fclose(stream.release()) != 0)
    throw ImportError(fmt::format("texture {} can't be written", file.filename().string()));
}

void WriteTexels(const std::filesystem::path& file, const aiTexture& texture) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = texture.mWidth;
  image.height = texture.mHeight;
  image.format = PNG_FORMAT_BGRA;
  if (png_image_write_to_file(&image, file.c_str(), 0, texture.pcData, 0, nullptr) == 0) {
    const std::string reason = image.message;
    png_image_free(&image);
    throw ImportError(fmt::format("texture {} can't be written: {}", file.filename().string(), reason));
  }
}

std::string WithSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// A URI with its %-escapes undone.
std::string Unescaped(const std::string& uri) {
  std::string text;
  for (std::size_t i = 0; i < uri.size(); ++i) {
    unsigned value = 0;
    const char* end = uri.data() + std::min(i + 3, uri.size());
    if (uri[i] == '%' && std::from_chars(uri.data() + i + 1, end, value, 16).ptr == uri.data() + i + 3) {
      text += static_cast<char>(value);
      i += 2;
    } else {
      text += uri[i];
    }
  }
  return readers::ToUtf8(text);
}

}  // namespace

EmbeddedTextures::EmbeddedTextures(const aiScene& source, std::filesystem::path directory)
    : source_(source),
      directory_(std::move(directory)),
      namesAreUris_(MetadataText(source, AI_METADATA_SOURCE_FORMAT).starts_with("glTF")) {}

std::optional<unsigned> EmbeddedTextures::Find(const std::string& name) const {
  if (name.starts_with('*')) {
    unsigned index = 0;
    for (std::size_t i = 1; i < name.size() && index < source_.mNumTextures; ++i) {
      if (name[i] < '0' || name[i] > '9') return std::nullopt;
      index = index * 10 + static_cast<unsigned>(name[i] - '0');
    }
    return name.size() > 1 && index < source_.mNumTextures ? std::optional(index) : std::nullopt;
  }
  for (unsigned i = 0; i < source_.mNumTextures; ++i) {
    const std::string own = TextOf(source_.mTextures[i]->mFilename);
    if (!own.empty() && WithSlashes(own) == WithSlashes(name)) return i;
  }
  return std::nullopt;
}

std::optional<std::string> EmbeddedTextures::PathOf(const std::string& name) {
  const std::optional<unsigned> index = Find(name);
  if (!index) {
    if (name.empty() || name.starts_with('*')) return std::nullopt;
    return namesAreUris_ ? Unescaped(name) : WithSlashes(name);
  }
  const auto [entry, isNew] = written_.try_emplace(*index);
  if (isNew) entry->second = Write(*index);
  return entry->second;
}

std::optional<std::string> EmbeddedTextures::Write(unsigned index) {
  const aiTexture& texture = *source_.mTextures[index];
  if (!texture.pcData || texture.mWidth == 0) return std::nullopt;
  if (std::uint64_t{texture.mWidth} * texture.mHeight > kMostTexels) return std::nullopt;
  const std::string extension = texture.mHeight == 0 ? ExtensionOf(texture) : "png";
  const std::string stem = StemOf(TextOf(texture.mFilename));
  std::string name = stem + '.' + extension;
  for (int number = 2; !taken_.insert(LowerCase(name)).second; ++number)
    name = fmt::format("{}_{}.{}", stem, number, extension);
  if (texture.mHeight == 0)
    WriteBytes(directory_ / name, texture);
  else
    WriteTexels(directory_ / name, texture);
  files_.push_back(name);
  return name;
}

}  // namespace importer
