// Writes scenes as scene files.
#pragma once

#include "headless/scene_data.h"

#include <filesystem>
#include <stdexcept>
#include <string>

namespace readers {

// A scene file that can't be written. what() is one line with the file and the reason.
class SceneWriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class ArrayForm {
  Text,    // all arrays in the scene file
  Binary,  // large arrays in a file of the same name with the extension .bin, which can be mapped
};

// Writes a scene such that reading the file gives an equal scene, image paths as they stand. Throws
// SceneWriteError; what was written by then is left to the caller to remove.
void WriteSceneFile(const headless::SceneData& scene, const std::filesystem::path& file, ArrayForm form);

}  // namespace readers
