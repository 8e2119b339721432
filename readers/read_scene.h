// Reads files into scenes.
#pragma once

#include "headless/scene_data.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace readers {

// Input that can't be read. what() is one line: the file, the place in it, and the reason.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ReadReport {
  std::vector<std::string> warnings;         // what was skipped, a line each
  std::vector<std::filesystem::path> files;  // read besides the scene's own file: arrays, material libraries
  // Images that the reader wrote out into a folder of its own, which goes when the command ends.
  std::vector<std::filesystem::path> temporaryImages;
};

// Reads a scene by the file's extension, in any case: .orvo, .obj. Throws InputError.
headless::SceneData ReadScene(const std::filesystem::path& file, ReadReport& report);

headless::SceneData ReadSceneFile(const std::filesystem::path& file, ReadReport& report);  // .orvo
headless::SceneData ReadObj(const std::filesystem::path& file, ReadReport& report);        // .obj

}  // namespace readers
