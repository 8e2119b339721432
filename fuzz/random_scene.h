// Valid scenes by choices.
#pragma once

#include "headless/scene_data.h"
#include "tests/support/random_mesh.h"

namespace fuzz {

// Takes choices from the input, one or two bytes each; 0 when it has come to an end.
test_support::Choice ChooseByBytes(const std::uint8_t* data, std::size_t size);

// A scene of a few items of every kind, whose export must go through: meshes in a hierarchy with instances,
// cameras and lights, stacks of transforms with keys, links and recorded world matrices, deform groups, masks with
// shaders and images, clips. Names are unique. The images lie in `directory` as red.png and blue.jpg.
headless::SceneData MakeRandomScene(test_support::Choice choice, const std::string& directory);

}  // namespace fuzz
