// The arguments of the command `vornel export`.
#pragma once

#include "readers/read_scene.h"
#include "tool/report.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tool {

struct ExportArguments {
  std::filesystem::path input;
  std::filesystem::path output;
  readers::ReadOptions reading;
  std::vector<std::filesystem::path> imageRoots;                 // empty: images may lie anywhere
  std::vector<std::pair<std::string, std::int32_t>> userValues;  // by full name, in the order given
  std::filesystem::path logFile;                                 // empty for none
  std::filesystem::path module;                                  // empty: found beside the command
  Verbosity verbosity = Verbosity::Normal;
  bool progress = false;
};

}  // namespace tool
