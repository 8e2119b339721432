// Runs a scene through the module as the command does.
#pragma once

#include "headless/scene_data.h"

#include <filesystem>
#include <optional>

namespace fuzz {

// True when the scene's animation takes few enough samples to be exported in a moment. A scene may ask for as many
// as a file can hold.
bool IsSmall(const headless::SceneData& scene);

enum class Refusal { Allowed, Unexpected };

// Saves the scene to the file, by its extension, and reads it back. False when the export was refused, in a way
// that is known; with Refusal::Unexpected that is a finding too. Images are looked for in the file's folder alone.
bool ExportScene(headless::SceneData scene, const std::filesystem::path& file, Refusal refusal);

}  // namespace fuzz
