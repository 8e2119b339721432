// How many bits the vertex indices of a scene need.
#pragma once

#include "headless/scene_data.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

struct LargeMesh {
  std::string item;
  std::uint64_t corners = 0;  // of its triangles
};

// The first mesh that the savers refuse with 16-bit indices: one of more than 65535 triangle corners.
std::optional<LargeMesh> FindMeshFor32Bits(const headless::SceneData& scene);

}  // namespace tool
