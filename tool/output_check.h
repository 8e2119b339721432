// Looks at what the plug-in wrote before it is moved into place.
#pragma once

#include "headless/scene_data.h"
#include "tool/written_document.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tool {

// Told the share that is checked, 0 to 1.
using ShareSink = std::function<void(double)>;

// Reads a .glb back, or a .gltf with what lies beside it. Throws WriteFault for wrong container lengths, JSON that
// is cut off, a buffer of another length than the JSON says, a view or accessor that reaches beyond its buffer, a
// number that isn't finite, an image that isn't there or has other bytes than the scene's. What is wrong with the
// scene is told in its terms.
WrittenDocument CheckOutput(const std::filesystem::path& file, const headless::SceneData& scene,
                            const ShareSink& told);

// Why nothing more can be written to `file`, when that is so. It may grow by the attempt.
std::optional<std::string> FindWriteFault(const std::filesystem::path& file);

}  // namespace tool
