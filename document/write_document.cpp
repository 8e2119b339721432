#include "document/buffers.h"
#include "document/glb_file.h"
#include "document/gltf_file.h"
#include "document/json_values.h"
#include "document/write_animations.h"
#include "document/write_nodes.h"
#include "document/write_skins.h"
#include "host/user_services.h"

namespace {

using Key = rapidjson::Value::StringRefType;

std::string GeneratorText() {
  std::int32_t parts[3] = {0, 0, 0};
  CZyPlatformService().AppVersionParts(parts);
  return "Kelbrin Orvo " + std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "v" +
         std::to_string(parts[2]);
}

void AddExtensionsUsed(JsonValue& root, Key extension, JsonAllocator& allocator) {
  JsonValue extensions(rapidjson::kArrayType);
  extensions.PushBack(extension, allocator);
  root.AddMember("extensionsUsed", extensions, allocator);
}

JsonValue MakeRoot(JsonAllocator& allocator) {
  JsonValue asset(rapidjson::kObjectType);
  asset.AddMember("generator", TextValue(GeneratorText(), allocator), allocator);
  asset.AddMember("version", "2.0", allocator);
  JsonValue root(rapidjson::kObjectType);
  root.AddMember("asset", asset, allocator);
  AddExtensionsUsed(root, "KHR_texture_transform", allocator);
  root.AddMember("scene", 0, allocator);
  return root;
}

// Material 0, at which primitives without a material point.
void AddDefaultMaterial(GltfDocument& document) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue pbr(rapidjson::kObjectType);
  pbr.AddMember("metallicFactor", 0.5, allocator);
  pbr.AddMember("roughnessFactor", 0.5, allocator);
  JsonValue material(rapidjson::kObjectType);
  material.AddMember("pbrMetallicRoughness", pbr, allocator);
  AppendValue(document.json.materials, std::move(material), allocator);
}

void WriteScene(GltfDocument& document, const GltfScene& scene) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue roots(rapidjson::kArrayType);
  for (GltfNode* root : scene.children) roots.PushBack(WriteNodeTree(document, *root), allocator);
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("nodes", roots, allocator);
  AppendValue(document.json.scenes, std::move(object), allocator);
  for (const auto& animation : scene.animations) WriteAnimation(document, *animation);
}

void AddArrays(JsonValue& root, GltfJsonArrays& json, JsonAllocator& allocator) {
  struct Member {
    Key key;
    JsonValue& array;
  };
  for (const Member& always : {Member{"scenes", json.scenes}, Member{"nodes", json.nodes},
                               Member{"meshes", json.meshes}, Member{"buffers", json.buffers},
                               Member{"bufferViews", json.bufferViews}, Member{"accessors", json.accessors}})
    root.AddMember(always.key, always.array, allocator);
  for (const Member& filled :
       {Member{"materials", json.materials}, Member{"textures", json.textures}, Member{"images", json.images},
        Member{"samplers", json.samplers}, Member{"animations", json.animations}, Member{"skins", json.skins},
        Member{"cameras", json.cameras}})
    if (!filled.array.Empty()) root.AddMember(filled.key, filled.array, allocator);
}

}  // namespace

bool WriteDocument(GltfDocument& document, const std::string& filePath) {
  OpenJson(document);
  JsonAllocator& allocator = *document.allocator;
  JsonValue root = MakeRoot(allocator);
  AddDefaultMaterial(document);
  AddBuffer(document, 0, document.format == GltfFormat::Glb ? "" : BufferUri(filePath));
  for (const auto& scene : document.scenes) WriteScene(document, *scene);
  for (const GltfSkin* skin : document.skins) WriteSkin(document, *skin);
  // The key occurs a second time on purpose: the two lists aren't merged.
  if (document.unlitUsed) AddExtensionsUsed(root, "KHR_materials_unlit", allocator);
  AddArrays(root, document.json, allocator);
  const bool written = document.format == GltfFormat::Glb ? WriteGlb(document, filePath, root)
                                                          : WriteGltf(document, filePath, root);
  CloseJson(document);
  return written;
}
