// Poses written files as viewers do.
#pragma once

#include "host/matrix4.h"
#include "tests/support/glb_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace test_support {

using Point = std::array<double, 3>;

Point Transformed(const Point& point, const Matrix4& matrix);
double Distance(const Point& a, const Point& b);
Point Triple(const std::vector<double>& values, std::size_t place);

// One moment of one animation: a place among the keys, which all of its samplers share.
struct Moment {
  std::uint32_t animation = 0;
  std::size_t key = 0;
};

// The world matrices of all nodes, at rest without a moment. Throws std::runtime_error for an animated node with a
// matrix.
std::vector<Matrix4> PoseNodes(const GltfFile& file, const std::optional<Moment>& moment);

// One primitive's vertices, in the mesh's own space.
struct PrimitiveVertices {
  std::vector<double> positions, joints, weights;  // the last two empty without a skin
};
PrimitiveVertices ReadVertices(const GltfFile& file, const rapidjson::Value& primitive);

// Where skinned vertices stand among posed nodes.
std::vector<Point> PoseVertices(const GltfFile& file, const PrimitiveVertices& vertices,
                                const rapidjson::Value& skin, const std::vector<Matrix4>& worlds);

// Where all vertices of a file stand, skinned or not, node by node.
std::vector<Point> PoseFile(const GltfFile& file, const std::optional<Moment>& moment);

}  // namespace test_support
