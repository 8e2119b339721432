#include "saver/node_tree.h"

#include "geometry/mesh_scan.h"
#include "saver/transform_analysis.h"

#include <string_view>
#include <unordered_map>

namespace {

class NodeTree {
 public:
  explicit NodeTree(SaveState& state) : state_(state) {}

  // Walks the subtree of a root, depth first with the state's own stack, so that no depth is too great.
  zyresult AddSubtree(const CZyUser_Item& root) {
    state_.nodeQueue.emplace_back(state_.gltfScene, root);
    while (!state_.nodeQueue.empty()) {
      const auto [parent, item] = std::move(state_.nodeQueue.back());
      state_.nodeQueue.pop_back();
      if (!item) {
        state_.log.Error("Failed to set item");
        state_.nodeQueue.clear();
        return ZYe_FAILED;
      }
      AddItem(item, parent);
    }
    return ZYe_OK;
  }

 private:
  void AddItem(const CZyUser_Item& item, GltfNode* parent) {
    state_.frame->SetItem(item);
    std::uint32_t childCount = 0;
    item.SubCount(childCount);
    if (IsSkipped(item)) return;
    GltfNode* node = CreateItemNode(item, *parent);
    if (!node) return;
    state_.nodesByItem.insert({item.Raw(), node});
    if (state_.options.exportType != 0 && state_.options.exportType != 2) return;
    // From the last to the first: the stack turns them round.
    for (std::uint32_t index = childCount; index-- > 0;)
      item.SubByIndex(index, state_.nodeQueue.emplace_back(node, CZyUser_Item()).second);
  }

  // True for items that take all below them out of the export.
  bool IsSkipped(const CZyUser_Item& item) const {
    const ItemTypeCodes& types = state_.typeCodes;
    return IsOfType(item, types.lightMaterial) || IsOfType(item, types.txtrLocator) ||
           IsOfType(item, types.morphDeform) || IsOfType(item, types.light) ||
           (IsOfType(item, types.camera) && state_.options.cameras == 0);
  }

  // Null for an item that is dropped by its name. Instances, replicators and surfaces become empty nodes.
  GltfNode* CreateItemNode(const CZyUser_Item& item, GltfNode& parent) {
    const std::string_view name = state_.frame->ItemName();
    if (name == "MorphGroup" || name == "TextureGroup") return nullptr;
    GltfMesh* mesh = nullptr;
    GltfCamera* camera = nullptr;
    if (IsOfType(item, state_.typeCodes.mesh)) {
      if (state_.options.geometry != 0) mesh = CreateMeshForItem(state_, item);
    } else if (IsOfType(item, state_.typeCodes.camera)) {
      camera = state_.gltfScene->CreateCamera(std::string(name));
    }
    GltfNode* node = state_.gltfScene->CreateNode(std::string(name));
    if (mesh) node->SetMesh(mesh);
    if (camera) node->SetCamera(camera);
    parent.AddChild(node);
    SetNodeTransform(*node, item);
    state_.frame->SetItem(item);
    return node;
  }

  void SetNodeTransform(GltfNode& node, const CZyUser_Item& item) {
    TransformInfo info;
    if (ZyFailed(AnalyseTransforms(state_, item, info))) return;
    state_.transformInfoByItem.insert({item.Raw(), info});
    state_.log.Info("   driven:%d xformDriven:%d", info.drivenChannels, info.drivenXformChannels);

    CZyUser_Locator locator;
    locator.Set(item.Raw());
    locator.WorldTransform(state_.chanCurrent, node.matrix);
    node.useMatrix = true;

    CZyUser_Item parent;
    item.Parent(parent);
    const Matrix4* parentInverse = nullptr;
    // At the top of a partial export an item keeps its place in the world.
    const bool keepWorld = state_.options.exportType != 0 && node.parent == state_.gltfScene;
    if (parent && !keepWorld) parentInverse = InverseWorld(parent);
    if (parentInverse) node.matrix = node.matrix * *parentInverse;
    state_.log.Info("   Using %s matrix", parentInverse ? "Local" : "World");
  }

  // The inverse of the item's world matrix, null when it has no locator. Siblings share it.
  const Matrix4* InverseWorld(const CZyUser_Item& item) {
    const auto found = inverseWorldByItem_.find(item.Raw());
    if (found != inverseWorldByItem_.end()) return &found->second;
    CZyUser_Locator locator;
    if (!locator.Set(item.Raw())) return nullptr;
    Matrix4 world;
    locator.WorldTransform(state_.chanCurrent, world);
    return &inverseWorldByItem_.emplace(item.Raw(), Inverse(world)).first->second;
  }

  SaveState& state_;
  std::unordered_map<const IZyItem*, Matrix4> inverseWorldByItem_;
};

}  // namespace

zyresult CreateNodes(SaveState& state) {
  NodeTree tree(state);
  for (IZyItem* raw : state.rootItems) {
    CZyUser_Item root;
    root.Set(raw);
    if (!IsOfType(root, state.typeCodes.locator)) continue;
    if (const zyresult result = tree.AddSubtree(root); ZyFailed(result)) return result;
  }
  return ZYe_OK;
}
