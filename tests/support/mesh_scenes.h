// Scenes with one mesh or a few, and what their export says of a primitive.
#pragma once

#include "headless/mesh_data.h"
#include "tests/support/glb_reader.h"
#include "tests/support/save_runner.h"

#include <cstdint>
#include <string>
#include <vector>

namespace test_support {

// A map with explicit values. `pointValues` and `cornerValues` are places in `values`, headless::kNone for a gap;
// either may be empty.
headless::MeshMapData MakeMap(std::uint32_t type, const std::string& name, std::vector<float> values,
                              std::vector<std::uint32_t> pointValues, std::vector<std::uint32_t> cornerValues);

// Gives every polygon the material tag.
void TagAll(headless::MeshData& mesh, const std::string& tag);

// A flat strip of n triangles that face +z, all with the tag "Default". The first triangle has points 1, 0, 2.
headless::MeshData StripMesh(std::uint32_t triangles);

// All items are exported, as one "mesh" item each: "Mesh0", "Mesh1", ...
headless::SceneData MeshScene(std::vector<headless::MeshData> meshes);

// Sets the user value "sceneio.gltf.save.NAME".
void SetOption(headless::SceneData& scene, const std::string& name, std::int32_t value);

struct SavedPrimitive {
  std::vector<double> indices;
  // Rows of an attribute, in vertex order.
  std::vector<std::vector<double>> Rows(const std::string& attribute) const;
  // Rows of an attribute, one per entry of `indices`.
  std::vector<std::vector<double>> Corners(const std::string& attribute) const;
  bool Has(const std::string& attribute) const;

  const GltfFile* file;
  const rapidjson::Value* json;
};

// Primitive `index` of the file's mesh `mesh`.
SavedPrimitive PrimitiveOf(const GltfFile& file, unsigned mesh, unsigned index);

}  // namespace test_support
