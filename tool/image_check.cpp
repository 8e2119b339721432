#include "tool/image_check.h"

#include "readers/read_scene.h"
#include "tool/image_paths.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <system_error>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;
using Bytes = std::span<const std::byte>;

constexpr std::size_t kAlignment = 4;

std::set<fs::path> ImageFiles(const headless::SceneData& scene) {
  std::set<fs::path> files;
  for (const headless::ItemData& item : scene.items)
    if (item.imagePath) files.insert(ImageFile(scene.directory, *item.imagePath));
  return files;
}

// True when the view holds the file's bytes and zeros up to the next multiple of four.
bool Holds(Bytes view, const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  if (error || size > view.size() || view.size() - size >= kAlignment) return false;
  try {
    const auto mapped = readers::MappedFile::Open(file);
    return mapped->Bytes().size() == size &&
           std::equal(mapped->Bytes().begin(), mapped->Bytes().end(), view.begin());
  } catch (const readers::InputError&) {
    return false;
  }
}

void CheckEmbedded(const WrittenDocument& document, std::uint64_t view, std::size_t image,
                   const std::set<fs::path>& files) {
  const std::vector<OutlineView>& views = document.outline.views;
  if (view >= views.size()) throw WriteFault(fmt::format("image {} names buffer view {}", image, view));
  const Bytes bytes = document.buffer.subspan(views[view].byteOffset, views[view].byteLength);
  if (std::any_of(files.begin(), files.end(), [&](const fs::path& file) { return Holds(bytes, file); })) return;
  throw WriteFault(
      fmt::format("its image {} of {} bytes is not what any image file of the scene holds: one can't be "
                  "read or was changed meanwhile",
                  image, bytes.size()));
}

void CheckCopy(const fs::path& copy, const std::set<fs::path>& files) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(copy, error);
  if (error)
    throw WriteFault(
        fmt::format("its image \"{}\" can't be copied: {}", copy.filename().string(), error.message()));
  for (const fs::path& file : files)
    if (file.filename() == copy.filename() && fs::file_size(file, error) == size && !error) return;
  throw WriteFault(fmt::format("its image \"{}\" has {} bytes, which is not what the scene's image file has",
                               copy.filename().string(), size));
}

}  // namespace

void CheckImages(const WrittenDocument& document, const fs::path& directory, const headless::SceneData& scene) {
  const std::vector<OutlineImage>& images = document.outline.images;
  if (images.empty()) return;
  const std::set<fs::path> files = ImageFiles(scene);
  for (std::size_t index = 0; index < images.size(); ++index) {
    if (images[index].uri)
      CheckCopy(directory / *images[index].uri, files);
    else
      CheckEmbedded(document, images[index].bufferView, index, files);
  }
}

}  // namespace tool
