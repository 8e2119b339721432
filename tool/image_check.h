// Compares the images of a written document with those of the scene.
#pragma once

#include "headless/scene_data.h"
#include "tool/written_document.h"

#include <filesystem>

namespace tool {

// Every image must be there with the bytes of one of the scene's image files: a saver fills up with zeros what it
// can't read. `directory` holds the copies of a .gltf. Throws WriteFault.
void CheckImages(const WrittenDocument& document, const std::filesystem::path& directory,
                 const headless::SceneData& scene);

}  // namespace tool
