#include "readers/read_scene.h"

#include "readers/foreign_reader.h"

#include <algorithm>
#include <utility>

namespace readers {
namespace {

using Reader = headless::SceneData (*)(const std::filesystem::path& file, ReadReport& report);

constexpr std::pair<const char*, Reader> kReaders[] = {{".orvo", ReadSceneFile}, {".obj", ReadObj}};

}  // namespace

headless::SceneData ReadScene(const std::filesystem::path& file, const ReadOptions& options, ReadReport& report) {
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  for (const auto& [name, read] : kReaders) {
    if (extension != name) continue;
    if (options.metersPerUnit || options.upAxis)
      report.warnings.push_back(file.string() + ": unit and up axis can't be set for " + name + " files");
    return read(file, report);
  }
  return ReadForeign(file, options, report);
}

headless::SceneData ReadScene(const std::filesystem::path& file, ReadReport& report) {
  return ReadScene(file, ReadOptions(), report);
}

}  // namespace readers
