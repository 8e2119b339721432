#include "readers/shader_recipe.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>

namespace readers {
namespace {

using headless::AddItem;
using headless::ItemData;
using headless::ItemIndex;
using headless::SetChannel;

// The effect of an image, and the part of the image that it means. The exporter's formats pack occlusion,
// roughness and metalness into the red, green and blue of one image.
struct ImageUse {
  const char* effect;
  std::int32_t swizzling;
  std::int32_t rgba;
};

constexpr ImageUse kImageUses[] = {
    {"dissolve", 1, 2}, {"baseColorGLTF", 1, 0}, {"metallicGLTF", 1, 5}, {"roughnessGLTF", 1, 4},
    {"aoGLTF", 1, 3},   {"emisGLTF", 0, 0},      {"normalGLTF", 0, 0},
};

constexpr std::int32_t kUvProjection = 6;

void SetColor(ItemData& item, const std::string& name, const std::array<double, 3>& color) {
  SetChannel(item, name + ".R", color[0]);
  SetChannel(item, name + ".G", color[1]);
  SetChannel(item, name + ".B", color[2]);
}

void SetPlacement(ItemData& locator, const ImagePlacement& placement) {
  SetChannel(locator, "projType", kUvProjection);
  SetChannel(locator, "uvMap", placement.uvMap);
  SetChannel(locator, "tileU", static_cast<std::int32_t>(placement.wrap[0]));
  SetChannel(locator, "tileV", static_cast<std::int32_t>(placement.wrap[1]));
  SetChannel(locator, "m02", placement.offset[0]);
  SetChannel(locator, "m12", placement.offset[1]);
  SetChannel(locator, "uvRotation", placement.rotation);
  SetChannel(locator, "wrapU", placement.scale[0]);
  SetChannel(locator, "wrapV", placement.scale[1]);
}

}  // namespace

double RoughnessOfShininess(double shininess) { return std::sqrt(2 / (std::max(shininess, 0.0) + 2)); }

void ShaderBuilder::Add(const ShaderRecipe& recipe) {
  const ItemIndex mask = AddItem(scene_, "mask", recipe.name);
  ItemData& item = scene_.items[static_cast<std::size_t>(mask)];
  SetChannel(item, "enable", 1);
  SetChannel(item, "ptag", recipe.name);
  SetChannel(item, "ptyp", std::string("Material"));
  // The transparency must lie before the shader, which is below it in the shader tree.
  if (recipe.opacity != 1 || recipe.sides == Sides::Both) AddTransparency(recipe, mask);
  AddShader(recipe, mask);
  for (const ShaderImage& image : recipe.images) AddImageMap(image, mask);
}

void ShaderBuilder::AddTransparency(const ShaderRecipe& recipe, ItemIndex mask) {
  const ItemIndex advanced = AddItem(scene_, "advancedMaterial", recipe.name + " transparency", mask);
  ItemData& item = scene_.items[static_cast<std::size_t>(advanced)];
  SetChannel(item, "enable", 1);
  SetChannel(item, "dissAmt", 1 - recipe.opacity);
  if (recipe.sides == Sides::Both) SetChannel(item, "dblSided", 1);
}

void ShaderBuilder::AddShader(const ShaderRecipe& recipe, ItemIndex mask) {
  const ItemIndex shader = AddItem(scene_, "glTFShader", recipe.name + " shader", mask);
  ItemData& item = scene_.items[static_cast<std::size_t>(shader)];
  SetChannel(item, "enable", 1);
  SetColor(item, "baseColor", recipe.baseColor);
  SetChannel(item, "shadeModel", static_cast<std::int32_t>(recipe.shadeModel));
  SetChannel(item, "metallic", recipe.metallic);
  SetChannel(item, "roughness", recipe.roughness);
  SetColor(item, "emissive", recipe.emissive);
  SetChannel(item, "emissivelevel", 1.0);
  SetChannel(item, "normalscale", recipe.normalScale);
  SetChannel(item, "aoscale", recipe.occlusionStrength);
}

void ShaderBuilder::AddImageMap(const ShaderImage& image, ItemIndex mask) {
  const std::string name = ImageMapName(image);
  const ItemIndex map = AddItem(scene_, "imageMap", name, mask);
  const ItemIndex locator = AddItem(scene_, "txtrLocator", name + " placement");
  const ImageUse& use = kImageUses[static_cast<std::size_t>(image.role)];
  ItemData& item = scene_.items[static_cast<std::size_t>(map)];
  SetChannel(item, "enable", 1);
  SetChannel(item, "effect", std::string(use.effect));
  SetChannel(item, "swizzling", use.swizzling);
  SetChannel(item, "rgba", use.rgba);
  item.imagePath = image.path;
  item.textureLocator = locator;
  SetPlacement(scene_.items[static_cast<std::size_t>(locator)], image.placement);
}

// The exporter knows textures by the names of their image maps: maps of one image in one placement share a
// name, and with it the texture, and no others do.
std::string ShaderBuilder::ImageMapName(const ShaderImage& image) {
  const ImagePlacement& place = image.placement;
  const std::string use =
      fmt::format("{} {} {} {} {} {} {} {}\n{}", place.offset[0], place.offset[1], place.rotation, place.scale[0],
                  place.scale[1], static_cast<std::int32_t>(place.wrap[0]),
                  static_cast<std::int32_t>(place.wrap[1]), image.path, place.uvMap);
  std::string& name = imageMapNamesByUse_[use];
  if (!name.empty()) return name;
  const std::string file = std::filesystem::path(image.path).filename().string();
  name = file;
  for (int number = 2; !imageMapNames_.insert(name).second; ++number) name = fmt::format("{} ({})", file, number);
  return name;
}

}  // namespace readers
