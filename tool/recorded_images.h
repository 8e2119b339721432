// Images of a scene that is written into another folder.
#pragma once

#include "headless/scene_data.h"
#include "tool/image_paths.h"

#include <filesystem>
#include <vector>

namespace tool {

// Makes the path of every image lead to the same file from the folder of `target`, where the scene file will lie,
// and sets the scene's directory to that folder. Relative paths stay relative. An image is copied into `staging`,
// to be moved beside the target, and named by its copy when it
//   - is one of `temporary`, which won't be there later,
//   - would no longer be exported from where it lies, see SettleImagePaths,
//   - has a path that isn't UTF-8.
// A copy takes another name when a different file of its name stands beside the target. Images that an export of
// the scene would leave out lose their paths. Throws std::system_error when a copy fails.
void MoveImagePaths(headless::SceneData& scene, const std::filesystem::path& target,
                    const std::vector<std::filesystem::path>& temporary, const std::filesystem::path& staging,
                    ImageReport& report);

}  // namespace tool
