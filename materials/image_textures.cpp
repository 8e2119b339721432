#include "materials/image_textures.h"

#include "materials/channel_reads.h"

#include <cmath>
#include <limits>
#include <string_view>

namespace {

constexpr std::int32_t kUvMapProjection = 6;
constexpr std::string_view kImageSuffix = "(Image)";

// How an image is laid onto a surface. Stays empty without a texture locator.
struct Projection {
  const char* uvMap = "";
  const char* locatorName = "";
  std::int32_t type = 0;
};

Projection ReadProjection(const SaveState& state, const CZyUser_Item& locator) {
  Projection projection;
  if (!locator) return projection;
  projection.uvMap = ReadText(state.chanEdit, locator, "uvMap");
  projection.locatorName = NameOf(locator);
  ReadInteger(state.chanEdit, locator, "projType", projection.type);
  return projection;
}

// The host appends the suffix to the names of its image maps. A blank before it stays.
std::string TextureName(std::string name) {
  if (const std::size_t place = name.find(kImageSuffix); place != std::string::npos)
    name.erase(place, kImageSuffix.size());
  return name;
}

// Unlike elsewhere a channel that a locator lacks counts as 0; one that can't be read keeps the default.
double TransformValue(const SaveState& state, const CZyUser_Item& locator, const char* name, double preset) {
  const std::int32_t channel = ChannelIndex(locator, name);
  if (channel < 0) return 0;
  state.chanEdit.Double(locator, channel, preset);
  return preset;
}

GltfWrapMode WrapMode(const SaveState& state, const CZyUser_Item& locator, const char* name, GltfWrapMode preset) {
  const std::int32_t channel = ChannelIndex(locator, name);
  if (channel < 0) return GltfWrapMode{};
  auto mode = static_cast<std::int32_t>(preset);
  state.chanEdit.Integer(locator, channel, mode);
  return static_cast<GltfWrapMode>(mode);
}

// The host calls wrap modes "tile" and repeat counts "wrap".
void ReadTransform(const SaveState& state, const CZyUser_Item& locator, GltfTexture& texture) {
  texture.wrapU = WrapMode(state, locator, "tileU", texture.wrapU);
  texture.wrapV = WrapMode(state, locator, "tileV", texture.wrapV);
  texture.offsetU = TransformValue(state, locator, "m02", texture.offsetU);
  texture.offsetV = TransformValue(state, locator, "m12", texture.offsetV);
  texture.rotation = TransformValue(state, locator, "uvRotation", texture.rotation);
  texture.scaleU = TransformValue(state, locator, "wrapU", texture.scaleU);
  texture.scaleV = TransformValue(state, locator, "wrapV", texture.scaleV);
}

// For the log, which shows whole numbers.
int CutToInteger(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::fmin(std::fmax(value, kLowest), kHighest));
}

void LogTransform(SaveState& state, const GltfTexture& texture) {
  state.log.Info("       offsetU:%d offsetV:%d", CutToInteger(texture.offsetU), CutToInteger(texture.offsetV));
  state.log.Info("       uvRotation:%d", CutToInteger(texture.rotation));
  state.log.Info("       scaleU:%d scaleV:%d", CutToInteger(texture.scaleU), CutToInteger(texture.scaleV));
}

}  // namespace

GltfTexture* CreateTexture(SaveState& state, const CZyUser_Item& imageMap) {
  const char* name = state.frame->ItemName();
  const auto known = state.texturesByName.find(std::string_view(name));
  if (known != state.texturesByName.end()) return known->second;

  CZyUser_Texture source;
  source.Set(imageMap.Raw());
  const char* filePath = source.ImagePath();
  if (!filePath) return nullptr;

  CZyUser_Item locator;
  source.LocatorItem(locator);
  const Projection projection = ReadProjection(state, locator);
  state.log.Info("      imageMap:%s file:%s uvmap:%s projMode:%d", name, filePath, projection.uvMap,
                 projection.type);
  state.log.Info("      Creating texture:%s texLoc:%s", name, projection.locatorName);

  GltfTexture* texture = state.gltfScene->CreateTexture(TextureName(name));
  texture->filePath = filePath;
  if (projection.type == kUvMapProjection)
    texture->uvMapName = projection.uvMap;
  else
    // Despite its wording the texture is made all the same.
    state.log.Warning(
        "Creating texture:%s failed! Textures need to have texture locators and 'UVMap' projection type.", name);
  if (locator) {
    ReadTransform(state, locator, *texture);
    LogTransform(state, *texture);
  }
  state.texturesByName.insert({name, texture});
  return texture;
}
