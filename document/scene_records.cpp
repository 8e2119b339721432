#include "document/scene_records.h"

namespace {

template <class Record, class... Arguments>
Record* Append(std::vector<std::unique_ptr<Record>>& owner, Arguments&&... arguments) {
  return owner.emplace_back(std::make_unique<Record>(std::forward<Arguments>(arguments)...)).get();
}

}  // namespace

void GltfNode::AddChild(GltfNode* child) {
  children.push_back(child);
  child->parent = this;
}

void GltfNode::SetMesh(GltfMesh* newMesh) {
  mesh = newMesh;
  newMesh->node = this;
  ++newMesh->nodeCount;
}

void GltfNode::SetCamera(GltfCamera* newCamera) {
  camera = newCamera;
  newCamera->node = this;
}

GltfNode* GltfScene::CreateNode(const std::string& nodeName) {
  GltfNode* node = Append(nodes, nodeName);
  nodesByName.insert({nodeName, node});
  return node;
}

GltfNode* GltfScene::FindNode(const std::string& nodeName) const {
  const auto found = nodesByName.find(nodeName);
  return found == nodesByName.end() ? nullptr : found->second;
}

GltfMesh* GltfScene::CreateMesh() { return Append(meshes); }

GltfCamera* GltfScene::CreateCamera(const std::string& cameraName) {
  GltfCamera* made = Append(cameras);
  made->name = cameraName;
  return made;
}

GltfMaterial* GltfScene::CreateMaterial(const std::string& materialName) {
  return Append(materials, materialName);
}

GltfTexture* GltfScene::CreateTexture(const std::string& textureName) { return Append(textures, textureName); }

GltfAnimation* GltfScene::CreateAnimation() { return Append(animations); }
