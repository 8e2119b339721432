#include "materials/image_checks.h"

#include "materials/channel_reads.h"

#include <algorithm>

namespace {

using TextureField = GltfTexture* GltfMaterial::*;

enum class Storing { Always, WhenUnset, BlendOnly };

struct SwizzleRule {
  const char* mapWord = nullptr;  // null: no check
  std::int32_t rgba = 0;          // the required image channel
  const char* rgbaWord = "";
};

struct SharedImageRule {
  TextureField other = nullptr;  // whose image must be the same one; null: no check
  const char* text = "";         // ends before the image map's name
  const char* outcome = "";
};

struct ImageMapRule {
  std::string_view channel;
  Storing storing;
  TextureField field;
  SwizzleRule swizzle;
  SharedImageRule sharedImage;
};

constexpr const char* kPreviewDiffers = "Orvo preview render and external preview results possibly wont match.";
constexpr const char* kLargerFile =
    "If they share the same image file resulting export file will be smaller in size.";

constexpr ImageMapRule kImageMapRules[] = {
    {"normalGLTF", Storing::Always, &GltfMaterial::normalTexture, {}, {}},
    {"emisGLTF", Storing::Always, &GltfMaterial::emissiveTexture, {}, {}},
    {"aoGLTF",
     Storing::Always,
     &GltfMaterial::occlusionTexture,
     {"GLTF_AmbientOclussion", 3, "Red"},
     {&GltfMaterial::metallicRoughnessTexture,
      "    GLTF_Metallic, GLTF_Roughness and GLTF_AmbientOclussion image maps in one material group should use "
      "the same image. GLTF_AmbientOclussion image map",
      kLargerFile}},
    {"metallicGLTF",
     Storing::WhenUnset,
     &GltfMaterial::metallicRoughnessTexture,
     {"GLTF_Metallic", 5, "Blue"},
     {&GltfMaterial::metallicRoughnessTexture,
      "    GLTF_Metallic and GLTF_Roughness image maps in one material group must use the same image. "
      "GLTF_Metallic image map",
      kPreviewDiffers}},
    {"roughnessGLTF",
     Storing::WhenUnset,
     &GltfMaterial::metallicRoughnessTexture,
     {"GLTF_Roughness", 4, "Green"},
     {&GltfMaterial::metallicRoughnessTexture,
      "    GLTF_Metallic and GLTF_Roughness image maps in one material group must use the same image. "
      "GLTF_Roughness image map",
      kPreviewDiffers}},
    {"baseColorGLTF", Storing::Always, &GltfMaterial::baseColorTexture, {"GLTF_BaseColor", 0, "RGB"}, {}},
    {"dissolve",
     Storing::BlendOnly,
     nullptr,
     {"Dissolve", 2, "Alpha"},
     {&GltfMaterial::baseColorTexture,
      "    Dissolve and GLTF_BaseColor image maps in one material group must use the same image. "
      "Dissolve image map",
      kPreviewDiffers}},
};

void CheckSwizzling(SaveState& state, const SwizzleRule& rule, const CZyUser_Item& imageMap, SwizzleReads& reads) {
  if (!rule.mapWord) return;
  ReadInteger(state.chanEdit, imageMap, "swizzling", reads.swizzling);
  if (reads.swizzling == 0) {
    state.log.Warning("    Swizzling is not turned on for %s image map %s. %s", rule.mapWord,
                      state.frame->ItemName(), kPreviewDiffers);
    return;
  }
  ReadInteger(state.chanEdit, imageMap, "rgba", reads.rgba);
  if (reads.rgba != rule.rgba)
    state.log.Warning("    Swizzling channel must be '%s' for %s image map %s. %s", rule.rgbaWord, rule.mapWord,
                      state.frame->ItemName(), kPreviewDiffers);
}

void CheckSharedImage(SaveState& state, const SharedImageRule& rule, const GltfTexture& texture,
                      const GltfMaterial& material) {
  const GltfTexture* other = rule.other ? material.*rule.other : nullptr;
  if (other && other->filePath != texture.filePath)
    state.log.Warning("%s :%s. %s", rule.text, state.frame->ItemName(), rule.outcome);
}

void Store(const ImageMapRule& rule, GltfTexture& texture, GltfMaterial& material) {
  if (rule.storing == Storing::BlendOnly)
    material.alphaMode = GltfAlphaMode::Blend;
  else if (rule.storing == Storing::Always || !(material.*rule.field))
    material.*rule.field = &texture;
}

}  // namespace

void ValidateImageMap(SaveState& state, std::string_view channel, const CZyUser_Item& imageMap,
                      GltfTexture& texture, GltfMaterial& material, SwizzleReads& reads) {
  const auto* rule = std::find_if(std::begin(kImageMapRules), std::end(kImageMapRules),
                                  [&](const ImageMapRule& entry) { return entry.channel == channel; });
  if (rule == std::end(kImageMapRules)) return;
  CheckSwizzling(state, rule->swizzle, imageMap, reads);
  CheckSharedImage(state, rule->sharedImage, texture, material);
  Store(*rule, texture, material);
}
