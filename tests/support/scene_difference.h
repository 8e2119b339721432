// Compares scenes field by field.
#pragma once

#include "headless/scene_data.h"

#include <string>

namespace test_support {

// The place of the first difference, empty for equal scenes. Numbers are equal when their bits are; the directory
// of the scene doesn't count.
std::string FindDifference(const headless::SceneData& one, const headless::SceneData& other);

}  // namespace test_support
