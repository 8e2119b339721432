#include "readers/mtl_scene.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace readers {
namespace {

using headless::AddItem;
using headless::ItemData;
using headless::ItemIndex;
using headless::SetChannel;

// How an image is used: the effect, and the part of the image that it means. The exporter's formats pack
// roughness and metalness into the green and blue of one image.
struct ImageUse {
  MtlMapKind kind;
  const char* effect;
  std::int32_t swizzling;
  std::int32_t rgba;
};

// In the order of the items. Dissolve stands before base colour, so that the exporter compares their files.
constexpr ImageUse kImageUses[] = {
    {MtlMapKind::Dissolve, "dissolve", 1, 2},     {MtlMapKind::BaseColor, "baseColorGLTF", 1, 0},
    {MtlMapKind::Metallic, "metallicGLTF", 1, 5}, {MtlMapKind::Roughness, "roughnessGLTF", 1, 4},
    {MtlMapKind::Emissive, "emisGLTF", 0, 0},     {MtlMapKind::Normal, "normalGLTF", 0, 0},
    {MtlMapKind::Bump, "normalGLTF", 0, 0},
};

constexpr std::int32_t kUvProjection = 6;
constexpr std::int32_t kRepeat = 1;
constexpr std::int32_t kClamp = 3;

bool IsBlack(const std::optional<MtlColor>& color) {
  return color && std::all_of(color->begin(), color->end(), [](double part) { return part == 0; });
}

// A stated metalness or roughness counts; a map alone is taken as it is. The width of a highlight gives the
// roughness of the same look (Walter et al. 2007 relate the two lobes); a black highlight means a matt surface.
double Roughness(const MtlMaterial& material) {
  if (material.roughness) return *material.roughness;
  if (material.Map(MtlMapKind::Roughness) || !material.shininess || IsBlack(material.specular)) return 1;
  return std::sqrt(2 / (std::max(*material.shininess, 0.0) + 2));
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

void SetColor(ItemData& item, const std::string& name, const MtlColor& color) {
  SetChannel(item, name + ".R", color[0]);
  SetChannel(item, name + ".G", color[1]);
  SetChannel(item, name + ".B", color[2]);
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
//   m02 - (su - 1) / 2 = ou           m02 = ou + (su - 1) / 2
//   m12 - (sv - 1) / 2 = 1 - sv - ov  m12 = (1 - sv) / 2 - ov
void SetPlacement(ItemData& locator, const MtlMap& map) {
  SetChannel(locator, "projType", kUvProjection);
  SetChannel(locator, "uvMap", std::string("Texture"));
  for (const char* tile : {"tileU", "tileV"}) SetChannel(locator, tile, map.clamped ? kClamp : kRepeat);
  SetChannel(locator, "m02", map.offset[0] + (map.scale[0] - 1) / 2);
  SetChannel(locator, "m12", (1 - map.scale[1]) / 2 - map.offset[1]);
  SetChannel(locator, "uvRotation", 0.0);
  SetChannel(locator, "wrapU", map.scale[0]);
  SetChannel(locator, "wrapV", map.scale[1]);
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
  const ItemIndex mask = AddItem(scene_, "mask", material.name);
  ItemData& item = scene_.items[static_cast<std::size_t>(mask)];
  SetChannel(item, "enable", 1);
  SetChannel(item, "ptag", material.name);
  SetChannel(item, "ptyp", std::string("Material"));
  // The transparency must lie before the shader, which is below it in the shader tree.
  if (const double opacity = Opacity(file, material); opacity != 1) {
    const ItemIndex advanced = AddItem(scene_, "advancedMaterial", material.name + " transparency", mask);
    ItemData& transparency = scene_.items[static_cast<std::size_t>(advanced)];
    SetChannel(transparency, "enable", 1);
    SetChannel(transparency, "dissAmt", 1 - opacity);
  }
  AddShader(material, mask);
  for (const ImageUse& use : kImageUses) {
    const std::optional<MtlMap>& map = material.Map(use.kind);
    if (!map) continue;
    if (use.kind == MtlMapKind::Bump && material.Map(MtlMapKind::Normal)) {
      CountSkipped(file, "map_Bump beside norm");
    } else {
      AddImageMap(use.kind, *map, mask, directory);
    }
  }
}

void MaterialBuilder::AddShader(const MtlMaterial& material, ItemIndex mask) {
  const ItemIndex shader = AddItem(scene_, "glTFShader", material.name + " shader", mask);
  ItemData& item = scene_.items[static_cast<std::size_t>(shader)];
  SetChannel(item, "enable", 1);
  SetColor(item, "baseColor", ColorBeside(MtlMapKind::BaseColor, material, material.diffuse, {1, 1, 1}));
  SetChannel(item, "shadeModel", 0);
  SetChannel(item, "metallic", Metalness(material));
  SetChannel(item, "roughness", Roughness(material));
  SetColor(item, "emissive", ColorBeside(MtlMapKind::Emissive, material, material.emissive, {0, 0, 0}));
  SetChannel(item, "emissivelevel", 1.0);
  const std::optional<MtlMap>& normal =
      material.Map(material.Map(MtlMapKind::Normal) ? MtlMapKind::Normal : MtlMapKind::Bump);
  SetChannel(item, "normalscale", normal ? normal->bumpFactor : 1.0);
  SetChannel(item, "aoscale", 1.0);
}

void MaterialBuilder::AddImageMap(MtlMapKind kind, const MtlMap& map, ItemIndex mask,
                                  const std::filesystem::path& directory) {
  const std::filesystem::path path = IsAbsolute(map.file) ? std::filesystem::path(map.file) : directory / map.file;
  const std::string imagePath = path.lexically_normal().generic_string();
  const std::string name = ImageMapName(imagePath, map);
  const ItemIndex image = AddItem(scene_, "imageMap", name, mask);
  const ItemIndex locator = AddItem(scene_, "txtrLocator", name + " placement");
  const ImageUse& use = *std::find_if(std::begin(kImageUses), std::end(kImageUses),
                                      [kind](const ImageUse& entry) { return entry.kind == kind; });
  ItemData& item = scene_.items[static_cast<std::size_t>(image)];
  SetChannel(item, "enable", 1);
  SetChannel(item, "effect", std::string(use.effect));
  SetChannel(item, "swizzling", use.swizzling);
  SetChannel(item, "rgba", use.rgba);
  item.imagePath = imagePath;
  item.textureLocator = locator;
  SetPlacement(scene_.items[static_cast<std::size_t>(locator)], map);
}

// The exporter knows textures by the names of their image maps: maps of one image in one placement share a
// name, and with it the texture, and no others do.
std::string MaterialBuilder::ImageMapName(const std::string& path, const MtlMap& map) {
  const std::string use = fmt::format("{} {} {} {} {} {}", map.offset[0], map.offset[1], map.scale[0],
                                      map.scale[1], map.clamped, path);
  std::string& name = imageMapNamesByUse_[use];
  if (!name.empty()) return name;
  const std::string file = std::filesystem::path(path).filename().string();
  name = file;
  for (int number = 2; !imageMapNames_.insert(name).second; ++number) name = fmt::format("{} ({})", file, number);
  return name;
}

}  // namespace readers
