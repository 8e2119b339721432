#include "document/decompose.h"
#include "document/texture_transform.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kPi = 3.14159265358979323846;

// The rotation matrix of a unit quaternion, for row vectors.
Matrix4 RotationMatrix(const std::array<double, 4>& q) {
  const auto [x, y, z, w] = q;
  const double rows[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)},
                             {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)},
                             {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)}};
  Matrix4 matrix;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column) matrix(row, column) = rows[row][column];
  return matrix;
}

TEST(DecomposeTest, FindsTheRotationOfEachAxisAndAngle) {
  const std::array<double, 3> axes[] = {{1, 0, 0},     {0, 1, 0},      {0, 0, 1},
                                        {0.6, 0.8, 0}, {0, -0.6, 0.8}, {0.48, 0.6, 0.64}};
  for (const auto& axis : axes) {
    for (const double angle : {-kPi, -3.0, -0.5, 0.1, 1.5, 3.1, kPi, 3.5}) {
      const double s = std::sin(angle / 2);
      const Matrix4 matrix = RotationMatrix({axis[0] * s, axis[1] * s, axis[2] * s, std::cos(angle / 2)});
      const NodeTransform transform = Decompose(matrix);
      EXPECT_THAT(RotationMatrix(transform.rotation).m, Pointwise(DoubleNear(1e-7), matrix.m)) << angle;
      EXPECT_THAT(transform.scale, Pointwise(DoubleNear(1e-12), {1.0, 1.0, 1.0}));
    }
  }
}

TEST(DecomposeTest, KeepsScaleInTheRotationAndLosesMirrors) {
  // The trace decides with its 1, so a mirrored and stretched matrix takes its largest diagonal element.
  struct {
    std::array<double, 3> diagonal;
    std::array<double, 4> rotation;
    std::array<double, 3> scale;
  } cases[] = {{{9, 3, 3}, {0, 0, 0, 2}, {9, 3, 3}},
               {{-1, 1, 1}, {0, 0, 0, std::sqrt(2.0) / 2}, {1, 1, 1}},
               {{-1, -1, -1}, {std::sqrt(2.0) / 2, 0, 0, 0}, {1, 1, 1}},
               {{-5, 1, 1}, {0, std::sqrt(6.0) / 2, 0, 0}, {5, 1, 1}},
               {{-9, 1, 3}, {0, 0, std::sqrt(12.0) / 2, 0}, {9, 1, 3}},
               {{-1, -1, 0}, {0, 0, std::sqrt(3.0) / 2, 0}, {1, 1, 0}}};
  for (const auto& c : cases) {
    Matrix4 matrix;
    for (std::size_t i = 0; i < 3; ++i) matrix(i, i) = c.diagonal[i];
    const NodeTransform transform = Decompose(matrix);
    EXPECT_THAT(transform.rotation, Pointwise(DoubleNear(1e-15), c.rotation)) << c.diagonal[0];
    EXPECT_EQ(transform.scale, c.scale);
  }
}

TEST(DecomposeTest, TakesTheLargestDiagonalElement) {
  Matrix4 matrix;
  matrix.m = {-3, 1, 2, 0, 5, 1, 4, 0, 7, 6, -1, 0, 0, 0, 0, 1};
  const double s = std::sqrt(6.0);
  EXPECT_THAT(Decompose(matrix).rotation, Pointwise(DoubleNear(1e-15), {3 / s, s / 2, 5 / s, 2.5 / s}));
}

std::array<double, 2> TransformUv(const GltfTexture& texture, std::array<double, 2> uv) {
  const std::array<double, 2> offset = TextureOffset(texture);
  const double c = std::cos(texture.rotation);
  const double s = std::sin(texture.rotation);
  const double u = uv[0] * texture.scaleU;
  const double v = uv[1] * texture.scaleV;
  return {offset[0] + c * u + s * v, offset[1] - s * u + c * v};
}

TEST(TextureTransformTest, TheMiddleStaysInPlace) {
  for (const double rotation : {0.0, 0.5, kPi / 2, -2.0, 7.0}) {
    for (const double scale : {1.0, 0.25, 3.0, -2.0}) {
      GltfTexture texture("t");
      texture.rotation = rotation;
      texture.scaleU = texture.scaleV = scale;
      EXPECT_THAT(TransformUv(texture, {0.5, 0.5}), Pointwise(DoubleNear(1e-12), {0.5, 0.5}))
          << rotation << " " << scale;
    }
  }
}

TEST(TextureTransformTest, UnequalScales) {
  GltfTexture texture("t");
  texture.rotation = kPi / 2;
  texture.scaleU = 2;
  texture.scaleV = 3;
  texture.offsetU = 10;
  texture.offsetV = 20;
  EXPECT_THAT(TextureOffset(texture), Pointwise(DoubleNear(1e-12), {9.5, 22.0}));
}

}  // namespace
