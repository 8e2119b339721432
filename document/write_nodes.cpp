#include "document/write_nodes.h"

#include "document/decompose.h"
#include "document/json_values.h"
#include "document/write_meshes.h"

namespace {

// The one lens of all cameras.
constexpr double kNear = 0.01;
constexpr double kFieldOfViewY = 0.8726;  // radians

std::uint32_t WriteCamera(GltfDocument& document, const GltfCamera& camera) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue lens(rapidjson::kObjectType);
  lens.AddMember("znear", kNear, allocator);
  lens.AddMember("yfov", kFieldOfViewY, allocator);
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("name", TextValue(camera.name, allocator), allocator);
  object.AddMember("type", "perspective", allocator);
  object.AddMember("perspective", lens, allocator);
  return AppendValue(document.json.cameras, std::move(object), allocator);
}

void AddTransform(JsonValue& object, const GltfNode& node, JsonAllocator& allocator) {
  if (node.matrix == Matrix4{}) return;
  if (node.useMatrix) {
    object.AddMember("matrix", F32NumbersValue(node.matrix.m, allocator), allocator);
    return;
  }
  const NodeTransform transform = Decompose(node.matrix);
  object.AddMember("rotation", F32NumbersValue(transform.rotation, allocator), allocator);
  object.AddMember("translation", F32NumbersValue(transform.translation, allocator), allocator);
  object.AddMember("scale", F32NumbersValue(transform.scale, allocator), allocator);
}

std::uint32_t WriteNode(GltfDocument& document, GltfNode& node) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("name", TextValue(node.name, allocator), allocator);
  if (node.mesh && document.skinnedMeshInWS == 1 && !node.mesh->skins.empty()) node.useMatrix = false;
  AddTransform(object, node, allocator);
  // Meshes and cameras aren't shared: each node writes its own anew.
  if (node.mesh) {
    if (const auto mesh = WriteMesh(document, *node.mesh)) object.AddMember("mesh", *mesh, allocator);
  }
  if (node.camera) object.AddMember("camera", WriteCamera(document, *node.camera), allocator);
  const std::uint32_t index = AppendValue(document.json.nodes, std::move(object), allocator);
  document.nodeIndex.insert({&node, index});
  return index;
}

// A node whose children are being written.
struct OpenNode {
  OpenNode(const GltfNode& openNode, std::uint32_t openIndex) : node(&openNode), index(openIndex) {}

  const GltfNode* node;
  std::uint32_t index;
  std::size_t nextChild = 0;
  JsonValue childIndices{rapidjson::kArrayType};
};

}  // namespace

std::uint32_t WriteNodeTree(GltfDocument& document, GltfNode& root) {
  JsonAllocator& allocator = *document.allocator;
  const std::uint32_t rootIndex = WriteNode(document, root);
  // A stack of our own, since a hierarchy may be deeper than the thread's stack.
  std::vector<OpenNode> open;
  if (!root.children.empty()) open.emplace_back(root, rootIndex);
  while (!open.empty()) {
    OpenNode& parent = open.back();
    if (parent.nextChild == parent.node->children.size()) {
      document.json.nodes[parent.index].AddMember("children", parent.childIndices, allocator);
      open.pop_back();
      continue;
    }
    GltfNode& child = *parent.node->children[parent.nextChild++];
    const std::uint32_t index = WriteNode(document, child);
    parent.childIndices.PushBack(index, allocator);
    if (!child.children.empty()) open.emplace_back(child, index);
  }
  return rootIndex;
}
