// Turns meshes of Assimp into meshes of the host.
#pragma once

#include "headless/mesh_data.h"
#include "host/matrix4.h"

#include <assimp/scene.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace importer {

// What all meshes of a scene call the same.
struct MapNames {
  std::vector<std::string> uvs;        // by UV channel
  std::vector<std::string> colors;     // by colour channel
  std::vector<std::string> materials;  // polygon tags, by material
};

MapNames CollectMapNames(const aiScene& source, std::vector<std::string> materialTags);

struct Influence {
  std::uint32_t deformer = 0;
  float weight = 0;
  bool operator==(const Influence&) const = default;
  auto operator<=>(const Influence&) const = default;
};

// One mesh to be, made of meshes that differ in their material.
struct MeshParts {
  std::vector<const aiMesh*> meshes;
  Matrix4 carry;  // applied to all points and directions
  // Weight maps by deformer, and the influences on each vertex of each mesh; both empty without a skin.
  std::vector<std::string> weightMaps;
  std::vector<std::vector<std::vector<Influence>>> influences;
};

// Points of one place with equal influences become one. Appends what was left out to `warnings`, with `name`.
// Null when there is no polygon. Throws ImportError when the host can't hold the mesh.
std::shared_ptr<const headless::MeshData> BuildMesh(const MeshParts& parts, const MapNames& names,
                                                    const std::string& name, std::vector<std::string>& warnings);

}  // namespace importer
