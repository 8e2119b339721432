#include "readers/mtl_scene.h"

#include <algorithm>

namespace readers {
namespace {

struct MapRole {
  MtlMapKind kind;
  ImageRole role;
};

// In the order of the items.
constexpr MapRole kMapRoles[] = {
    {MtlMapKind::Dissolve, ImageRole::Dissolve}, {MtlMapKind::BaseColor, ImageRole::BaseColor},
    {MtlMapKind::Metallic, ImageRole::Metallic}, {MtlMapKind::Roughness, ImageRole::Roughness},
    {MtlMapKind::Emissive, ImageRole::Emissive}, {MtlMapKind::Normal, ImageRole::Normal},
    {MtlMapKind::Bump, ImageRole::Normal},
};

bool IsBlack(const std::optional<MtlColor>& color) {
  return color && std::all_of(color->begin(), color->end(), [](double part) { return part == 0; });
}

// A stated metalness or roughness counts; a map alone is taken as it is. The width of a highlight gives the
// roughness of the same look; a black highlight means a matt surface.
double Roughness(const MtlMaterial& material) {
  if (material.roughness) return *material.roughness;
  if (material.Map(MtlMapKind::Roughness) || !material.shininess || IsBlack(material.specular)) return 1;
  return RoughnessOfShininess(*material.shininess);
}

double Metalness(const MtlMaterial& material) {
  return material.metallic.value_or(material.Map(MtlMapKind::Metallic) ? 1 : 0);
}

// A map multiplies its colour; black would leave nothing of it and can't be meant.
MtlColor ColorBeside(MtlMapKind kind, const MtlMaterial& material, const std::optional<MtlColor>& color,
                     const MtlColor& otherwise) {
  if (material.Map(kind) && (!color || IsBlack(color))) return {1, 1, 1};
  return color.value_or(otherwise);
}

// Some exporters write "Tr 1" for an opaque material; with no word of "d" an invisible one can't be meant.
double Opacity(MtlFile& file, const MtlMaterial& material) {
  if (material.dissolve) return *material.dissolve;
  if (material.transparency != 1.0) return 1 - material.transparency.value_or(0);
  CountSkipped(file, "\"Tr 1\" taken as opaque");
  return 1;
}

// The library wants the image looked up at u' = u*su + ou, v' = v*sv + ov, v upwards from the lower left
// corner. The export has v downwards: with V = 1 - v, V' = 1 - v' = V*sv + (1 - sv - ov). The host's scale
// turns about the middle of the image, so that the export subtracts (s - 1) / 2 from the locator's offset:
//   offset[0] - (su - 1) / 2 = ou           offset[0] = ou + (su - 1) / 2
//   offset[1] - (sv - 1) / 2 = 1 - sv - ov  offset[1] = (1 - sv) / 2 - ov
ImagePlacement PlacementOf(const MtlMap& map) {
  ImagePlacement placement;
  placement.uvMap = "Texture";
  if (map.clamped) placement.wrap = {WrapMode::Clamp, WrapMode::Clamp};
  placement.offset = {map.offset[0] + (map.scale[0] - 1) / 2, (1 - map.scale[1]) / 2 - map.offset[1]};
  placement.scale = map.scale;
  return placement;
}

bool IsAbsolute(const std::string& path) {
  return path.starts_with('/') || (path.size() > 2 && path[1] == ':' && path[2] == '/');
}

}  // namespace

void MaterialBuilder::Add(MtlFile& file, const std::filesystem::path& directory) {
  for (const MtlMaterial& material : file.materials) {
    if (names_.insert(material.name).second) {
      AddMaterial(file, material, directory);
    } else {
      CountSkipped(file, "newmtl of a name that is taken");
    }
  }
}

void MaterialBuilder::AddMaterial(MtlFile& file, const MtlMaterial& material,
                                  const std::filesystem::path& directory) {
  ShaderRecipe recipe;
  recipe.name = material.name;
  recipe.opacity = Opacity(file, material);
  recipe.baseColor = ColorBeside(MtlMapKind::BaseColor, material, material.diffuse, {1, 1, 1});
  recipe.metallic = Metalness(material);
  recipe.roughness = Roughness(material);
  recipe.emissive = ColorBeside(MtlMapKind::Emissive, material, material.emissive, {0, 0, 0});
  const std::optional<MtlMap>& normal =
      material.Map(material.Map(MtlMapKind::Normal) ? MtlMapKind::Normal : MtlMapKind::Bump);
  if (normal) recipe.normalScale = normal->bumpFactor;
  for (const MapRole& use : kMapRoles) {
    const std::optional<MtlMap>& map = material.Map(use.kind);
    if (!map) continue;
    if (use.kind == MtlMapKind::Bump && material.Map(MtlMapKind::Normal)) {
      CountSkipped(file, "map_Bump beside norm");
    } else {
      const std::filesystem::path path =
          IsAbsolute(map->file) ? std::filesystem::path(map->file) : directory / map->file;
      recipe.images.push_back({use.role, path.lexically_normal().generic_string(), PlacementOf(*map)});
    }
  }
  shaders_.Add(recipe);
}

}  // namespace readers
