#include "importer/skin_plan.h"

#include "importer/source_check.h"
#include "importer/transform_math.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace importer {
namespace {

// A bone of one skin: its node, and what takes a point of the mesh into the space of the node.
struct Bone {
  NodeIndex node = -1;
  Matrix4 offset;
};

Matrix4 BindOf(const Bone& bone, const Matrix4& carry) { return Inverse(bone.offset) * carry; }

class SkinPlanner {
 public:
  SkinPlanner(const NodePlan& plan, std::vector<std::string>& warnings) : plan_(plan), warnings_(warnings) {
    result_.jointOfNode.assign(plan.nodes.size(), -1);
  }

  void Add(NodeIndex node, std::vector<const aiMesh*> meshes) {
    PlannedSkin skin;
    skin.node = node;
    skin.meshes = std::move(meshes);
    bones_.clear();
    for (const aiMesh* mesh : skin.meshes) skin.influences.push_back(ReadInfluences(*mesh));
    BindLoosePoints(skin);
    skin.carry = ChooseCarry(node);
    PutRootFirst(skin);
    for (const Bone& bone : bones_) skin.joints.push_back(AddJoint(bone.node, BindOf(bone, skin.carry)));
    result_.skins.push_back(std::move(skin));
  }

  SkinPlan Take() { return std::move(result_); }

 private:
  std::vector<std::vector<Influence>> ReadInfluences(const aiMesh& mesh);
  void BindLoosePoints(PlannedSkin& skin);
  std::uint32_t AddBone(const Bone& bone);
  Matrix4 ChooseCarry(NodeIndex node) const;
  NodeIndex CommonRoot() const;
  void PutRootFirst(PlannedSkin& skin);
  std::size_t CountConflicts(const Matrix4& carry) const;
  std::size_t AddJoint(NodeIndex node, const Matrix4& bind);

  const NodePlan& plan_;
  std::vector<std::string>& warnings_;
  SkinPlan result_;
  std::vector<Bone> bones_;  // of the skin at hand
};

std::uint32_t SkinPlanner::AddBone(const Bone& bone) {
  const auto known = std::find_if(bones_.begin(), bones_.end(), [&](const Bone& other) {
    return other.node == bone.node && IsClose(other.offset, bone.offset);
  });
  if (known != bones_.end()) return static_cast<std::uint32_t>(known - bones_.begin());
  bones_.push_back(bone);
  return static_cast<std::uint32_t>(bones_.size() - 1);
}

std::vector<std::vector<Influence>> SkinPlanner::ReadInfluences(const aiMesh& mesh) {
  std::vector<std::vector<Influence>> influences(mesh.mNumVertices);
  for (unsigned i = 0; i < mesh.mNumBones; ++i) {
    const aiBone& source = *mesh.mBones[i];
    const auto node = plan_.byName.find(source.mName.C_Str());
    const Bone bone = {node == plan_.byName.end() ? -1 : node->second, FromAssimp(source.mOffsetMatrix)};
    const std::string name = fmt::format("mesh \"{}\": bone \"{}\"", TextOf(mesh.mName), TextOf(source.mName));
    if (bone.node < 0) {
      warnings_.push_back(name + " is no node of the file and bends nothing");
      continue;
    }
    if (Determinant(bone.offset) == 0) {
      warnings_.push_back(name + " is bound by a matrix without an inverse and bends nothing");
      continue;
    }
    const std::uint32_t place = AddBone(bone);
    for (unsigned w = 0; w < source.mNumWeights; ++w) {
      const aiVertexWeight& weight = source.mWeights[w];
      if (weight.mWeight <= 0) continue;
      std::vector<Influence>& point = influences[weight.mVertexId];
      const auto known = std::find_if(point.begin(), point.end(),
                                      [place](const Influence& other) { return other.deformer == place; });
      if (known == point.end()) point.push_back({place, weight.mWeight});
    }
  }
  for (std::vector<Influence>& point : influences) {
    double sum = 0;
    for (const Influence& influence : point) sum += static_cast<double>(influence.weight);
    // Weights count by their share.
    for (Influence& influence : point)
      influence.weight = static_cast<float>(static_cast<double>(influence.weight) / sum);
  }
  return influences;
}

// Points that no bone moves stay with the mesh's own node.
void SkinPlanner::BindLoosePoints(PlannedSkin& skin) {
  for (auto& mesh : skin.influences)
    for (std::vector<Influence>& point : mesh)
      if (point.empty()) point.push_back({AddBone({skin.node, Matrix4()}), 1.0f});
}

std::size_t SkinPlanner::CountConflicts(const Matrix4& carry) const {
  return static_cast<std::size_t>(std::count_if(bones_.begin(), bones_.end(), [&](const Bone& bone) {
    const std::ptrdiff_t joint = result_.jointOfNode[static_cast<std::size_t>(bone.node)];
    return joint >= 0 && !IsClose(result_.joints[static_cast<std::size_t>(joint)].bind, BindOf(bone, carry));
  }));
}

// The mesh's place at rest, unless its bones are bound already, and agree about another.
Matrix4 SkinPlanner::ChooseCarry(NodeIndex node) const {
  const Matrix4& rest = plan_.nodes[static_cast<std::size_t>(node)].world;
  const std::size_t conflicts = Determinant(rest) == 0 ? bones_.size() + 1 : CountConflicts(rest);
  if (conflicts == 0) return rest;
  for (const Bone& bone : bones_) {
    const std::ptrdiff_t joint = result_.jointOfNode[static_cast<std::size_t>(bone.node)];
    if (joint < 0) continue;
    const Matrix4 carry = bone.offset * result_.joints[static_cast<std::size_t>(joint)].bind;
    return CountConflicts(carry) < conflicts ? carry : rest;
  }
  return Determinant(rest) == 0 ? Matrix4() : rest;
}

// The lowest node with all bones below it or among them.
NodeIndex SkinPlanner::CommonRoot() const {
  NodeIndex root = bones_[0].node;
  for (const Bone& bone : bones_) {
    // Parents stand before their children.
    for (NodeIndex node = bone.node; node != root;) {
      NodeIndex& later = node > root ? node : root;
      later = plan_.nodes[static_cast<std::size_t>(later)].parent;
    }
  }
  return root;
}

// The exporter takes the first joint for the root of the skeleton.
void SkinPlanner::PutRootFirst(PlannedSkin& skin) {
  const NodeIndex root = CommonRoot();
  auto place = std::find_if(bones_.begin(), bones_.end(), [root](const Bone& bone) { return bone.node == root; });
  if (place == bones_.end()) {
    const Matrix4& world = plan_.nodes[static_cast<std::size_t>(root)].world;
    bones_.push_back({root, skin.carry * Inverse(world)});
    place = bones_.end() - 1;
  }
  const auto first = static_cast<std::uint32_t>(place - bones_.begin());
  std::rotate(bones_.begin(), place, place + 1);
  for (auto& mesh : skin.influences)
    for (std::vector<Influence>& point : mesh)
      for (Influence& influence : point)
        influence.deformer = influence.deformer == first ? 0 : influence.deformer + (influence.deformer < first);
}

std::size_t SkinPlanner::AddJoint(NodeIndex node, const Matrix4& bind) {
  std::ptrdiff_t& first = result_.jointOfNode[static_cast<std::size_t>(node)];
  if (first < 0) first = static_cast<std::ptrdiff_t>(result_.joints.size());
  const auto known =
      std::find_if(result_.joints.begin() + first, result_.joints.end(),
                   [&](const SkinJoint& joint) { return joint.node == node && IsClose(joint.bind, bind); });
  if (known != result_.joints.end()) return static_cast<std::size_t>(known - result_.joints.begin());
  result_.joints.push_back({node, bind});
  return result_.joints.size() - 1;
}

}  // namespace

bool IsSkinned(const aiMesh& mesh) {
  return std::any_of(mesh.mBones, mesh.mBones + mesh.mNumBones,
                     [](const aiBone* bone) { return bone->mNumWeights > 0; });
}

SkinPlan PlanSkins(const aiScene& source, const NodePlan& plan, std::vector<std::string>& warnings) {
  SkinPlanner planner(plan, warnings);
  // Bones say where a bent mesh is, so that a second node with it would show it in the same place.
  std::set<std::vector<const aiMesh*>> known;
  for (std::size_t index = 0; index < plan.nodes.size(); ++index) {
    const aiNode& node = *plan.nodes[index].node;
    std::vector<const aiMesh*> meshes;
    for (unsigned i = 0; i < node.mNumMeshes; ++i)
      if (IsSkinned(*source.mMeshes[node.mMeshes[i]])) meshes.push_back(source.mMeshes[node.mMeshes[i]]);
    if (!meshes.empty() && known.insert(meshes).second)
      planner.Add(static_cast<NodeIndex>(index), std::move(meshes));
  }
  return planner.Take();
}

}  // namespace importer
