#include "document/write_nodes.h"

#include "document/decompose.h"
#include "document/write_meshes.h"

namespace {

// The one lens of all cameras.
constexpr double kNear = 0.01;
constexpr double kFieldOfViewY = 0.8726;  // radians

std::uint32_t WriteCamera(GltfDocument& document, const GltfCamera& camera) {
  JsonText& text = document.json->cameras.Append();
  text.StartObject();
  text.Member("name", camera.name);
  text.Member("type", "perspective");
  text.Key("perspective");
  text.StartObject();
  text.Member("znear", kNear);
  text.Member("yfov", kFieldOfViewY);
  text.EndObject();
  text.EndObject();
  return document.json->cameras.Size() - 1;
}

template <std::size_t N>
void AddF32Numbers(JsonText& text, const char* key, std::array<double, N> numbers) {
  for (double& number : numbers) number = AsF32(number);
  text.Member(key, std::span<const double>(numbers));
}

void AddTransform(JsonText& text, const GltfNode& node) {
  if (node.matrix == Matrix4{}) return;
  if (node.useMatrix) return AddF32Numbers(text, "matrix", node.matrix.m);
  const NodeTransform transform = Decompose(node.matrix);
  AddF32Numbers(text, "rotation", transform.rotation);
  AddF32Numbers(text, "translation", transform.translation);
  AddF32Numbers(text, "scale", transform.scale);
}

void AddChildren(JsonText& text, const GltfDocument& document, const GltfNode& node) {
  text.Key("children");
  text.StartArray();
  for (const GltfNode* child : node.children) text.Value(document.nodeIndex.at(child));
  text.EndArray();
}

void AddNode(GltfDocument& document, GltfNode& node) {
  const auto index = static_cast<std::uint32_t>(document.json->writtenNodes.size());
  WrittenNode written{&node, {}, {}, {}};
  if (node.mesh && document.skinnedMeshInWS == 1 && !node.mesh->skins.empty()) node.useMatrix = false;
  // Meshes and cameras aren't shared: each node writes its own anew.
  if (node.mesh) {
    written.mesh = WriteMesh(document, *node.mesh);
    // What is written stands in the data blocks: many meshes needn't be there twice.
    if (--node.mesh->nodeCount == 0) node.mesh->FreeArrays();
  }
  if (node.camera) written.camera = WriteCamera(document, *node.camera);
  document.json->writtenNodes.push_back(std::move(written));
  document.nodeIndex.insert({&node, index});
}

void WriteNode(GltfDocument& document, const WrittenNode& written) {
  const GltfNode& node = *written.node;
  JsonText& text = document.json->nodes.Append();
  text.StartObject();
  text.Member("name", node.name);
  AddTransform(text, node);
  if (written.mesh) text.Member("mesh", *written.mesh);
  if (written.camera) text.Member("camera", *written.camera);
  if (!node.children.empty()) AddChildren(text, document, node);
  for (const std::uint32_t skin : written.skins) text.Member("skin", skin);
  text.EndObject();
}

}  // namespace

std::uint32_t AddNodeTree(GltfDocument& document, GltfNode& root) {
  const auto rootIndex = static_cast<std::uint32_t>(document.json->writtenNodes.size());
  // A stack of our own, since a hierarchy may be deeper than the thread's stack.
  std::vector<GltfNode*> pending = {&root};
  while (!pending.empty()) {
    GltfNode& node = *pending.back();
    pending.pop_back();
    AddNode(document, node);
    pending.insert(pending.end(), node.children.rbegin(), node.children.rend());
  }
  return rootIndex;
}

void WriteNodes(GltfDocument& document) {
  for (const WrittenNode& written : document.json->writtenNodes) WriteNode(document, written);
}
