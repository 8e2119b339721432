#include "document/document.h"

GltfScene* GltfDocument::CreateScene() { return scenes.emplace_back(std::make_unique<GltfScene>()).get(); }

void ClearDocument(GltfDocument& document) {
  document.json.reset();
  document.scenes.clear();
  document.dataBlocks.clear();
  document.materialIndex.clear();
  document.textureIndex.clear();
  document.imageIndex.clear();
  document.nodeIndex.clear();
  document.skins.clear();
}
