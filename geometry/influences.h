// Weights of points gathered from the host, per deformer.
#pragma once

#include "document/mesh_records.h"
#include "host/user_deform.h"
#include "host/user_mesh.h"

#include <string>
#include <vector>

// What one deformer does to a mesh, in parallel.
struct PointInfluences {
  std::vector<std::uint32_t> points;  // host point indices
  std::vector<float> weights;         // as the host gives them, not normalised
};

// Asks for each point of the mesh once and sorts the answers by deformer. `mesh` is the mesh's place in the
// group, `room` the most weights that the host may give for a point there. A point or pair that can't be read
// or is out of range is left out.
std::vector<PointInfluences> GatherGroupInfluences(const CZyUser_GroupDeformer& group, std::uint32_t mesh,
                                                   const CZyUser_Point& point, std::uint32_t pointCount,
                                                   std::uint32_t room);

// The values of a weight map; none when the mesh has no map of the name. `map` and `point` move.
PointInfluences GatherMapInfluences(const CZyUser_MeshMap& map, const std::string& mapName,
                                    const CZyUser_Point& point, std::uint32_t pointCount);

// Gives the weights to a joint of the skin. False when a point had no free place for its weight, which is
// then dropped: the first four joints of a point stay, whatever their weights.
bool AddInfluences(GltfSkin& skin, const PointInfluences& influences, std::uint32_t joint);
