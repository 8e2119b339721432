// How an export's work divides into stages, and how far it is, as the scene, the host and the staged file tell.
#pragma once

#include "headless/host.h"
#include "tool/stages.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tool {

struct ExportWork {
  std::uint64_t triangles = 0;  // of all meshes, at most
  std::uint64_t reads = 0;      // times at which channels are read, about
  Stages::Numbers costs{};      // of each stage, in one unit
};

// What is wrong with the scene's range of time, as far as it is sampled: the plug-in would gather keys until no
// memory is left for them.
std::optional<std::string> FindTimeFault(const headless::SceneData& scene);

// Counts what a scene asks for under its user values.
ExportWork PlanExport(const headless::SceneData& scene);

// Begins the stage of which a message of the saver is the first.
void FollowLog(const headless::LogLine& line, Stages& stages);

// Tells the stages how far scanning, sampling and writing are. `file` is what the saver writes.
void LookAtExport(const ExportWork& work, const headless::Demand& asked, const std::filesystem::path& file,
                  Stages& stages);

}  // namespace tool
