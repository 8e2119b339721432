// The two roads from deformers to skins, and what they share.
#pragma once

#include "geometry/influences.h"
#include "saver/save_state.h"

// Places in SaveState::deformGroups; a group stands once for each time it names the mesh.
using DeformGroupPlaces = std::vector<std::size_t>;

// Both return false to have the caller report the mesh. As designed they report their troubles themselves
// and return true on every path.
bool CreateSkinFromGroups(SaveState& state, GltfMesh& mesh, const CZyUser_Mesh& hostMesh,
                          const DeformGroupPlaces& groups, std::uint32_t meshIndexInGroup);
bool CreateSkinFromGraph(SaveState& state, GltfMesh& mesh, const CZyUser_Item& item, const CZyUser_Mesh& hostMesh);

// The mesh of an item's "mesh" channel.
zyresult ReadMesh(const SaveState& state, const CZyUser_Item& item, CZyUser_Mesh& mesh);

// Points for which a skin needs rows: those of the host's mesh, and never less than the vertices refer to.
std::uint32_t SkinPointCount(const GltfMesh& mesh, const CZyUser_Mesh& hostMesh);

// Adds a joint with its inverse bind matrix and returns its number. A joint whose bind matrix isn't known
// gets none, and the two lists are then out of step; that stays as it is.
std::uint32_t AddJoint(const SaveState& state, GltfSkin& skin, GltfNode* node);

const char* NodeName(const GltfMesh& mesh);
void WarnOfDroppedInfluences(SaveState& state, const GltfSkin& skin, const GltfMesh& mesh);
