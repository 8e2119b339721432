#include "document/write_materials.h"

#include "document/write_textures.h"

namespace {

constexpr std::array<const char*, 3> kAlphaModes = {"OPAQUE", "MASK", "BLEND"};

const char* AlphaModeText(GltfAlphaMode mode) {
  const auto number = static_cast<std::size_t>(mode);
  return kAlphaModes[number < kAlphaModes.size() ? number : 0];
}

std::optional<std::uint32_t> TexCoordOf(const GltfMesh& mesh, const GltfTexture& texture) {
  const auto found = mesh.uvIndexByName.find(texture.uvMapName);
  if (found == mesh.uvIndexByName.end()) return std::nullopt;
  return found->second;
}

using Reference = std::optional<TextureReference>;

// Without its UV map the texture isn't written at all.
Reference ReferToBaseColor(GltfDocument& document, const GltfMesh& mesh, const GltfTexture* texture) {
  if (!texture) return std::nullopt;
  const auto texCoord = TexCoordOf(mesh, *texture);
  if (!texCoord) return std::nullopt;
  const auto index = WriteTexture(document, *texture);
  return index ? Reference({texture, *index, *texCoord}) : std::nullopt;
}

// Here the texture is written first, and stays when the mesh lacks its UV map.
Reference ReferTo(GltfDocument& document, const GltfMesh& mesh, const GltfTexture* texture) {
  if (!texture) return std::nullopt;
  const auto index = WriteTexture(document, *texture);
  const auto texCoord = TexCoordOf(mesh, *texture);
  return index && texCoord ? Reference({texture, *index, *texCoord}) : std::nullopt;
}

struct MaterialTextures {
  Reference baseColor, metallicRoughness, normal, occlusion, emissive;
};

// Writes the textures in their own order, which isn't that of the keys.
MaterialTextures WriteTextures(GltfDocument& document, const GltfMaterial& material, const GltfMesh& mesh) {
  MaterialTextures textures;
  textures.baseColor = ReferToBaseColor(document, mesh, material.baseColorTexture);
  if (material.shadingModel != GltfShadingModel::MetallicRoughness) return textures;
  textures.metallicRoughness = ReferTo(document, mesh, material.metallicRoughnessTexture);
  textures.normal = ReferTo(document, mesh, material.normalTexture);
  textures.occlusion = ReferTo(document, mesh, material.occlusionTexture);
  textures.emissive = ReferTo(document, mesh, material.emissiveTexture);
  return textures;
}

void AddReference(JsonText& text, const char* key, const Reference& reference, ReferenceFactor factor = {}) {
  if (!reference) return;
  text.Key(key);
  WriteTextureReference(text, *reference, factor);
}

void AddSurface(JsonText& text, const GltfMaterial& material, const MaterialTextures& textures) {
  text.Key("pbrMetallicRoughness");
  text.StartObject();
  text.Member("baseColorFactor", std::span<const double>(material.baseColorFactor));
  text.Member("metallicFactor", static_cast<double>(material.metallicFactor));
  text.Member("roughnessFactor", static_cast<double>(material.roughnessFactor));
  AddReference(text, "baseColorTexture", textures.baseColor);
  AddReference(text, "metallicRoughnessTexture", textures.metallicRoughness);
  text.EndObject();
}

void AddUnlitExtension(JsonText& text) {
  text.Key("extensions");
  text.StartObject();
  text.Key("KHR_materials_unlit");
  text.StartObject();
  text.EndObject();
  text.EndObject();
}

}  // namespace

std::uint32_t WriteMaterial(GltfDocument& document, const GltfMaterial& material, const GltfMesh& mesh) {
  const std::uint32_t index = document.json->materials.Size();
  const auto [entry, isNew] = document.materialIndex.insert({&material, index});
  if (!isNew) return entry->second;

  const MaterialTextures textures = WriteTextures(document, material, mesh);
  JsonText& text = document.json->materials.Append();
  text.StartObject();
  text.Member("name", material.name);
  text.Member("emissiveFactor", std::span<const double>(material.emissiveFactor));
  text.Member("alphaMode", AlphaModeText(material.alphaMode));
  text.Member("doubleSided", material.doubleSided);
  AddReference(text, "normalTexture", textures.normal, {"scale", material.normalScale});
  AddReference(text, "occlusionTexture", textures.occlusion, {"strength", material.occlusionStrength});
  AddReference(text, "emissiveTexture", textures.emissive);
  AddSurface(text, material, textures);
  if (material.shadingModel == GltfShadingModel::Unlit) {
    AddUnlitExtension(text);
    document.unlitUsed = true;
  }
  text.EndObject();
  return index;
}
