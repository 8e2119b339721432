// A material as plain values, and the shader items that it becomes: the one recipe of the shader tree that the
// exporters of the host understand.
#pragma once

#include "headless/scene_data.h"

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace readers {

// The channel that an image feeds, in the order in which a material lists its images. Dissolve stands before base
// colour, so that the exporter compares their files.
enum class ImageRole { Dissolve, BaseColor, Metallic, Roughness, Occlusion, Emissive, Normal };

enum class WrapMode : std::int32_t { Repeat = 1, Mirror = 2, Clamp = 3 };

// Where an image lies on the surface, in the host's terms: scale and rotation turn about the middle of the image.
struct ImagePlacement {
  std::string uvMap;
  std::array<WrapMode, 2> wrap = {WrapMode::Repeat, WrapMode::Repeat};
  std::array<double, 2> offset = {0, 0};
  double rotation = 0;  // radians
  std::array<double, 2> scale = {1, 1};
};

struct ShaderImage {
  ImageRole role = ImageRole::BaseColor;
  std::string path;  // in the form of the scene file
  ImagePlacement placement;
};

enum class ShadeModel : std::int32_t { Lit = 0, Unlit = 1 };
enum class Sides { Front, Both };

struct ShaderRecipe {
  std::string name;  // also the polygon tag
  std::array<double, 3> baseColor = {1, 1, 1};
  double opacity = 1;
  double metallic = 0;
  double roughness = 1;
  std::array<double, 3> emissive = {0, 0, 0};
  double normalScale = 1;
  double occlusionStrength = 1;
  ShadeModel shadeModel = ShadeModel::Lit;
  Sides sides = Sides::Front;
  std::vector<ShaderImage> images;  // at most one a role
};

// The roughness that gives a highlight the width that an exponent gives it (Walter et al. 2007 relate the two).
double RoughnessOfShininess(double shininess);

// Adds materials to one scene.
class ShaderBuilder {
 public:
  explicit ShaderBuilder(headless::SceneData& scene) : scene_(scene) {}

  // Adds a mask with its layers, and the texture locators of its images.
  void Add(const ShaderRecipe& recipe);

 private:
  void AddTransparency(const ShaderRecipe& recipe, headless::ItemIndex mask);
  void AddShader(const ShaderRecipe& recipe, headless::ItemIndex mask);
  void AddImageMap(const ShaderImage& image, headless::ItemIndex mask);
  std::string ImageMapName(const ShaderImage& image);

  headless::SceneData& scene_;
  std::set<std::string> imageMapNames_;
  std::map<std::string, std::string> imageMapNamesByUse_;
};

}  // namespace readers
