// Meshes of the node items, and the mesh items that bend with their deform groups.
#pragma once

#include "headless/scene_data.h"
#include "importer/mesh_build.h"
#include "importer/node_items.h"

#include <string>
#include <vector>

namespace importer {

// Gives the node items their meshes; nodes with the same meshes share one.
void FillMeshItems(const NodePlans& plans, const NodeItems& items, const MapNames& names,
                   headless::SceneData& scene, std::vector<std::string>& warnings);

// Adds a mesh item at the root for each skin, with a deform group and its deformers.
void AddSkinItems(const NodePlans& plans, const NodeItems& items, const MapNames& names,
                  headless::SceneData& scene, std::vector<std::string>& warnings);

}  // namespace importer
