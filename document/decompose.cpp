#include "document/decompose.h"

#include <cmath>

namespace {

// K. Shoemake, "Animating rotation with quaternion curves", SIGGRAPH 1985; t(row, column) is the rotation
// for column vectors, the transpose of the host's.
std::array<double, 4> RotationOf(const Matrix4& matrix) {
  const auto t = [&matrix](std::size_t row, std::size_t column) { return matrix(column, row); };
  const double trace = t(0, 0) + t(1, 1) + t(2, 2) + 1;
  if (trace > 0) {
    const double s = std::sqrt(trace);
    const double f = 0.5 / s;
    return {(t(2, 1) - t(1, 2)) * f, (t(0, 2) - t(2, 0)) * f, (t(1, 0) - t(0, 1)) * f, s / 2};
  }

  std::size_t i = 0;
  if (t(1, 1) > t(0, 0)) i = 1;
  if (t(2, 2) > t(i, i)) i = 2;
  const std::size_t j = (i + 1) % 3;
  const std::size_t k = (j + 1) % 3;
  double s = std::sqrt(t(i, i) - (t(j, j) + t(k, k)) + 1);
  std::array<double, 4> q;
  q[i] = s / 2;
  if (s > 0) s = 0.5 / s;
  q[j] = (t(i, j) + t(j, i)) * s;
  q[k] = (t(i, k) + t(k, i)) * s;
  q[3] = (t(k, j) - t(j, k)) * s;
  return q;
}

double LengthOf(double x, double y, double z) { return std::sqrt(x * x + y * y + z * z); }

}  // namespace

NodeTransform Decompose(const Matrix4& matrix) {
  const auto& m = matrix.m;
  return {RotationOf(matrix),
          {m[12], m[13], m[14]},
          {LengthOf(m[0], m[1], m[2]), LengthOf(m[4], m[5], m[6]), LengthOf(m[8], m[9], m[10])}};
}
