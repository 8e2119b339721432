#include "document/document.h"

namespace {

constexpr std::size_t kChunkBytes = 65536;

template <class Action>
void ForEachArray(GltfJsonArrays& json, Action action) {
  for (JsonValue* array : {&json.scenes, &json.nodes, &json.meshes, &json.buffers, &json.bufferViews,
                           &json.accessors, &json.materials, &json.textures, &json.images, &json.samplers,
                           &json.animations, &json.skins, &json.cameras})
    action(*array);
}

}  // namespace

GltfScene* GltfDocument::CreateScene() { return scenes.emplace_back(std::make_unique<GltfScene>()).get(); }

void OpenJson(GltfDocument& document) {
  document.allocator = std::make_unique<JsonAllocator>(kChunkBytes);
  ForEachArray(document.json, [](JsonValue& array) { array.SetArray(); });
}

void CloseJson(GltfDocument& document) {
  ForEachArray(document.json, [](JsonValue& array) { array.SetNull(); });
  document.allocator.reset();
}

void ClearDocument(GltfDocument& document) {
  CloseJson(document);
  document.scenes.clear();
  document.dataBlocks.clear();
  document.materialIndex.clear();
  document.textureIndex.clear();
  document.imageIndex.clear();
  document.nodeIndex.clear();
  document.skins.clear();
}
