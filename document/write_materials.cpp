#include "document/write_materials.h"

#include "document/json_values.h"
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

// Without its UV map the texture isn't written at all.
void AddBaseColorTexture(GltfDocument& document, const GltfMesh& mesh, const GltfTexture* texture,
                         JsonValue& owner) {
  if (!texture) return;
  const auto texCoord = TexCoordOf(mesh, *texture);
  if (!texCoord) return;
  if (const auto index = WriteTexture(document, *texture))
    owner.AddMember("baseColorTexture", MakeTextureReference(document, *texture, *index, *texCoord, {}),
                    *document.allocator);
}

// Here the texture is written first, and stays when the mesh lacks its UV map.
void AddTexture(GltfDocument& document, const GltfMesh& mesh, const GltfTexture* texture, JsonValue& owner,
                const char* key, ReferenceFactor factor = {}) {
  if (!texture) return;
  const auto index = WriteTexture(document, *texture);
  const auto texCoord = TexCoordOf(mesh, *texture);
  if (index && texCoord)
    owner.AddMember(rapidjson::StringRef(key), MakeTextureReference(document, *texture, *index, *texCoord, factor),
                    *document.allocator);
}

JsonValue MakeUnlitExtension(JsonAllocator& allocator) {
  JsonValue extensions(rapidjson::kObjectType);
  extensions.AddMember("KHR_materials_unlit", JsonValue(rapidjson::kObjectType), allocator);
  return extensions;
}

}  // namespace

std::uint32_t WriteMaterial(GltfDocument& document, const GltfMaterial& material, const GltfMesh& mesh) {
  const auto [entry, isNew] = document.materialIndex.insert({&material, document.json.materials.Size()});
  if (!isNew) return entry->second;

  JsonAllocator& allocator = *document.allocator;
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("name", TextValue(material.name, allocator), allocator);
  object.AddMember("emissiveFactor", NumbersValue(material.emissiveFactor, allocator), allocator);
  object.AddMember("alphaMode", rapidjson::StringRef(AlphaModeText(material.alphaMode)), allocator);
  object.AddMember("doubleSided", material.doubleSided, allocator);

  JsonValue pbr(rapidjson::kObjectType);
  pbr.AddMember("baseColorFactor", NumbersValue(material.baseColorFactor, allocator), allocator);
  pbr.AddMember("metallicFactor", static_cast<double>(material.metallicFactor), allocator);
  pbr.AddMember("roughnessFactor", static_cast<double>(material.roughnessFactor), allocator);
  AddBaseColorTexture(document, mesh, material.baseColorTexture, pbr);
  if (material.shadingModel == GltfShadingModel::MetallicRoughness) {
    AddTexture(document, mesh, material.metallicRoughnessTexture, pbr, "metallicRoughnessTexture");
    AddTexture(document, mesh, material.normalTexture, object, "normalTexture", {"scale", material.normalScale});
    AddTexture(document, mesh, material.occlusionTexture, object, "occlusionTexture",
               {"strength", material.occlusionStrength});
    AddTexture(document, mesh, material.emissiveTexture, object, "emissiveTexture");
  }
  object.AddMember("pbrMetallicRoughness", pbr, allocator);
  if (material.shadingModel == GltfShadingModel::Unlit) {
    object.AddMember("extensions", MakeUnlitExtension(allocator), allocator);
    document.unlitUsed = true;
  }
  return AppendValue(document.json.materials, std::move(object), allocator);
}
