#include "materials/material_channels.h"

#include "materials/channel_reads.h"

namespace {

// Makes the item current in the frame.
CZyUser_Item Enter(SaveState& state, IZyItem* raw) {
  CZyUser_Item item;
  item.Set(raw);
  state.frame->SetItem(item);
  return item;
}

void ReadFloat(const CZyUser_ChannelRead& read, const CZyUser_Item& item, const char* name, float& value) {
  double wide = 0;
  if (ReadDouble(read, item, name, wide)) value = static_cast<float>(wide);
}

void MakeUnlit(SaveState& state, GltfMaterial& material) {
  material.metallicFactor = 0;
  material.roughnessFactor = 1;
  material.emissiveFactor = {0, 0, 0};
  state.log.Warning(
      "Material '%s' uses glTF Unlit shader extension. At the point of making this warning Unlit extension is "
      "not fully ratified and could change at any point.",
      material.name.c_str());
}

// A negative dissolve gives a full alpha that isn't blended; above 1 the material is blended at alpha 0.
void SetAlpha(GltfMaterial& material, double alpha) {
  if (alpha < 0) {
    material.baseColorFactor[3] = 0;
    material.alphaMode = GltfAlphaMode::Blend;
  } else if (alpha > 1) {
    material.baseColorFactor[3] = 1;
  } else {
    material.baseColorFactor[3] = alpha;
    if (alpha != 1) material.alphaMode = GltfAlphaMode::Blend;  // NaN too
  }
}

}  // namespace

void ReadGltfShader(SaveState& state, GltfMaterial& material, IZyItem* shader) {
  const CZyUser_Item item = Enter(state, shader);
  const CZyUser_ChannelRead& read = state.chanEdit;
  ReadDouble(read, item, "baseColor.R", material.baseColorFactor[0]);
  ReadDouble(read, item, "baseColor.G", material.baseColorFactor[1]);
  ReadDouble(read, item, "baseColor.B", material.baseColorFactor[2]);

  auto shadeModel = static_cast<std::int32_t>(material.shadingModel);
  ReadInteger(read, item, "shadeModel", shadeModel);
  material.shadingModel = static_cast<GltfShadingModel>(shadeModel);  // unknown models stand as they are
  if (material.shadingModel == GltfShadingModel::Unlit) return MakeUnlit(state, material);

  ReadFloat(read, item, "metallic", material.metallicFactor);
  ReadFloat(read, item, "roughness", material.roughnessFactor);

  ReadDouble(read, item, "emissive.R", material.emissiveFactor[0]);
  ReadDouble(read, item, "emissive.G", material.emissiveFactor[1]);
  ReadDouble(read, item, "emissive.B", material.emissiveFactor[2]);
  double level = 1;
  ReadDouble(read, item, "emissivelevel", level);
  for (double& value : material.emissiveFactor) value *= level;

  ReadDouble(read, item, "normalscale", material.normalScale);
  ReadDouble(read, item, "aoscale", material.occlusionStrength);
}

void ReadOrvoMaterial(SaveState& state, GltfMaterial& material, IZyItem* orvoMaterial) {
  const CZyUser_Item item = Enter(state, orvoMaterial);
  double dissolve = 0;
  if (ReadDouble(state.chanEdit, item, "dissAmt", dissolve)) SetAlpha(material, 1.0 - dissolve);
  std::int32_t doubleSided = material.doubleSided;
  ReadInteger(state.chanEdit, item, "dblSided", doubleSided);
  material.doubleSided = doubleSided != 0;
}
