// Which files the images of a scene are read from.
#pragma once

#include "headless/scene_data.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace tool {

struct ImageReport {
  std::vector<std::string> notes;            // a line each
  std::vector<std::string> warnings;         // a line each
  std::vector<std::filesystem::path> files;  // looked at, whether they were there or not
};

struct ImagePlaces {
  std::vector<std::filesystem::path> roots;  // directories that exist; empty: images may lie anywhere
  std::vector<std::filesystem::path> own;    // files that were made from the scene's own; always taken
};

// Where the plug-in opens an image, named in the form of the scene file: either slash separates folders.
std::filesystem::path ImageFile(const std::string& sceneDirectory, const std::string& imagePath);

// Whether no file can be where the system gives this error: the name is too long or leads in a circle.
bool IsNowhere(const std::error_code& error);

// Of all images of the scene, each once.
std::vector<std::filesystem::path> ImageFiles(const headless::SceneData& scene);

// Settles the path of every image. One that isn't there is looked for by its name in the scene's directory, in
// `textures` and `images` below that, and in the roots; when it is nowhere the path stays, for the plug-in to
// complain of. What isn't a regular file, and what lies outside the scene's directory (links followed) and doesn't
// begin like an image, loses its path and isn't exported. With roots an image must lie below one of them whatever
// it is, and no file elsewhere is opened but the scene's own. Throws std::system_error when a folder can't be
// looked at.
void SettleImagePaths(headless::SceneData& scene, const ImagePlaces& places, ImageReport& report);

}  // namespace tool
