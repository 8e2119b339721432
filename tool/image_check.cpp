#include "tool/image_check.h"

#include "readers/read_scene.h"
#include "tool/image_paths.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <system_error>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;
using Bytes = std::span<const std::byte>;

constexpr std::uint64_t kAlignment = 4;

std::uint64_t Padded(std::uint64_t length) { return (length + kAlignment - 1) / kAlignment * kAlignment; }

// The scene's image files.
struct SceneImages {
  std::multimap<std::uint64_t, fs::path> byLength;  // the length that they take in a buffer
  std::multimap<fs::path, fs::path> byName;
};

SceneImages ListImages(const headless::SceneData& scene) {
  SceneImages images;
  for (const fs::path& file : ImageFiles(scene)) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error) continue;
    images.byLength.emplace(Padded(size), file);
    images.byName.emplace(file.filename(), file);
  }
  return images;
}

// Compares as many bytes as the file has. Only a piece of each is in memory at a time.
bool BeginsWith(Bytes view, const readers::MappedFile& file) {
  constexpr std::size_t kPiece = 1 << 20;
  const char* left = reinterpret_cast<const char*>(view.data());
  const char* right = file.Begin();
  const char* leftKept = left;
  const char* rightKept = right;
  while (right < file.End()) {
    const std::size_t length = std::min(kPiece, static_cast<std::size_t>(file.End() - right));
    if (std::memcmp(left, right, length) != 0) return false;
    left += length;
    right += length;
    readers::MappedFile::Forget(leftKept, left);
    readers::MappedFile::Forget(rightKept, right);
  }
  return true;
}

bool Holds(Bytes view, const fs::path& file) {
  try {
    const auto mapped = readers::MappedFile::Open(file);
    return Padded(mapped->Bytes().size()) == view.size() && BeginsWith(view, *mapped);
  } catch (const readers::InputError&) {
    return false;
  }
}

void CheckEmbedded(const WrittenDocument& document, std::uint64_t view, std::size_t image,
                   const SceneImages& scene) {
  const std::vector<OutlineView>& views = document.outline.views;
  if (view >= views.size()) throw WriteFault(fmt::format("image {} names buffer view {}", image, view));
  const Bytes bytes = document.buffer.subspan(views[view].byteOffset, views[view].byteLength);
  const auto [first, last] = scene.byLength.equal_range(bytes.size());
  if (std::any_of(first, last, [&](const auto& entry) { return Holds(bytes, entry.second); })) return;
  throw WriteFault(
      fmt::format("its image {} of {} bytes is not what any image file of the scene holds: one can't be "
                  "read or was changed meanwhile",
                  image, bytes.size()));
}

void CheckCopy(const fs::path& copy, const SceneImages& scene) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(copy, error);
  if (error)
    throw WriteFault(
        fmt::format("its image \"{}\" can't be copied: {}", copy.filename().string(), error.message()));
  const auto [first, last] = scene.byName.equal_range(copy.filename());
  for (auto entry = first; entry != last; ++entry)
    if (fs::file_size(entry->second, error) == size && !error) return;
  throw WriteFault(fmt::format("its image \"{}\" has {} bytes, which is not what the scene's image file has",
                               copy.filename().string(), size));
}

}  // namespace

void CheckImages(const WrittenDocument& document, const fs::path& directory, const headless::SceneData& scene) {
  const std::vector<OutlineImage>& images = document.outline.images;
  if (images.empty()) return;
  const SceneImages sceneImages = ListImages(scene);
  for (std::size_t index = 0; index < images.size(); ++index) {
    if (images[index].uri)
      CheckCopy(directory / *images[index].uri, sceneImages);
    else
      CheckEmbedded(document, images[index].bufferView, index, sceneImages);
  }
}

}  // namespace tool
