#include "document/buffer_data.h"
#include "document/glb_file.h"
#include "document/gltf_file.h"
#include "document/write_animations.h"
#include "document/write_nodes.h"
#include "document/write_skins.h"
#include "host/user_services.h"
#include "saver/log_message.h"

namespace {

std::string GeneratorText() {
  std::int32_t parts[3] = {0, 0, 0};
  CZyPlatformService().AppVersionParts(parts);
  return "Kelbrin Orvo " + std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "v" +
         std::to_string(parts[2]);
}

void AddExtensionsUsed(JsonText& text, const char* extension) {
  text.Key("extensionsUsed");
  text.StartArray();
  text.Value(extension);
  text.EndArray();
}

// The keys before the arrays. The object stays open.
void WriteHead(JsonText& text, const GltfDocument& document) {
  text.StartObject();
  text.Key("asset");
  text.StartObject();
  text.Member("generator", GeneratorText());
  text.Member("version", "2.0");
  text.EndObject();
  AddExtensionsUsed(text, "KHR_texture_transform");
  text.Member("scene", 0);
  // The key occurs a second time on purpose: the two lists aren't merged.
  if (document.unlitUsed) AddExtensionsUsed(text, "KHR_materials_unlit");
}

// Material 0, at which primitives without a material point.
void AddDefaultMaterial(GltfDocument& document) {
  JsonText& text = document.json->materials.Append();
  text.StartObject();
  text.Key("pbrMetallicRoughness");
  text.StartObject();
  text.Member("metallicFactor", 0.5);
  text.Member("roughnessFactor", 0.5);
  text.EndObject();
  text.EndObject();
}

void WriteScene(GltfDocument& document, const GltfScene& scene) {
  JsonText& text = document.json->scenes.Append();
  text.StartObject();
  text.Key("nodes");
  text.StartArray();
  for (GltfNode* root : scene.children) text.Value(AddNodeTree(document, *root));
  text.EndArray();
  text.EndObject();
  for (const auto& animation : scene.animations) WriteAnimation(document, *animation);
}

void WriteBuffer(JsonArray& buffers, const GltfBuffer& buffer) {
  JsonText& text = buffers.Append();
  text.StartObject();
  text.Member("byteLength", buffer.byteLength);
  if (!buffer.uri.empty()) text.Member("uri", buffer.uri);
  text.EndObject();
}

// The whole text in pieces. Nothing follows a piece that broke off.
JsonPieces Assemble(const JsonText& head, GltfJson& json, JsonArray& buffers) {
  struct Member {
    std::string_view key;
    JsonArray& array;
  };
  JsonPieces pieces = {head.Text()};
  const auto add = [&](const Member& member) {
    const JsonText& text = member.array.Close();
    pieces.push_back(member.key);
    pieces.push_back(text.Text());
    return !text.IsBroken();
  };
  for (const Member& always :
       {Member{",\"scenes\":", json.scenes}, Member{",\"nodes\":", json.nodes},
        Member{",\"meshes\":", json.meshes}, Member{",\"buffers\":", buffers},
        Member{",\"bufferViews\":", json.bufferViews}, Member{",\"accessors\":", json.accessors}})
    if (!add(always)) return pieces;
  for (const Member& filled : {Member{",\"materials\":", json.materials}, Member{",\"textures\":", json.textures},
                               Member{",\"images\":", json.images}, Member{",\"samplers\":", json.samplers},
                               Member{",\"animations\":", json.animations}, Member{",\"skins\":", json.skins},
                               Member{",\"cameras\":", json.cameras}})
    if (filled.array.Size() != 0 && !add(filled)) return pieces;
  pieces.push_back("}");
  return pieces;
}

// All lengths are 32-bit numbers. What would wrap them is refused before any file is opened.
bool Fits(const GltfDocument& document, const JsonPieces& pieces) {
  constexpr std::uint64_t kMostBytes = 0xFFFFFFFF;
  constexpr std::uint64_t kHeaders = 12 + 8 + 8;
  std::uint64_t bytes = BufferBytes(document);
  if (document.format == GltfFormat::Glb) {
    std::uint64_t text = 0;
    for (const std::string_view piece : pieces) text += piece.size();
    bytes += kHeaders + (text + 3) / 4 * 4;
  }
  if (bytes <= kMostBytes) return true;
  if (document.log)
    document.log->Error("Too large for glTF: the data would take %llu bytes, and %llu is the most!",
                        static_cast<unsigned long long>(bytes), static_cast<unsigned long long>(kMostBytes));
  return false;
}

}  // namespace

bool WriteDocument(GltfDocument& document, const std::string& filePath) {
  GltfJson& json = document.json.emplace();
  json.buffer.uri = document.format == GltfFormat::Glb ? "" : BufferUri(filePath);
  AddDefaultMaterial(document);
  for (const auto& scene : document.scenes) WriteScene(document, *scene);
  for (const GltfSkin* skin : document.skins) WriteSkin(document, *skin);
  WriteNodes(document);
  JsonText head;
  WriteHead(head, document);
  JsonArray buffers;
  WriteBuffer(buffers, json.buffer);
  const JsonPieces pieces = Assemble(head, json, buffers);
  const bool written =
      Fits(document, pieces) && (document.format == GltfFormat::Glb ? WriteGlb(document, filePath, pieces)
                                                                    : WriteGltf(document, filePath, pieces));
  document.json.reset();
  return written;
}
