#include "tool/image_copies.h"

#include <fmt/core.h>
#include <sys/stat.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;

using FileIdentity = std::pair<dev_t, ino_t>;

struct Image {
  std::string path;
  FileIdentity file;
};
// By the name of the copy; each path once.
using ImagesByName = std::map<std::string, std::vector<Image>>;

std::optional<FileIdentity> IdentityOf(const fs::path& file) {
  struct stat status;
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity(status.st_dev, status.st_ino);
}

ImagesByName ListImages(const headless::SceneData& scene) {
  ImagesByName images;
  std::set<std::string> known;
  for (const headless::ItemData& item : scene.items) {
    if (!item.imagePath || !known.insert(*item.imagePath).second) continue;
    const fs::path file = ImageFile(scene.directory, *item.imagePath);
    if (const auto identity = IdentityOf(file))
      images[file.filename().string()].push_back({*item.imagePath, *identity});
  }
  return images;
}

class CopyCheck {
 public:
  CopyCheck(const fs::path& target, const fs::path& input, const ImagesByName& images, ImageReport& report);

  void Check(const std::string& name, const std::vector<Image>& images);
  // Paths of the images that must not be copied.
  const std::set<std::string>& Refused() const { return refused_; }

 private:
  void Refuse(const Image& image, const std::string& reason);

  fs::path target_;
  ImageReport& report_;
  std::set<FileIdentity> sources_;
  std::set<std::string> refused_;
};

CopyCheck::CopyCheck(const fs::path& target, const fs::path& input, const ImagesByName& images,
                     ImageReport& report)
    : target_(target), report_(report) {
  if (const auto identity = IdentityOf(input)) sources_.insert(*identity);
  for (const auto& [name, sameName] : images)
    for (const Image& image : sameName) sources_.insert(image.file);
}

void CopyCheck::Refuse(const Image& image, const std::string& reason) {
  if (refused_.insert(image.path).second)
    report_.warnings.push_back(fmt::format("image \"{}\" is left out: {}", image.path, reason));
}

void CopyCheck::Check(const std::string& name, const std::vector<Image>& images) {
  const bool isExport =
      name == target_.filename() || name == fs::path(target_).replace_extension(".bin").filename();
  const fs::path copy = fs::path(target_).replace_filename(name);
  const std::optional<FileIdentity> existing = IdentityOf(copy);
  const bool isSource = existing && sources_.count(*existing) != 0;
  std::set<FileIdentity> files;
  std::string list;
  for (const Image& image : images) {
    if (isExport) {
      Refuse(image, "its copy would be in the way of the exported " + name);
    } else if (isSource && image.file != *existing) {
      Refuse(image, fmt::format("its copy would overwrite {}, which the scene is read from", copy.string()));
    } else if (files.insert(image.file).second) {
      list += fmt::format("{}\"{}\"", list.empty() ? "" : ", ", image.path);
    }
  }
  if (files.size() > 1)
    report_.warnings.push_back(fmt::format("{} images are called {} and their copies overwrite one another: {}",
                                           files.size(), name, list));
}

}  // namespace

void CheckImageCopies(headless::SceneData& scene, const fs::path& target, const fs::path& input,
                      ImageReport& report) {
  const ImagesByName images = ListImages(scene);
  CopyCheck check(target, input, images, report);
  for (const auto& [name, sameName] : images) check.Check(name, sameName);
  for (headless::ItemData& item : scene.items)
    if (item.imagePath && check.Refused().count(*item.imagePath) != 0) item.imagePath.reset();
}

}  // namespace tool
