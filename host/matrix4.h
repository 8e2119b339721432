// 4 x 4 matrices of the host.
#pragma once

#include <array>
#include <cstddef>

// Row by row, translation in elements 12, 13, 14. A point is a row vector: a child's world matrix is
// its local matrix times its parent's world matrix.
struct Matrix4 {
  std::array<double, 16> m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  double& operator()(std::size_t row, std::size_t column) { return m[4 * row + column]; }
  double operator()(std::size_t row, std::size_t column) const { return m[4 * row + column]; }

  // Exact comparison: a NaN element makes a matrix differ from every other.
  bool operator==(const Matrix4& other) const = default;
};

// Each element sums k = 0..3 from left to right, so the bytes of a file don't depend on the compiler.
Matrix4 operator*(const Matrix4& left, const Matrix4& right);

// General inverse: cofactors, each divided by the determinant. A determinant of exactly 0 gives the
// matrix back unchanged.
Matrix4 Inverse(const Matrix4& matrix);
