// Materials of Assimp as shader items.
#pragma once

#include "headless/scene_data.h"
#include "importer/textures.h"

#include <assimp/scene.h>

#include <string>
#include <vector>

namespace importer {

// A name per material, none twice: the polygon tags.
std::vector<std::string> MaterialTags(const aiScene& source);

// Adds a mask for each material. `uvNames` are the UV maps by channel.
void AddMaterials(const aiScene& source, const std::vector<std::string>& tags,
                  const std::vector<std::string>& uvNames, EmbeddedTextures& textures, headless::SceneData& scene,
                  std::vector<std::string>& warnings);

}  // namespace importer
