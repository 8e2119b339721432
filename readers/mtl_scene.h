// Makes the shader items of a material library's materials.
#pragma once

#include "headless/scene_data.h"
#include "readers/mtl_parser.h"
#include "readers/shader_recipe.h"

#include <filesystem>
#include <set>
#include <string>

namespace readers {

// Adds materials to one scene.
class MaterialBuilder {
 public:
  explicit MaterialBuilder(headless::SceneData& scene) : shaders_(scene) {}

  // Adds a mask for each material whose name isn't taken. Image paths start in `directory`, which is the
  // library's seen from the scene's. What a material loses is counted in file.skipped.
  void Add(MtlFile& file, const std::filesystem::path& directory);

  bool HasMaterial(const std::string& name) const { return names_.contains(name); }

 private:
  void AddMaterial(MtlFile& file, const MtlMaterial& material, const std::filesystem::path& directory);

  ShaderBuilder shaders_;
  std::set<std::string> names_;
};

}  // namespace readers
