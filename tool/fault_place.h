// What of the scene a number of the written document comes from.
#pragma once

#include "headless/scene_data.h"

#include <rapidjson/document.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tool {

// Where the values of an accessor come from, such as 'the points of "Patch"' or 'the sampled rotation of "Arm"'.
// Point positions, normals, colours and UVs name the map of the scene that holds a number that isn't finite, if
// one does.
std::string PlaceOfAccessor(const rapidjson::Value& root, std::size_t accessor, const headless::SceneData& scene);

// The same of a number in the JSON, by its path of keys and indices.
std::string PlaceOfNumber(const rapidjson::Value& root, const std::vector<std::string>& path,
                          const headless::SceneData& scene);

}  // namespace tool
