#include "tool/image_paths.h"

#include "headless/host_paths.h"
#include "tool/image_magic.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

enum class Verdict { Taken, Missing, OutsideRoots, Backslash, Folder, Special, TooLarge, NoImage, Unreadable };

// The plug-in keeps lengths, padded to four bytes, in 32 bits.
constexpr std::uintmax_t kTooLarge = 0xFFFFFFFD;

// By Verdict.
constexpr const char* kReasons[] = {
    "",
    "",
    "it lies outside the folders given by --image-root",
    "a backslash in its path can't be told from a separator of folders",
    "it is a folder",
    "it isn't a regular file",
    "it takes 4 GiB or more, which no glTF buffer can hold",
    "it lies outside the scene's folder and doesn't begin like an image",
    "it can't be looked at",
};

// Links followed, as far as the path exists.
fs::path Canonical(const fs::path& path, std::error_code& error) {
  fs::path canonical = fs::weakly_canonical(fs::absolute(path, error), error);
  if (error == std::errc::not_enough_memory) throw std::bad_alloc();
  return canonical;
}

// Any path would lie below an empty one.
fs::path CanonicalFolder(const fs::path& path) {
  std::error_code error;
  fs::path canonical = Canonical(path, error);
  if (error) throw fs::filesystem_error("can't be looked at", path, error);
  return canonical;
}

bool LiesBelow(const fs::path& path, const fs::path& directory) {
  return std::mismatch(directory.begin(), directory.end(), path.begin(), path.end()).first == directory.end();
}

class ImageFinder {
 public:
  ImageFinder(const std::string& directory, const ImagePlaces& places);

  // The path to use, none for an image that is left out.
  std::optional<std::string> Settle(const std::string& path, ImageReport& report) const;

 private:
  Verdict Judge(const std::string& path) const;
  bool IsBackslashName(const std::string& path) const;
  std::optional<std::string> FindByName(const std::string& path, ImageReport& report) const;

  std::string directory_;
  fs::path canonicalDirectory_;
  std::vector<fs::path> canonicalRoots_;
  std::set<std::string> own_;
  std::vector<std::string> places_;  // where images are looked for by name, each with a slash at its end
};

ImageFinder::ImageFinder(const std::string& directory, const ImagePlaces& places)
    : directory_(directory),
      canonicalDirectory_(CanonicalFolder(directory.empty() ? "." : directory)),
      places_({"", "textures/", "images/"}) {
  for (const fs::path& own : places.own) own_.insert(own.string());
  for (const fs::path& root : places.roots) {
    canonicalRoots_.push_back(CanonicalFolder(root));
    places_.push_back((fs::absolute(root) / "").string());
  }
}

// Looks at just the file that the plug-in would open.
Verdict ImageFinder::Judge(const std::string& path) const {
  const fs::path file = ImageFile(directory_, path);
  std::error_code error;
  const fs::path canonical = Canonical(file, error);
  const bool own = own_.count(path) != 0 && path.find('\\') == std::string::npos;
  const bool confined = !canonicalRoots_.empty();
  if (confined && !own && std::none_of(canonicalRoots_.begin(), canonicalRoots_.end(), [&](const fs::path& root) {
        return LiesBelow(canonical, root);
      }))
    return Verdict::OutsideRoots;
  const fs::file_status status = fs::status(file, error);
  const bool isNowhere = IsNowhere(error);
  if (!path.empty() && !isNowhere && status.type() == fs::file_type::none) return Verdict::Unreadable;
  if (path.empty() || isNowhere || !fs::exists(status))
    return IsBackslashName(path) ? Verdict::Backslash : Verdict::Missing;
  if (fs::is_directory(status)) return Verdict::Folder;
  if (!fs::is_regular_file(status)) return Verdict::Special;
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) return Verdict::Unreadable;
  if (size >= kTooLarge) return Verdict::TooLarge;
  const bool trusted = own || confined || LiesBelow(canonical, canonicalDirectory_);
  return trusted || BeginsLikeImage(file) ? Verdict::Taken : Verdict::NoImage;
}

// True when there is a file of that path as the system spells it, which the host has no spelling for.
bool ImageFinder::IsBackslashName(const std::string& path) const {
  const fs::path file = fs::path(directory_) / path;
  std::error_code ignored;
  return file.string().find('\\') != std::string::npos && fs::is_regular_file(file, ignored);
}

std::optional<std::string> ImageFinder::FindByName(const std::string& path, ImageReport& report) const {
  const std::string name = path.substr(path.find_last_of("/\\") + 1);
  if (name.empty()) return std::nullopt;
  for (const std::string& place : places_) {
    report.files.push_back(ImageFile(directory_, place + name));
    if (Judge(place + name) == Verdict::Taken) return place + name;
  }
  return std::nullopt;
}

std::optional<std::string> ImageFinder::Settle(const std::string& path, ImageReport& report) const {
  report.files.push_back(ImageFile(directory_, path));
  const Verdict verdict = Judge(path);
  if (verdict == Verdict::Taken) return path;
  if (verdict == Verdict::Missing || verdict == Verdict::OutsideRoots || verdict == Verdict::Backslash) {
    if (std::optional<std::string> found = FindByName(path, report)) {
      report.notes.push_back(fmt::format("image \"{}\": found as \"{}\"", path, *found));
      return found;
    }
  }
  if (verdict == Verdict::Missing) return path;
  report.warnings.push_back(
      fmt::format("image \"{}\" is left out: {}", path, kReasons[static_cast<std::size_t>(verdict)]));
  return std::nullopt;
}

}  // namespace

fs::path ImageFile(const std::string& sceneDirectory, const std::string& imagePath) {
  return headless::FromHostPath(headless::ResolveHostPath(sceneDirectory, imagePath));
}

bool IsNowhere(const std::error_code& error) {
  return error == std::errc::filename_too_long || error == std::errc::too_many_symbolic_link_levels;
}

std::vector<fs::path> ImageFiles(const headless::SceneData& scene) {
  std::set<fs::path> files;
  for (const headless::ItemData& item : scene.items)
    if (item.imagePath) files.insert(ImageFile(scene.directory, *item.imagePath));
  return {files.begin(), files.end()};
}

void SettleImagePaths(headless::SceneData& scene, const ImagePlaces& places, ImageReport& report) {
  const ImageFinder finder(scene.directory, places);
  std::map<std::string, std::optional<std::string>> settled;
  for (headless::ItemData& item : scene.items) {
    if (!item.imagePath) continue;
    // The host hands out texts that end at the first zero byte.
    const std::string path = item.imagePath->substr(0, item.imagePath->find('\0'));
    const auto [entry, isNew] = settled.try_emplace(path);
    if (isNew) entry->second = finder.Settle(path, report);
    item.imagePath = entry->second;
  }
}

}  // namespace tool
