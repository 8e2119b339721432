#include "tool/recorded_images.h"

#include "headless/host_paths.h"
#include "readers/text_utf8.h"
#include "tool/staging.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

fs::path DirectoryOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

// With the links of its folder followed. The name stays: copies beside an exported file are called by it.
fs::path PlaceOf(const fs::path& file) {
  return fs::weakly_canonical(fs::absolute(DirectoryOf(file))) / file.filename();
}

class ImageMover {
 public:
  ImageMover(const std::string& source, const fs::path& target, const std::vector<fs::path>& temporary,
             const fs::path& staging);

  // The path from the target's folder of an image whose path was settled.
  std::string Move(const std::string& path);

 private:
  std::string PathFromTarget(const std::string& path) const;
  bool IsTemporary(const fs::path& file) const;
  bool WouldBeExported(const std::string& path) const;
  std::string Copy(const fs::path& file);

  std::string source_;  // folder of the scene
  fs::path target_;
  std::string directory_;  // of the target
  std::vector<fs::path> temporary_;
  fs::path staging_;
  bool moves_;  // to another folder
  std::map<std::string, std::string> copies_;
};

ImageMover::ImageMover(const std::string& source, const fs::path& target, const std::vector<fs::path>& temporary,
                       const fs::path& staging)
    : source_(source),
      target_(target),
      directory_(target.parent_path().string()),
      temporary_(temporary),
      staging_(staging) {
  moves_ = fs::weakly_canonical(fs::absolute(source.empty() ? "." : source)) !=
           fs::weakly_canonical(fs::absolute(DirectoryOf(target)));
}

std::string ImageMover::Move(const std::string& path) {
  const fs::path file = ImageFile(source_, path);
  std::string moved = PathFromTarget(path);
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (!fs::status_known(status) && !IsNowhere(error))
    throw fs::filesystem_error("can't be looked at", file, error);
  if (!fs::is_regular_file(status)) return moved;  // missing in either place
  if (!IsTemporary(file) && readers::ToUtf8(moved) == moved && WouldBeExported(moved)) return moved;
  return Copy(file);
}

std::string ImageMover::PathFromTarget(const std::string& path) const {
  if (!moves_ || path.empty() || headless::IsAbsoluteHostPath(headless::ToHostPath(path))) return path;
  const fs::path place = PlaceOf(ImageFile(source_, path));
  const fs::path relative = place.lexically_relative(PlaceOf(target_).parent_path());
  return (relative.empty() ? place : relative).generic_string();
}

bool ImageMover::IsTemporary(const fs::path& file) const {
  std::error_code ignored;
  return std::any_of(temporary_.begin(), temporary_.end(),
                     [&](const fs::path& one) { return fs::equivalent(one, file, ignored); });
}

bool ImageMover::WouldBeExported(const std::string& path) const {
  headless::SceneData scene;
  scene.directory = directory_;
  scene.items.emplace_back().imagePath = path;
  ImageReport ignored;
  SettleImagePaths(scene, {}, ignored);
  return scene.items[0].imagePath == path;
}

std::string ImageMover::Copy(const fs::path& file) {
  std::string& copy = copies_[PlaceOf(file).string()];
  if (!copy.empty()) return copy;
  const fs::path name = readers::ToUtf8(file.filename().string());
  const auto isFree = [&](const fs::path& candidate) {
    if (candidate == target_.filename() || candidate == fs::path(target_).replace_extension(".bin").filename())
      return false;
    for (const fs::path& folder : {staging_, DirectoryOf(target_)}) {
      // Throws when it can't be told, as for a name that is too long.
      const fs::path taken = folder / candidate;
      if (fs::exists(fs::symlink_status(taken)) && !HaveSameBytes(file, taken)) return false;
    }
    return true;
  };
  fs::path free = name;
  for (int number = 2; !isFree(free); ++number)
    free = fmt::format("{}-{}{}", name.stem().string(), number, name.extension().string());
  fs::copy_file(file, staging_ / free, fs::copy_options::overwrite_existing);
  copy = free.string();
  return copy;
}

}  // namespace

void MoveImagePaths(headless::SceneData& scene, const fs::path& target, const std::vector<fs::path>& temporary,
                    const fs::path& staging, ImageReport& report) {
  SettleImagePaths(scene, {{}, temporary}, report);
  ImageMover mover(scene.directory, target, temporary, staging);
  std::map<std::string, std::string> moved;
  for (headless::ItemData& item : scene.items) {
    if (!item.imagePath) continue;
    const auto [entry, isNew] = moved.try_emplace(*item.imagePath);
    if (isNew) entry->second = mover.Move(*item.imagePath);
    item.imagePath = entry->second;
  }
  scene.directory = target.parent_path().string();
}

}  // namespace tool
