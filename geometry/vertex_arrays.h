// Gathers the values of a primitive's vertices into the final f32 arrays.
#pragma once

#include "document/mesh_records.h"
#include "host/matrix4.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

// The wedge of each vertex.
using VertexWedges = std::span<const std::uint32_t>;

// x, y, z per vertex. With a matrix each f32 position is moved by it, in f64, and rounded to f32 again.
std::vector<float> GatherPositions(const GltfMesh& mesh, VertexWedges wedges, const Matrix4* toWorld);
std::vector<float> GatherNormals(const GltfMesh& mesh, VertexWedges wedges);
// R, G, B, A per vertex.
std::vector<float> GatherColors(const GltfColorMap& map, VertexWedges wedges);
// U and 1 - V per vertex: the host's V axis points up, the output's down.
std::vector<float> GatherUvs(const GltfUvMap& map, VertexWedges wedges);

struct VertexTangents {
  std::vector<float> values;  // x, y, z, sign per vertex
  bool isOrthonormal = true;  // false when any vertex failed the test
};

// `normals` are the vertices' NORMAL values.
VertexTangents GatherTangents(const GltfTangentMap& map, VertexWedges wedges, std::span<const float> normals);

// Four joint numbers, each truncated to 16 bits, and four weights per vertex.
std::vector<std::uint16_t> GatherJoints(const GltfMesh& mesh, const GltfSkin& skin, VertexWedges wedges);
std::vector<float> GatherWeights(const GltfMesh& mesh, const GltfSkin& skin, VertexWedges wedges);

struct Bounds {
  std::array<float, 3> min, max;
};

// Bounds of x, y, z triples; of at least one.
Bounds BoundsOf(std::span<const float> positions);
