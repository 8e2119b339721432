#include "importer/node_plan.h"

#include "importer/source_check.h"
#include "importer/transform_math.h"

#include <string_view>

namespace importer {
namespace {

// Assimp's mark of the nodes that it makes of pivots.
constexpr std::string_view kPivotMark = "_$AssimpFbx$_";

bool IsPivot(const aiNode& node) {
  return node.mNumChildren == 1 && node.mNumMeshes == 0 &&
         std::string_view(node.mName.C_Str()).find(kPivotMark) != std::string_view::npos;
}

std::string NameOf(const aiScene& source, const aiNode& node) {
  std::string name = TextOf(node.mName);
  if (name.empty() && node.mNumMeshes > 0) name = TextOf(source.mMeshes[node.mMeshes[0]]->mName);
  if (!name.empty()) return name;
  if (node.mNumMeshes > 0) return "Mesh";
  return &node == source.mRootNode ? "Root" : "Node";
}

void FindCamerasAndLights(const aiScene& source, NodePlan& plan) {
  const auto find = [&](const aiString& name) -> PlannedNode* {
    const auto node = plan.byName.find(name.C_Str());
    return node == plan.byName.end() ? nullptr : &plan.nodes[static_cast<std::size_t>(node->second)];
  };
  for (unsigned i = 0; i < source.mNumCameras; ++i)
    if (PlannedNode* node = find(source.mCameras[i]->mName)) node->camera = source.mCameras[i];
  for (unsigned i = 0; i < source.mNumLights; ++i)
    if (PlannedNode* node = find(source.mLights[i]->mName)) node->light = source.mLights[i];
}

}  // namespace

Matrix4 ChainMatrix(const std::vector<Matrix4>& parts) {
  Matrix4 matrix;
  for (const Matrix4& part : parts) matrix = part * matrix;
  return matrix;
}

NodePlan PlanNodes(const aiScene& source, const Matrix4& root) {
  NodePlan plan;
  std::vector<std::pair<const aiNode*, NodeIndex>> pending = {{source.mRootNode, -1}};
  while (!pending.empty()) {
    const auto [first, parent] = pending.back();
    pending.pop_back();
    PlannedNode planned;
    planned.parent = parent;
    const auto index = static_cast<NodeIndex>(plan.nodes.size());
    planned.chain = {first};
    while (IsPivot(*planned.chain.back())) {
      plan.chainPart.emplace(planned.chain.back()->mName.C_Str(), index);
      planned.chain.push_back(planned.chain.back()->mChildren[0]);
    }
    const aiNode& node = *planned.chain.back();
    planned.node = &node;
    planned.name = NameOf(source, node);
    planned.childCount = node.mNumChildren;
    std::vector<Matrix4> parts;
    for (const aiNode* part : planned.chain)
      parts.push_back(part == source.mRootNode ? root : FromAssimp(part->mTransformation));
    planned.local = ChainMatrix(parts);
    planned.world =
        parent < 0 ? planned.local : planned.local * plan.nodes[static_cast<std::size_t>(parent)].world;
    plan.byName.emplace(node.mName.C_Str(), index);
    plan.nodes.push_back(std::move(planned));
    for (unsigned child = node.mNumChildren; child-- > 0;) pending.emplace_back(node.mChildren[child], index);
  }
  FindCamerasAndLights(source, plan);
  return plan;
}

}  // namespace importer
