#include "readers/read_scene.h"

#include <algorithm>
#include <utility>

namespace readers {
namespace {

using Reader = headless::SceneData (*)(const std::filesystem::path& file, ReadReport& report);

constexpr std::pair<const char*, Reader> kReaders[] = {{".orvo", ReadSceneFile}, {".obj", ReadObj}};

}  // namespace

headless::SceneData ReadScene(const std::filesystem::path& file, ReadReport& report) {
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  std::string known;
  for (const auto& [name, read] : kReaders) {
    if (extension == name) return read(file, report);
    known += (known.empty() ? "" : ", ") + std::string(name);
  }
  throw InputError(file.string() + ": unknown kind of file; known are " + known);
}

}  // namespace readers
