#include "importer/materials.h"

#include "importer/source_check.h"
#include "readers/shader_recipe.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <set>

namespace importer {
namespace {

using readers::ImageRole;
using readers::ShaderImage;
using readers::ShaderRecipe;
using readers::WrapMode;
using Color = std::array<double, 3>;

// Which kinds of texture feed a role: the first that a material has. In the order of the recipe's images.
struct TextureRole {
  ImageRole role;
  aiTextureType types[3];
};

constexpr TextureRole kTextureRoles[] = {
    {ImageRole::Dissolve, {aiTextureType_OPACITY, aiTextureType_NONE, aiTextureType_NONE}},
    {ImageRole::BaseColor, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE, aiTextureType_NONE}},
    {ImageRole::Metallic, {aiTextureType_METALNESS, aiTextureType_NONE, aiTextureType_NONE}},
    {ImageRole::Roughness, {aiTextureType_DIFFUSE_ROUGHNESS, aiTextureType_NONE, aiTextureType_NONE}},
    {ImageRole::Occlusion, {aiTextureType_AMBIENT_OCCLUSION, aiTextureType_LIGHTMAP, aiTextureType_NONE}},
    {ImageRole::Emissive, {aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE, aiTextureType_NONE}},
    {ImageRole::Normal, {aiTextureType_NORMAL_CAMERA, aiTextureType_NORMALS, aiTextureType_NONE}},
};

struct LostTexture {
  aiTextureType type;
  const char* name;
};

constexpr LostTexture kLostTextures[] = {
    {aiTextureType_SPECULAR, "specular"},
    {aiTextureType_AMBIENT, "ambient"},
    {aiTextureType_HEIGHT, "bump"},
    {aiTextureType_SHININESS, "shininess"},
    {aiTextureType_REFLECTION, "reflection"},
    {aiTextureType_DISPLACEMENT, "displacement"},
    {aiTextureType_SHEEN, "sheen"},
    {aiTextureType_CLEARCOAT, "clear coat"},
    {aiTextureType_TRANSMISSION, "transmission"},
};

std::optional<double> Number(const aiMaterial& material, const char* key, unsigned type, unsigned index) {
  float value = 0;
  if (material.Get(key, type, index, value) != AI_SUCCESS || !std::isfinite(value)) return std::nullopt;
  return static_cast<double>(value);
}

std::optional<Color> ColorOf(const aiMaterial& material, const char* key, unsigned type, unsigned index) {
  aiColor3D value;
  if (material.Get(key, type, index, value) != AI_SUCCESS) return std::nullopt;
  const Color color = {static_cast<double>(value.r), static_cast<double>(value.g), static_cast<double>(value.b)};
  const bool finite = std::all_of(color.begin(), color.end(), [](double part) { return std::isfinite(part); });
  return finite ? std::optional(color) : std::nullopt;
}

std::optional<int> Integer(const aiMaterial& material, const char* key, unsigned type, unsigned index) {
  int value = 0;
  return material.Get(key, type, index, value) == AI_SUCCESS ? std::optional(value) : std::nullopt;
}

std::string Text(const aiMaterial& material, const char* key, unsigned type, unsigned index) {
  aiString value;
  return material.Get(key, type, index, value) == AI_SUCCESS ? TextOf(value) : std::string();
}

std::string TextureName(const aiMaterial& material, aiTextureType type) {
  return Text(material, AI_MATKEY_TEXTURE(type, 0));
}

bool IsBlack(const Color& color) {
  return std::all_of(color.begin(), color.end(), [](double part) { return part == 0; });
}

WrapMode WrapOf(const aiMaterial& material, const char* key, aiTextureType type) {
  const int mode = Integer(material, key, type, 0).value_or(aiTextureMapMode_Wrap);
  if (mode == aiTextureMapMode_Mirror) return WrapMode::Mirror;
  return mode == aiTextureMapMode_Clamp || mode == aiTextureMapMode_Decal ? WrapMode::Clamp : WrapMode::Repeat;
}

// Assimp looks an image up at u' = u * su + ou, v' = v * sv + ov, with v upwards, and turns it counter-clockwise
// about its middle. An offset and a turn by r about the upper left corner with v downwards, as glTF has them, come
// to
//   ou = x + su/2 * (1 - cos r + sin r)   ov = 1 - sv - y + sv/2 * (cos r + sin r - 1)
// so that x and y are known, and from them the offset to which the export adds its own way from the middle of the
// image to that corner.
void SetTransform(const aiUVTransform& transform, readers::ImagePlacement& placement) {
  const double su = static_cast<double>(transform.mScaling.x), sv = static_cast<double>(transform.mScaling.y);
  const double ou = static_cast<double>(transform.mTranslation.x);
  const double ov = static_cast<double>(transform.mTranslation.y);
  const double r = -static_cast<double>(transform.mRotation);
  if (!std::isfinite(su + sv + ou + ov + r)) return;
  const double c = std::cos(r), s = std::sin(r);
  const double x = ou - su / 2 * (1 - c + s);
  const double y = 1 - sv - ov + sv / 2 * (c + s - 1);
  placement.rotation = r;
  placement.scale = {su, sv};
  placement.offset = {x + (su - 1) / 2 - su / 2 * (1 - c - s), y + (sv - 1) / 2 - sv / 2 * (1 - c + s)};
}

class MaterialReader {
 public:
  MaterialReader(const aiMaterial& material, const std::vector<std::string>& uvNames, EmbeddedTextures& textures,
                 std::vector<std::string>& warnings)
      : material_(material), uvNames_(uvNames), textures_(textures), warnings_(warnings) {}

  ShaderRecipe Read(const std::string& tag) {
    recipe_.name = tag;
    for (const TextureRole& role : kTextureRoles) AddImage(role);
    AddAlphaImage();
    ReadColors();
    ReadSurface();
    ReadOpacity();
    WarnOfLosses();
    return std::move(recipe_);
  }

 private:
  bool Has(ImageRole role) const {
    return std::any_of(recipe_.images.begin(), recipe_.images.end(),
                       [role](const ShaderImage& image) { return image.role == role; });
  }
  void Warn(const std::string& text) {
    warnings_.push_back(fmt::format("material \"{}\": {}", recipe_.name, text));
  }
  void AddImage(const TextureRole& role);
  void AddAlphaImage();
  void ReadColors();
  void ReadSurface();
  void ReadOpacity();
  void WarnOfLosses();
  ShaderImage ImageOf(ImageRole role, aiTextureType type, std::string path) const;

  const aiMaterial& material_;
  const std::vector<std::string>& uvNames_;
  EmbeddedTextures& textures_;
  std::vector<std::string>& warnings_;
  ShaderRecipe recipe_;
};

ShaderImage MaterialReader::ImageOf(ImageRole role, aiTextureType type, std::string path) const {
  ShaderImage image;
  image.role = role;
  image.path = std::move(path);
  const auto channel =
      static_cast<std::size_t>(std::max(Integer(material_, AI_MATKEY_UVWSRC(type, 0)).value_or(0), 0));
  image.placement.uvMap = channel < uvNames_.size() ? uvNames_[channel]
                          : uvNames_.empty()        ? "Texture"
                                                    : uvNames_[0];
  image.placement.wrap = {WrapOf(material_, _AI_MATKEY_MAPPINGMODE_U_BASE, type),
                          WrapOf(material_, _AI_MATKEY_MAPPINGMODE_V_BASE, type)};
  aiUVTransform transform;
  if (material_.Get(AI_MATKEY_UVTRANSFORM(type, 0), transform) == AI_SUCCESS)
    SetTransform(transform, image.placement);
  return image;
}

void MaterialReader::AddImage(const TextureRole& role) {
  for (const aiTextureType type : role.types) {
    const std::string name = type == aiTextureType_NONE ? std::string() : TextureName(material_, type);
    if (name.empty()) continue;
    if (const std::optional<std::string> path = textures_.PathOf(name)) {
      recipe_.images.push_back(ImageOf(role.role, type, *path));
      return;
    }
    Warn(fmt::format("texture \"{}\" isn't in the file", name));
  }
}

// Where the file says that the alpha of its base colour image counts, the same image is the transparency's too.
void MaterialReader::AddAlphaImage() {
  const std::string mode = Text(material_, AI_MATKEY_GLTF_ALPHAMODE);
  const auto color = std::find_if(recipe_.images.begin(), recipe_.images.end(),
                                  [](const ShaderImage& image) { return image.role == ImageRole::BaseColor; });
  if (color == recipe_.images.end() || Has(ImageRole::Dissolve)) return;
  const int flags = Integer(material_, AI_MATKEY_TEXFLAGS(aiTextureType_DIFFUSE, 0)).value_or(0);
  if (mode != "BLEND" && mode != "MASK" && (flags & aiTextureFlags_UseAlpha) == 0) return;
  if (mode == "MASK") Warn("its alpha cutoff is not carried over");
  ShaderImage alpha = *color;
  alpha.role = ImageRole::Dissolve;
  recipe_.images.insert(recipe_.images.begin(), std::move(alpha));
}

void MaterialReader::ReadColors() {
  std::optional<Color> base = ColorOf(material_, AI_MATKEY_BASE_COLOR);
  if (!base) base = ColorOf(material_, AI_MATKEY_COLOR_DIFFUSE);
  std::optional<Color> emissive = ColorOf(material_, AI_MATKEY_COLOR_EMISSIVE);
  // A texture multiplies its colour; black would leave nothing of it and can't be meant.
  if (Has(ImageRole::BaseColor) && (!base || IsBlack(*base))) base = Color{1, 1, 1};
  if (Has(ImageRole::Emissive) && (!emissive || IsBlack(*emissive))) emissive = Color{1, 1, 1};
  recipe_.baseColor = base.value_or(Color{1, 1, 1});
  recipe_.emissive = emissive.value_or(Color{0, 0, 0});
  const double intensity = Number(material_, AI_MATKEY_EMISSIVE_INTENSITY).value_or(1);
  for (double& part : recipe_.emissive) part *= intensity;
}

void MaterialReader::ReadSurface() {
  recipe_.metallic = Number(material_, AI_MATKEY_METALLIC_FACTOR).value_or(Has(ImageRole::Metallic) ? 1 : 0);
  const std::optional<double> roughness = Number(material_, AI_MATKEY_ROUGHNESS_FACTOR);
  const std::optional<double> shininess = Number(material_, AI_MATKEY_SHININESS);
  const bool matt = IsBlack(ColorOf(material_, AI_MATKEY_COLOR_SPECULAR).value_or(Color{1, 1, 1}));
  if (roughness)
    recipe_.roughness = *roughness;
  else if (shininess && !matt && !Has(ImageRole::Roughness))
    recipe_.roughness = readers::RoughnessOfShininess(*shininess);
  recipe_.normalScale = Number(material_, AI_MATKEY_GLTF_TEXTURE_SCALE(aiTextureType_NORMALS, 0)).value_or(1);
  recipe_.occlusionStrength =
      Number(material_, AI_MATKEY_GLTF_TEXTURE_STRENGTH(aiTextureType_LIGHTMAP, 0)).value_or(1);
  const int model = Integer(material_, AI_MATKEY_SHADING_MODEL).value_or(aiShadingMode_Gouraud);
  if (model == aiShadingMode_NoShading) recipe_.shadeModel = readers::ShadeModel::Unlit;
  if (Integer(material_, AI_MATKEY_TWOSIDED).value_or(0) != 0) recipe_.sides = readers::Sides::Both;
}

void MaterialReader::ReadOpacity() {
  recipe_.opacity = std::clamp(Number(material_, AI_MATKEY_OPACITY).value_or(1), 0.0, 1.0);
  if (Text(material_, AI_MATKEY_GLTF_ALPHAMODE) == "OPAQUE") recipe_.opacity = 1;
  // Many exporters write the transparency of an opaque surface the wrong way round.
  if (recipe_.opacity == 0) {
    Warn("opacity 0 taken as opaque");
    recipe_.opacity = 1;
  }
}

void MaterialReader::WarnOfLosses() {
  for (const LostTexture& lost : kLostTextures)
    if (!TextureName(material_, lost.type).empty())
      Warn(fmt::format("its {} texture is not carried over", lost.name));
  for (const TextureRole& role : kTextureRoles)
    for (const aiTextureType type : role.types)
      if (type != aiTextureType_NONE && material_.GetTextureCount(type) > 1)
        Warn("a second texture for the same part is not carried over");
}

}  // namespace

std::vector<std::string> MaterialTags(const aiScene& source) {
  std::vector<std::string> tags;
  std::set<std::string> taken;
  for (unsigned i = 0; i < source.mNumMaterials; ++i) {
    std::string name = Text(*source.mMaterials[i], AI_MATKEY_NAME);
    if (name.empty()) name = "Material";
    const std::string base = name;
    for (int number = 2; !taken.insert(name).second; ++number) name = fmt::format("{} {}", base, number);
    tags.push_back(name);
  }
  return tags;
}

void AddMaterials(const aiScene& source, const std::vector<std::string>& tags,
                  const std::vector<std::string>& uvNames, EmbeddedTextures& textures, headless::SceneData& scene,
                  std::vector<std::string>& warnings) {
  readers::ShaderBuilder shaders(scene);
  for (unsigned i = 0; i < source.mNumMaterials; ++i)
    shaders.Add(MaterialReader(*source.mMaterials[i], uvNames, textures, warnings).Read(tags[i]));
}

}  // namespace importer
