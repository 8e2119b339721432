#include "host/matrix4.h"

namespace {

// The rows or columns that are left when one is taken out.
constexpr std::size_t kOthers[4][3] = {{1, 2, 3}, {0, 2, 3}, {0, 1, 3}, {0, 1, 2}};

double Minor(const Matrix4& a, std::size_t row, std::size_t column) {
  const auto& r = kOthers[row];
  const auto& c = kOthers[column];
  return a(r[0], c[0]) * (a(r[1], c[1]) * a(r[2], c[2]) - a(r[1], c[2]) * a(r[2], c[1])) -
         a(r[0], c[1]) * (a(r[1], c[0]) * a(r[2], c[2]) - a(r[1], c[2]) * a(r[2], c[0])) +
         a(r[0], c[2]) * (a(r[1], c[0]) * a(r[2], c[1]) - a(r[1], c[1]) * a(r[2], c[0]));
}

double Cofactor(const Matrix4& a, std::size_t row, std::size_t column) {
  const double minor = Minor(a, row, column);
  return (row + column) % 2 == 0 ? minor : -minor;
}

}  // namespace

Matrix4 operator*(const Matrix4& left, const Matrix4& right) {
  Matrix4 product;
  for (std::size_t row = 0; row < 4; ++row)
    for (std::size_t column = 0; column < 4; ++column)
      product(row, column) = left(row, 0) * right(0, column) + left(row, 1) * right(1, column) +
                             left(row, 2) * right(2, column) + left(row, 3) * right(3, column);
  return product;
}

Matrix4 Inverse(const Matrix4& matrix) {
  double cofactors[4][4];
  for (std::size_t row = 0; row < 4; ++row)
    for (std::size_t column = 0; column < 4; ++column) cofactors[row][column] = Cofactor(matrix, row, column);
  const double determinant = matrix(0, 0) * cofactors[0][0] + matrix(0, 1) * cofactors[0][1] +
                             matrix(0, 2) * cofactors[0][2] + matrix(0, 3) * cofactors[0][3];
  if (determinant == 0.0) return matrix;
  Matrix4 inverse;
  for (std::size_t row = 0; row < 4; ++row)
    for (std::size_t column = 0; column < 4; ++column) inverse(row, column) = cofactors[column][row] / determinant;
  return inverse;
}
