// The nodes of a file as the items that they are to become.
#pragma once

#include "host/matrix4.h"

#include <assimp/scene.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace importer {

using NodeIndex = std::int32_t;

struct PlannedNode {
  const aiNode* node = nullptr;
  // FBX pivots come as nodes around the node itself, which is the last; from the outermost.
  std::vector<const aiNode*> chain;
  NodeIndex parent = -1;
  std::string name;
  Matrix4 local;  // at rest
  Matrix4 world;
  unsigned childCount = 0;
  const aiCamera* camera = nullptr;
  const aiLight* light = nullptr;
};

struct NodePlan {
  std::vector<PlannedNode> nodes;              // parents first, children in the file's order
  std::map<std::string, NodeIndex> byName;     // the first of a name, as the file spells it
  std::map<std::string, NodeIndex> chainPart;  // nodes whose chain has a part of the name
};

// `root` is the matrix of the root node.
NodePlan PlanNodes(const aiScene& source, const Matrix4& root);

// The matrix of a chain whose parts have these matrices, from the outermost.
Matrix4 ChainMatrix(const std::vector<Matrix4>& parts);

}  // namespace importer
