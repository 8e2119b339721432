// Looks at what the plug-in wrote before it is moved into place.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tool {

// The first fault of a .glb, or of a .gltf with the .bin beside it: wrong container lengths, JSON that is cut
// off, a buffer of another length than the JSON says, a view or accessor that reaches beyond its buffer, a
// number that isn't finite. None for a sound file.
std::optional<std::string> FindOutputFault(const std::filesystem::path& file);

// Why nothing more can be written to `file`, when that is so. It may grow by the attempt.
std::optional<std::string> FindWriteFault(const std::filesystem::path& file);

}  // namespace tool
