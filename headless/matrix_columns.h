// A matrix by columns, since moving, turning and scaling change these as wholes.
#pragma once

#include "host/matrix4.h"

#include <cmath>

namespace headless {

class MatrixColumns {
 public:
  explicit MatrixColumns(const Matrix4& matrix = {}) {
    for (std::size_t row = 0; row < 4; ++row)
      for (std::size_t column = 0; column < 4; ++column) columns_[column][row / 2][row % 2] = matrix(row, column);
  }

  Matrix4 ToMatrix() const {
    Matrix4 matrix;
    for (std::size_t row = 0; row < 4; ++row)
      for (std::size_t column = 0; column < 4; ++column) matrix(row, column) = columns_[column][row / 2][row % 2];
    return matrix;
  }

  // Each applies after what the matrix does already.
  void Translate(const std::array<double, 3>& offset) {
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (std::size_t pair = 0; pair < 2; ++pair) columns_[axis][pair] += columns_[3][pair] * offset[axis];
  }

  // In radians, counter-clockwise as seen from the axis' end.
  void Rotate(std::size_t axis, double angle) {
    if (angle == 0.0) return;
    constexpr std::size_t kNext[] = {1, 2, 0};
    auto& first = columns_[kNext[axis]];
    auto& second = columns_[kNext[kNext[axis]]];
    const double c = std::cos(angle), s = std::sin(angle);
    for (std::size_t pair = 0; pair < 2; ++pair) {
      const Pair x = first[pair], y = second[pair];
      first[pair] = x * c - y * s;
      second[pair] = x * s + y * c;
    }
  }

  void Scale(const std::array<double, 3>& factors) {
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (Pair& pair : columns_[axis]) pair *= factors[axis];
  }

  void Multiply(const Matrix4& matrix) { *this = MatrixColumns(ToMatrix() * matrix); }

 private:
  // Two elements that are reckoned with at once; each gives the very bits that it would alone.
  using Pair = double __attribute__((vector_size(16)));

  Pair columns_[4][2];
};

}  // namespace headless
