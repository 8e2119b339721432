#include "materials/tag_resolver.h"

#include "materials/channel_images.h"
#include "materials/channel_reads.h"
#include "materials/image_checks.h"
#include "materials/image_textures.h"
#include "materials/material_channels.h"
#include "materials/shader_layer.h"

#include <cstring>

namespace {

// What the walk through the tree below one mask has found.
struct TreeWalk {
  std::vector<ShaderLayer> layerStack;  // still to visit, the back first
  ChannelImages channelImages;
  std::vector<IZyItem*> materialLayers;  // glTF shaders, in order of visit
  IZyItem* orvoMaterial = nullptr;       // gives the transparency
};

// Accepts the first Orvo material that doesn't stand above the mask's glTF shader.
void ConsiderOrvoMaterial(SaveState& state, TreeWalk& walk, const ShaderLayer& mask, IZyItem* material,
                          bool aboveShader) {
  if (!aboveShader && !walk.orvoMaterial) {
    walk.orvoMaterial = material;
  } else if (walk.orvoMaterial) {
    state.log.Warning(
        "    Found multiple Orvo materials in glTF layer '%s' only the first Orvo material under the glTF "
        "material in the shader tree will be used for transparency!",
        mask.name);
  } else {
    state.log.Warning(
        "    Orvo material in glTF layer '%s' must be placed below glTF material in the shader tree!", mask.name);
  }
}

// Pushes the children from the last to the first, so that the walk visits them in their order. "Below" in
// the shader tree is a lower index.
void ExpandMask(SaveState& state, TreeWalk& walk, const ShaderLayer& mask) {
  CZyUser_Item item;
  item.Set(mask.item);
  std::uint32_t count = 0;
  item.SubCount(count);
  std::uint32_t gltfMaterialIndex = 0;
  for (std::uint32_t index = count; index-- > 0;) {
    CZyUser_Item child;
    item.SubByIndex(index, child);
    const ShaderLayer& layer = walk.layerStack.emplace_back(ClassifyLayer(state, child.Raw()));
    if (layer.kind != LayerKind::Material || !layer.enabled) continue;
    if (layer.family == ShaderFamily::Gltf) gltfMaterialIndex = index;
    if (layer.family == ShaderFamily::Orvo)
      ConsiderOrvoMaterial(state, walk, mask, layer.item, index > gltfMaterialIndex);
  }
}

void VisitGltfLayer(SaveState& state, TreeWalk& walk, const ShaderLayer& layer) {
  if (layer.kind == LayerKind::Material) {
    walk.materialLayers.push_back(layer.item);
  } else if (layer.kind == LayerKind::ImageMap) {
    // A glTF effect always has a channel today; the messages guard against a table that says otherwise.
    if (layer.channel)
      walk.channelImages.Insert(layer.channel, layer.item);
    else if (std::strcmp(layer.effect, "layerMask") == 0)
      state.log.Info("    Skipping layer mask %s", layer.name);
    else
      state.log.Warning("    Unsupported layer effect %s for %s", layer.effect, layer.name);
  }
  // Also said of layers that were just accepted; people read the log by it.
  state.log.Info("    Skipping Gltf shader layer %s", layer.name);
}

void VisitOrvoLayer(SaveState& state, TreeWalk& walk, const ShaderLayer& layer) {
  if (layer.kind == LayerKind::Mask)
    ExpandMask(state, walk, layer);
  else if (layer.kind == LayerKind::ImageMap && std::strcmp(layer.effect, "dissolve") == 0)
    walk.channelImages.Insert("dissolve", layer.item);
}

void VisitLayer(SaveState& state, TreeWalk& walk, const ShaderLayer& layer) {
  if (!layer.valid || !layer.enabled) return;
  switch (layer.family) {
    case ShaderFamily::Gltf:
      return VisitGltfLayer(state, walk, layer);
    case ShaderFamily::Unity:
      return state.log.Info("    Skipping Unity shader layer %s", layer.name);
    case ShaderFamily::Unreal:
      return state.log.Info("    Skipping Unreal shader layer %s", layer.name);
    case ShaderFamily::Orvo:
      return VisitOrvoLayer(state, walk, layer);
    case ShaderFamily::Null:
    case ShaderFamily::Other:
      return state.log.Warning("    Unsupported layer %s", layer.name);
  }
}

TreeWalk WalkTree(SaveState& state, IZyItem* mask) {
  TreeWalk walk;
  walk.layerStack.push_back(ClassifyLayer(state, mask));
  while (!walk.layerStack.empty()) {
    const ShaderLayer layer = walk.layerStack.back();
    walk.layerStack.pop_back();
    VisitLayer(state, walk, layer);
  }
  return walk;
}

GltfMaterial* NewMaterial(SaveState& state, const std::string& tag) {
  return state.gltfScene ? state.gltfScene->CreateMaterial(tag) : nullptr;
}

GltfMaterial* MakeMaterial(SaveState& state, const std::string& tag, const TreeWalk& walk) {
  GltfMaterial* material = NewMaterial(state, tag);
  if (!material) return nullptr;
  if (walk.materialLayers.empty()) {
    state.log.Warning("    Poly tag %s does not have material layer effect", tag.c_str());
    return material;
  }
  ReadGltfShader(state, *material, walk.materialLayers.front());
  if (walk.orvoMaterial) ReadOrvoMaterial(state, *material, walk.orvoMaterial);
  if (walk.materialLayers.size() > 1)
    state.log.Warning("    Multiple material layers detected within poly tag %s", tag.c_str());
  return material;
}

void AddTextures(SaveState& state, GltfMaterial& material, const ChannelImages& channelImages) {
  SwizzleReads reads;
  for (const auto& [channel, imageMap] : channelImages.Entries()) {
    CZyUser_Item item;
    item.Set(imageMap);
    state.frame->SetItem(item);
    if (GltfTexture* texture = CreateTexture(state, item))
      ValidateImageMap(state, channel, item, *texture, material, reads);
  }
}

void LogMask(SaveState& state, const std::string& tag, IZyItem* mask) {
  CZyUser_Item item;
  item.Set(mask);
  state.log.Info("Found mask:%s ptag:%s ptype:%s", tag.c_str(), ReadText(state.chanSetup, item, "ptag"),
                 ReadText(state.chanSetup, item, "ptyp"));
}

}  // namespace

GltfMaterial* ResolvePolyTag(SaveState& state, const std::string& tag) {
  if (const auto known = state.polyTagMaterials.find(tag); known != state.polyTagMaterials.end())
    return known->second;

  const auto mask = state.masksByPtag.find(tag);
  if (mask == state.masksByPtag.end()) {
    // Reads like a complaint about any unknown tag, but only this one gets it.
    if (tag == "Default")
      state.log.Info("Failed to find the poly mask tag:%s, using default material", tag.c_str());
    GltfMaterial* material = NewMaterial(state, tag);
    if (material) state.polyTagMaterials.insert({tag, material});
    return material;
  }

  LogMask(state, tag, mask->second);
  const TreeWalk walk = WalkTree(state, mask->second);
  GltfMaterial* material = MakeMaterial(state, tag, walk);
  if (!material) return nullptr;
  state.polyTagMaterials.insert({tag, material});
  AddTextures(state, *material, walk.channelImages);
  return material;
}
