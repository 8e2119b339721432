// The animations of a file as keys of the values that move its nodes.
#pragma once

#include "importer/node_plan.h"
#include "importer/transform_math.h"

#include <assimp/scene.h>

#include <optional>
#include <string>
#include <vector>

namespace importer {

struct VectorKeys {
  std::vector<double> times;  // seconds, ascending; not empty
  std::vector<Vector3> values;
};

// What moves; the rest of a node stays as it is at rest.
struct NodeMotion {
  NodeIndex node = -1;
  std::optional<VectorKeys> position, angles, scale;
};

struct PlannedClip {
  std::string name;
  std::vector<NodeMotion> motions;
};

struct MotionPlan {
  double start = 0, end = 0;  // seconds, of all clips
  double fps = 24;
  std::vector<PlannedClip> clips;
  std::vector<Placement> rest;  // by node that moves
  std::vector<bool> moves;      // by node
  // By node: it turns, it moves and it is scaled. The exporter reads a turn only from matrices without a scale.
  std::vector<bool> movesScaled;
};

// Throws ImportError when the animations are too long.
MotionPlan PlanMotions(const aiScene& source, const NodePlan& plan, std::vector<std::string>& warnings);

}  // namespace importer
