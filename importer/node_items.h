// The items of the nodes.
#pragma once

#include "headless/scene_data.h"
#include "importer/motion_plan.h"
#include "importer/node_plan.h"
#include "importer/skin_plan.h"

#include <assimp/scene.h>

#include <array>
#include <string>
#include <vector>

namespace importer {

// The items of one node; -1 for a node that makes none.
struct NodeItem {
  headless::ItemIndex mover = -1;   // carries position and rotation
  headless::ItemIndex holder = -1;  // carries the scale, the mesh and the children; most often the mover itself
  // Scale, rotation and position items, by TransformKind; of nodes that move.
  std::array<headless::ItemIndex, 3> transforms = {-1, -1, -1};
};

struct NodeItems {
  std::vector<NodeItem> byNode;
  std::vector<headless::ItemIndex> byJoint;  // by place in SkinPlan::joints: the item that stands for the joint
};

// What decides about the items of nodes.
struct NodePlans {
  const aiScene& source;
  const NodePlan& nodes;
  const SkinPlan& skins;
  const MotionPlan& motions;
};

// Adds the items of all nodes, those that hold meshes as meshes still without a value.
NodeItems AddNodeItems(const NodePlans& plans, headless::SceneData& scene, std::vector<std::string>& warnings);

// The meshes of a node that don't bend.
std::vector<const aiMesh*> RigidMeshes(const aiScene& source, const aiNode& node);

}  // namespace importer
