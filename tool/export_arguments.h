// The arguments of the command `vornel export`.
#pragma once

#include "readers/read_scene.h"
#include "tool/progress.h"
#include "tool/report.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

struct UserValue {
  std::string name;                   // in full
  std::optional<std::int32_t> value;  // absent: chosen by the scene, which sceneio.gltf.save.indicesExport can be
};

enum class Strictness { Lenient, Strict };

struct ExportArguments {
  std::filesystem::path input;
  std::filesystem::path output;
  readers::ReadOptions reading;
  std::vector<std::filesystem::path> imageRoots;  // empty: images may lie anywhere
  std::vector<UserValue> userValues;              // in the order given
  std::filesystem::path logFile;                  // empty for none
  std::filesystem::path reportFile;               // empty for none
  std::filesystem::path previewPage;              // empty for none
  std::filesystem::path module;                   // empty: found beside the command
  std::optional<std::uint64_t> maxMemory;         // bytes
  Verbosity verbosity = Verbosity::Normal;
  ProgressWish progress = ProgressWish::Auto;
  Strictness strictness = Strictness::Lenient;
};

// The log, the report and the preview page, those that are asked for.
std::vector<std::filesystem::path> SideFiles(const ExportArguments& arguments);

// Adds --progress.
void AddProgressOption(CLI::App& command, ProgressWish& wish);

// Adds INPUT and all options of an export to a command, whose parsing fills `arguments`, which must outlive it,
// and throws CLI::ValidationError for what doesn't go together.
void AddExportArguments(CLI::App& command, ExportArguments& arguments);

}  // namespace tool
