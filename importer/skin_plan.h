// Which meshes bend, by which nodes, and how everything stood when they were bound.
#pragma once

#include "host/matrix4.h"
#include "importer/mesh_build.h"
#include "importer/node_plan.h"

#include <assimp/scene.h>

#include <cstddef>
#include <string>
#include <vector>

namespace importer {

struct SkinJoint {
  NodeIndex node = -1;
  Matrix4 bind;  // world matrix when the mesh was bound
};

// The meshes of one node that bend. Their points are carried into the world as it was when they were bound.
struct PlannedSkin {
  NodeIndex node = -1;
  std::vector<const aiMesh*> meshes;
  Matrix4 carry;
  std::vector<std::size_t> joints;  // places in SkinPlan::joints
  // By mesh and vertex, as places in `joints`; they add up to 1.
  std::vector<std::vector<std::vector<Influence>>> influences;
};

struct SkinPlan {
  std::vector<PlannedSkin> skins;
  // A node that is bound in several ways stands here once for each. The first is the node's own.
  std::vector<SkinJoint> joints;
  std::vector<std::ptrdiff_t> jointOfNode;  // by node: the first place in `joints`, -1 for none
};

bool IsSkinned(const aiMesh& mesh);

SkinPlan PlanSkins(const aiScene& source, const NodePlan& plan, std::vector<std::string>& warnings);

}  // namespace importer
