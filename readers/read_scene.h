// Reads files into scenes.
#pragma once

#include "headless/scene_data.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace readers {

// Input that can't be read. what() is one line: the file, the place in it, and the reason.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class UpAxis { X, Y, Z };

// For files of foreign formats, which a program of its own reads.
struct ReadOptions {
  std::optional<double> metersPerUnit;  // above 0; absent: as the file says
  std::optional<UpAxis> upAxis;         // absent: as the file says
  std::chrono::seconds importTimeout{300};
  std::uint64_t importMemory = std::uint64_t{4} << 30;  // bytes, also of all files that the program writes
};

struct ReadReport {
  std::vector<std::string> warnings;         // what was skipped, a line each
  std::vector<std::filesystem::path> files;  // read besides the scene's own file: arrays, material libraries
  std::vector<std::filesystem::path> missing;  // would have been read too, but aren't there or can't be read
  // Images that the file holds were written to these, absolute, and the scene names them so. They go with the last
  // copy of `keepAlive`, which the scene's arrays don't need.
  std::vector<std::filesystem::path> temporaryImages;
  std::shared_ptr<const void> keepAlive;
};

// Reads a scene by the file's extension, in any case: .orvo, .obj, and any other through the importer (see
// foreign_reader.h). Throws InputError.
headless::SceneData ReadScene(const std::filesystem::path& file, const ReadOptions& options, ReadReport& report);
headless::SceneData ReadScene(const std::filesystem::path& file, ReadReport& report);

headless::SceneData ReadSceneFile(const std::filesystem::path& file, ReadReport& report);  // .orvo
headless::SceneData ReadObj(const std::filesystem::path& file, ReadReport& report);        // .obj

}  // namespace readers
