// The copies of images that an export to .gltf lays beside its file.
#pragma once

#include "headless/scene_data.h"
#include "tool/image_paths.h"

#include <filesystem>

namespace tool {

// Takes the path from images whose copies, in the directory of `target`, would stand in the way of the exported
// .gltf and .bin, or overwrite another file that the scene is read from: its file `input`, or an image. Warns of
// them, and in a line a name of images whose copies overwrite one another.
void CheckImageCopies(headless::SceneData& scene, const std::filesystem::path& target,
                      const std::filesystem::path& input, ImageReport& report);

}  // namespace tool
