// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

enum class Command { Export, Info };
enum class Verbosity { Quiet, Normal, Verbose };

struct Arguments {
  Command command = Command::Export;
  std::filesystem::path input;
  std::filesystem::path output;
  std::vector<std::filesystem::path> imageRoots;                 // empty: images may lie anywhere
  std::vector<std::pair<std::string, std::int32_t>> userValues;  // by full name, in the order given
  std::filesystem::path logFile;                                 // empty for none
  std::filesystem::path module;                                  // empty: found beside the command
  Verbosity verbosity = Verbosity::Normal;
  bool progress = false;
};

// Either arguments, or the exit code of a call that ends here: help, version, or a usage error, whose text has
// been printed.
struct ParsedArguments {
  std::optional<Arguments> arguments;
  int exitCode = 0;
};

ParsedArguments ParseArguments(int argc, const char* const* argv);

}  // namespace tool
