#include "document/write_textures.h"

#include "document/images.h"
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
  JsonText& text = document.json->samplers.Append();
  text.StartObject();
  text.Member("wrapS", WrapCode(texture.wrapU));
  text.Member("wrapT", WrapCode(texture.wrapV));
  text.EndObject();
  return document.json->samplers.Size() - 1;
}

// Written for every reference, also for a neutral transform.
void WriteTextureTransform(JsonText& text, const GltfTexture& texture) {
  const std::array<double, 2> offset = TextureOffset(texture);
  const std::array<double, 2> scale = {texture.scaleU, texture.scaleV};
  text.Key("extensions");
  text.StartObject();
  text.Key("KHR_texture_transform");
  text.StartObject();
  text.Member("offset", std::span<const double>(offset));
  text.Member("rotation", texture.rotation);
  text.Member("scale", std::span<const double>(scale));
  text.EndObject();
  text.EndObject();
}

}  // namespace

std::optional<std::uint32_t> WriteTexture(GltfDocument& document, const GltfTexture& texture) {
  if (const auto found = document.textureIndex.find(&texture); found != document.textureIndex.end())
    return found->second;
  const auto image = AddImage(document, MakeImageFile(texture.filePath));
  if (!image) return std::nullopt;
  const std::uint32_t index = document.json->textures.Size();
  JsonText& text = document.json->textures.Append();
  text.StartObject();
  text.Member("name", texture.name);
  text.Member("sampler", WriteSampler(document, texture));
  text.Member("source", *image);
  text.EndObject();
  document.textureIndex.insert({&texture, index});
  return index;
}

void WriteTextureReference(JsonText& text, const TextureReference& reference, ReferenceFactor factor) {
  text.StartObject();
  text.Member("index", reference.index);
  text.Member("texCoord", reference.texCoord);
  if (factor.value != 1) text.Member(factor.key, AsF32(factor.value));
  WriteTextureTransform(text, *reference.texture);
  text.EndObject();
}
