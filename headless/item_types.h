// The item types of the host and those that a scene adds.
#pragma once

#include "headless/scene_data.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace headless {

struct ItemTypeRow {
  const char* name;
  const char* base;  // empty for none
};

// The code of a type is its place here plus one, the same in every host of a process.
inline constexpr ItemTypeRow kItemTypes[] = {
    {"scene", ""},
    {"locator", ""},
    {"groupLocator", "locator"},
    {"camera", "locator"},
    {"light", "locator"},
    {"sunLight", "light"},
    {"pointLight", "light"},
    {"spotLight", "light"},
    {"areaLight", "light"},
    {"cylinderLight", "light"},
    {"domeLight", "light"},
    {"photometryLight", "light"},
    {"mesh", "locator"},
    {"meshInst", "locator"},
    {"triSurf", "locator"},
    {"replicator", "locator"},
    {"txtrLocator", "locator"},
    {"translation", ""},
    {"rotation", ""},
    {"scale", ""},
    {"transform", ""},
    {"shear", ""},
    {"textureLayer", ""},
    {"mask", "textureLayer"},
    {"advancedMaterial", "textureLayer"},
    {"glTFShader", "textureLayer"},
    {"unityShader", "textureLayer"},
    {"unrealShader", "textureLayer"},
    {"lightMaterial", "textureLayer"},
    {"imageMap", "textureLayer"},
    {"constant", "textureLayer"},
    {"gradient", "textureLayer"},
    {"noise", "textureLayer"},
    {"process", "textureLayer"},
    {"polyRender", ""},
    {"deformGroup", ""},
    {"deformer", ""},
    {"genInfluence", "deformer"},
    {"itemInfluence", "deformer"},
    {"weightMapDeformer", "deformer"},
    {"morphDeform", "deformer"},
    {"ikFullBody", ""},
    {"group", ""},
    {"actionclip", ""},
};

// The base of a type, empty when it has none or isn't known.
std::string_view BaseType(const SceneData& scene, std::string_view type);
bool IsKnownType(const SceneData& scene, std::string_view type);
// True for the type itself and for its bases.
bool TypeDerivesFrom(const SceneData& scene, std::string_view type, std::string_view base);

// The types of one scene by code. A type that only items name is known too, without a base.
class ItemTypes {
 public:
  explicit ItemTypes(const SceneData& scene);

  std::uint32_t Code(std::string_view name) const;  // 0 when unknown
  std::uint32_t CodeOf(ItemIndex item) const { return itemCodes_[static_cast<std::size_t>(item)]; }
  const char* Name(std::uint32_t code) const;  // null when unknown
  bool Derives(std::uint32_t type, std::uint32_t base) const {
    if (base == 0) return false;
    while (type != 0 && type != base) type = bases_[type - 1];
    return type != 0;
  }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(names_.size()); }

 private:
  std::uint32_t Add(std::string_view name);

  // By code less one.
  std::vector<std::string> names_;
  std::vector<std::uint32_t> bases_;
  std::unordered_map<std::string, std::uint32_t> codes_;
  std::vector<std::uint32_t> itemCodes_;  // by item
};

}  // namespace headless
