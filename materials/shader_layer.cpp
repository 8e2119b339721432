#include "materials/shader_layer.h"

#include "materials/channel_reads.h"

#include <cstring>

namespace {

constexpr const char* kOrvoEffects[] = {"lumiColor",  "lumiAmount", "diffColor",  "diffAmount",
                                        "specColor",  "specAmount", "rough",      "reflColor",
                                        "reflAmount", "tranColor",  "tranAmount", "dissolve",
                                        "bump",       "normal",     "displace",   "vectorDisplace"};
constexpr const char* kUnityEffects[] = {"metallicUT", "albedoUT", "smoothUT",     "emisUT",    "normalUT",
                                         "bumpUT",     "aoUT",     "detailMaskUT", "albedo2UT", "normal2UT"};
constexpr const char* kUnrealEffects[] = {"metallicUE", "baseUE", "roughUE", "specUE", "emisUE", "normalUE",
                                          "bumpUE",     "aoUE",   "sssUE",   "ccUE",   "ccrUE",  "opacUE"};
constexpr const char* kGltfEffects[] = {"metallicGLTF", "baseColorGLTF", "roughnessGLTF",
                                        "emisGLTF",     "normalGLTF",    "aoGLTF"};

struct EffectTable {
  ShaderFamily family;
  const char* const* begin;
  const char* const* end;
  bool exported;  // layers of the family can reach the material, so the channel is kept
};

// Searched in this order.
constexpr EffectTable kEffectTables[] = {
    {ShaderFamily::Orvo, std::begin(kOrvoEffects), std::end(kOrvoEffects), true},
    {ShaderFamily::Unity, std::begin(kUnityEffects), std::end(kUnityEffects), false},
    {ShaderFamily::Unreal, std::begin(kUnrealEffects), std::end(kUnrealEffects), false},
    {ShaderFamily::Gltf, std::begin(kGltfEffects), std::end(kGltfEffects), true},
};

struct LayerType {
  std::uint32_t ItemTypeCodes::*code;
  ShaderFamily family;
  LayerKind kind;
};

// Asked in this order. The family of an image map is settled by its effect.
constexpr LayerType kLayerTypes[] = {
    {&ItemTypeCodes::mask, ShaderFamily::Orvo, LayerKind::Mask},
    {&ItemTypeCodes::advancedMaterial, ShaderFamily::Orvo, LayerKind::Material},
    {&ItemTypeCodes::unityShader, ShaderFamily::Unity, LayerKind::Material},
    {&ItemTypeCodes::unrealShader, ShaderFamily::Unreal, LayerKind::Material},
    {&ItemTypeCodes::glTFShader, ShaderFamily::Gltf, LayerKind::Material},
    {&ItemTypeCodes::imageMap, ShaderFamily::Orvo, LayerKind::ImageMap},
};
constexpr LayerType kOtherType = {nullptr, ShaderFamily::Orvo, LayerKind::Other};

const LayerType& FindLayerType(const ItemTypeCodes& codes, const CZyUser_Item& item) {
  for (const LayerType& type : kLayerTypes)
    if (IsOfType(item, codes.*type.code)) return type;
  return kOtherType;
}

// An effect that no table knows leaves the layer in the Orvo family, without a channel.
void ClassifyEffect(ShaderLayer& layer) {
  for (const EffectTable& table : kEffectTables) {
    for (const char* const* entry = table.begin; entry != table.end; ++entry) {
      if (std::strcmp(*entry, layer.effect) != 0) continue;
      layer.family = table.family;
      layer.channel = table.exported ? *entry : nullptr;
      return;
    }
  }
}

}  // namespace

ShaderLayer ClassifyLayer(const SaveState& state, IZyItem* item) {
  ShaderLayer layer;
  layer.item = item;
  CZyUser_Item wrapped;
  layer.valid = wrapped.Set(item);
  if (!layer.valid) return layer;

  layer.name = NameOf(wrapped);
  CZyUser_Scene scene;
  CZyUser_ChannelRead edit;
  wrapped.Context(scene);
  scene.Channels("edit", 0, edit);
  std::int32_t enable = 0;
  ReadInteger(edit, wrapped, "enable", enable);
  layer.enabled = enable > 0;

  const LayerType& type = FindLayerType(state.typeCodes, wrapped);
  layer.family = type.family;
  layer.kind = type.kind;
  if (layer.kind == LayerKind::ImageMap) {
    layer.effect = ReadText(edit, wrapped, "effect");
    ClassifyEffect(layer);
  }
  return layer;
}
