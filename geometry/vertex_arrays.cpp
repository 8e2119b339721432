#include "geometry/vertex_arrays.h"

#include "geometry/tangent_basis.h"

namespace {

using Row = std::array<double, 4>;

// Rows of a skin are per point; a skin that lacks the point gives it no influence.
Row RowOf(const std::vector<Row>& rows, std::uint32_t point) { return point < rows.size() ? rows[point] : Row{}; }

// Widened, as a row vector with the translation in the last row, rounded.
void MovePoint(const Matrix4& matrix, float* p) {
  const double x = p[0], y = p[1], z = p[2];
  for (std::size_t axis = 0; axis < 3; ++axis)
    p[axis] =
        static_cast<float>(x * matrix(0, axis) + y * matrix(1, axis) + z * matrix(2, axis) + matrix(3, axis));
}

// `valueOf(wedge)` gives N numbers, which are rounded to f32.
template <std::size_t N, class ValueOf>
std::vector<float> Gather(VertexWedges wedges, const ValueOf& valueOf) {
  std::vector<float> values(N * wedges.size());
  float* out = values.data();
  for (const std::uint32_t wedge : wedges)
    for (const auto number : valueOf(wedge)) *out++ = static_cast<float>(number);
  return values;
}

}  // namespace

std::vector<float> GatherPositions(const GltfMesh& mesh, VertexWedges wedges, const Matrix4* toWorld) {
  std::vector<float> values =
      Gather<3>(wedges, [&](std::uint32_t wedge) { return mesh.positions[mesh.positionIndex[wedge]]; });
  if (toWorld)
    for (std::size_t i = 0; i < values.size(); i += 3) MovePoint(*toWorld, &values[i]);
  return values;
}

std::vector<float> GatherNormals(const GltfMesh& mesh, VertexWedges wedges) {
  return Gather<3>(wedges, [&](std::uint32_t wedge) { return mesh.normals[wedge]; });
}

std::vector<float> GatherColors(const GltfColorMap& map, VertexWedges wedges) {
  return Gather<4>(wedges, [&](std::uint32_t wedge) { return map.data[wedge]; });
}

std::vector<float> GatherUvs(const GltfUvMap& map, VertexWedges wedges) {
  return Gather<2>(wedges, [&](std::uint32_t wedge) {
    const auto [u, v] = map.data[wedge];
    return std::array{u, 1.0f - v};
  });
}

VertexTangents GatherTangents(const GltfTangentMap& map, VertexWedges wedges, std::span<const float> normals) {
  VertexTangents tangents;
  tangents.values.reserve(4 * wedges.size());
  for (std::size_t vertex = 0; vertex < wedges.size(); ++vertex) {
    // An index that an earlier mesh left in the table may lie beyond this map's data.
    const std::uint32_t index = map.indices[wedges[vertex]];
    const TangentBasis basis = index < map.data.size() ? map.data[index] : TangentBasis{};
    const Normal3f normal = {normals[3 * vertex], normals[3 * vertex + 1], normals[3 * vertex + 2]};
    tangents.isOrthonormal = tangents.isOrthonormal && PassesAsOrthonormal(basis, normal);
    const std::array<float, 4> tangent = TangentOf(basis, normal);
    tangents.values.insert(tangents.values.end(), tangent.begin(), tangent.end());
  }
  return tangents;
}

std::vector<std::uint16_t> GatherJoints(const GltfMesh& mesh, const GltfSkin& skin, VertexWedges wedges) {
  std::vector<std::uint16_t> values;
  values.reserve(4 * wedges.size());
  for (const std::uint32_t wedge : wedges)
    for (const double joint : RowOf(skin.jointIndices, mesh.positionIndex[wedge]))
      values.push_back(static_cast<std::uint16_t>(static_cast<std::uint32_t>(joint)));
  return values;
}

std::vector<float> GatherWeights(const GltfMesh& mesh, const GltfSkin& skin, VertexWedges wedges) {
  std::vector<float> values;
  values.reserve(4 * wedges.size());
  for (const std::uint32_t wedge : wedges)
    for (const double weight : RowOf(skin.jointWeights, mesh.positionIndex[wedge]))
      values.push_back(static_cast<float>(weight));
  return values;
}

Bounds BoundsOf(std::span<const float> positions) {
  Bounds bounds;
  for (std::size_t axis = 0; axis < 3; ++axis) bounds.min[axis] = bounds.max[axis] = positions[axis];
  for (std::size_t i = 3; i < positions.size(); i += 3) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const float value = positions[i + axis];
      if (value < bounds.min[axis]) bounds.min[axis] = value;
      if (value > bounds.max[axis]) bounds.max[axis] = value;
    }
  }
  return bounds;
}
