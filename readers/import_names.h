// What the importer writes into the private directory that it is given.
#pragma once

namespace readers {

inline constexpr char kStagedScene[] = "scene.orvo";   // with its arrays in a file beside it
inline constexpr char kStagedTextures[] = "textures";  // folder of the images that the file holds
// {"warnings": [line...], "textures": [name of a file in that folder...], "files": [absolute path of what was read
// besides the file...]}
inline constexpr char kStagedReport[] = "report.json";

}  // namespace readers
