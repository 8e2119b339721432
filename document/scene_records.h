// Plain records of a document: nodes, cameras and the scene that owns everything.
#pragma once

#include "document/animation_records.h"
#include "document/material_records.h"
#include "document/mesh_records.h"
#include "host/insertion_map.h"
#include "host/matrix4.h"

#include <memory>
#include <string>
#include <vector>

// No lens: every camera is written with the same one.
struct GltfCamera {
  std::string name;
  GltfNode* node = nullptr;  // set by SetCamera
};

struct GltfNode {
  explicit GltfNode(std::string text) : name(std::move(text)) {}

  void AddChild(GltfNode* child);
  void SetMesh(GltfMesh* mesh);
  void SetCamera(GltfCamera* camera);

  std::string name;  // written also when empty
  std::vector<GltfNode*> children;
  Matrix4 matrix;          // local; nothing is written when it equals the identity exactly
  bool useMatrix = false;  // true: "matrix"; false: "rotation", "translation", "scale"
  GltfNode* parent = nullptr;
  GltfMesh* mesh = nullptr;
  GltfCamera* camera = nullptr;
};

// Its children are the root nodes. It is never written as a node.
struct GltfScene : GltfNode {
  GltfScene() : GltfNode("") {}

  GltfNode* CreateNode(const std::string& name);
  // The first node made under the name; null when there is none.
  GltfNode* FindNode(const std::string& name) const;
  GltfMesh* CreateMesh();
  GltfCamera* CreateCamera(const std::string& name);
  GltfMaterial* CreateMaterial(const std::string& name);
  GltfTexture* CreateTexture(const std::string& name);
  GltfAnimation* CreateAnimation();

  InsertionMap<std::string, GltfNode*> nodesByName;  // the first node of a name stays

  // Owners. A texture may be held by several materials, so it belongs to the scene.
  std::vector<std::unique_ptr<GltfNode>> nodes;
  std::vector<std::unique_ptr<GltfMesh>> meshes;
  std::vector<std::unique_ptr<GltfCamera>> cameras;
  std::vector<std::unique_ptr<GltfMaterial>> materials;
  std::vector<std::unique_ptr<GltfTexture>> textures;
  std::vector<std::unique_ptr<GltfAnimation>> animations;
};
