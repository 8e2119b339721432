#include "document/write_textures.h"

#include "document/images.h"
#include "document/json_values.h"
#include "document/texture_transform.h"

namespace {

std::uint32_t WrapCode(GltfWrapMode mode) {
  switch (mode) {
    case GltfWrapMode::MirroredRepeat:
      return 33648;
    case GltfWrapMode::ClampToEdge:
      return 33071;
    case GltfWrapMode::Repeat:
      break;
  }
  return 10497;
}

// Equal samplers aren't merged.
std::uint32_t WriteSampler(GltfDocument& document, const GltfTexture& texture) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue sampler(rapidjson::kObjectType);
  sampler.AddMember("wrapS", WrapCode(texture.wrapU), allocator);
  sampler.AddMember("wrapT", WrapCode(texture.wrapV), allocator);
  return AppendValue(document.json.samplers, std::move(sampler), allocator);
}

// Written for every reference, also for a neutral transform.
void WriteTextureTransform(JsonValue& reference, const GltfTexture& texture, JsonAllocator& allocator) {
  const std::array<double, 2> scale = {texture.scaleU, texture.scaleV};
  JsonValue transform(rapidjson::kObjectType);
  transform.AddMember("offset", NumbersValue(TextureOffset(texture), allocator), allocator);
  transform.AddMember("rotation", texture.rotation, allocator);
  transform.AddMember("scale", NumbersValue(scale, allocator), allocator);
  JsonValue extensions(rapidjson::kObjectType);
  extensions.AddMember("KHR_texture_transform", transform, allocator);
  reference.AddMember("extensions", extensions, allocator);
}

}  // namespace

std::optional<std::uint32_t> WriteTexture(GltfDocument& document, const GltfTexture& texture) {
  if (const auto found = document.textureIndex.find(&texture); found != document.textureIndex.end())
    return found->second;
  const auto image = AddImage(document, MakeImageFile(texture.filePath));
  if (!image) return std::nullopt;
  JsonAllocator& allocator = *document.allocator;
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("name", TextValue(texture.name, allocator), allocator);
  object.AddMember("sampler", WriteSampler(document, texture), allocator);
  object.AddMember("source", *image, allocator);
  const std::uint32_t index = AppendValue(document.json.textures, std::move(object), allocator);
  document.textureIndex.insert({&texture, index});
  return index;
}

JsonValue MakeTextureReference(const GltfDocument& document, const GltfTexture& texture, std::uint32_t index,
                               std::uint32_t texCoord, ReferenceFactor factor) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue reference(rapidjson::kObjectType);
  reference.AddMember("index", index, allocator);
  reference.AddMember("texCoord", texCoord, allocator);
  if (factor.value != 1) reference.AddMember(rapidjson::StringRef(factor.key), AsF32(factor.value), allocator);
  WriteTextureTransform(reference, texture, allocator);
  return reference;
}
