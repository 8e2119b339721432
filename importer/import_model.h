// Reads a 3D file of any format that Assimp knows into a scene.
#pragma once

#include "headless/scene_data.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace importer {

// A file that can't be read. what() is one line with the reason, without the file's name.
class ImportError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class UpAxis { X, Y, Z };

struct ImportOptions {
  std::optional<double> metersPerUnit;     // absent: as the file says, else 1
  std::optional<UpAxis> upAxis;            // absent: as the file says, else Y
  std::filesystem::path textureDirectory;  // exists; textures that the file holds are written there
};

struct ImportedScene {
  // Image paths are as the file has them, relative to the file's folder or absolute; those of textures that the
  // file holds are bare names in the texture directory.
  headless::SceneData scene;
  std::vector<std::string> embeddedTextures;  // those bare names
  std::vector<std::string> warnings;          // what was not carried over, a line each with the item's name
  std::vector<std::filesystem::path> files;   // read besides the input, absolute
};

// Throws ImportError.
ImportedScene ImportModel(const std::filesystem::path& file, const ImportOptions& options);

}  // namespace importer
