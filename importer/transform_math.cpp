#include "importer/transform_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace importer {
namespace {

constexpr double kShearTolerance = 1e-5;

Vector3 Row(const Matrix4& matrix, std::size_t row) { return {matrix(row, 0), matrix(row, 1), matrix(row, 2)}; }

void SetRow(Matrix4& matrix, std::size_t row, const Vector3& values) {
  for (std::size_t i = 0; i < 3; ++i) matrix(row, i) = values[i];
}

double Dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector3 Cross(const Vector3& a, const Vector3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector3 Times(const Vector3& a, double factor) { return {a[0] * factor, a[1] * factor, a[2] * factor}; }

Vector3 Minus(const Vector3& a, const Vector3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

Matrix4 Turn(const Vector3& angles) {
  Matrix4 matrix;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double c = std::cos(angles[axis]), s = std::sin(angles[axis]);
    const std::size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
    for (std::size_t row = 0; row < 3; ++row) {
      const double first = matrix(row, u), second = matrix(row, v);
      matrix(row, u) = first * c - second * s;
      matrix(row, v) = first * s + second * c;
    }
  }
  return matrix;
}

// `angle` plus the whole turns that bring it closest to `near`.
double Unwrap(double angle, double near) {
  constexpr double kTurn = 2 * std::numbers::pi;
  return angle + kTurn * std::round((near - angle) / kTurn);
}

double Distance(const Vector3& a, const Vector3& b) {
  return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
}

// Any unit vector across `vector`.
Vector3 Across(const Vector3& vector) {
  std::size_t smallest = 0;
  for (std::size_t i = 1; i < 3; ++i)
    if (std::abs(vector[i]) < std::abs(vector[smallest])) smallest = i;
  Vector3 axis = {0, 0, 0};
  axis[smallest] = 1;
  const Vector3 across = Cross(vector, axis);
  const double length = std::sqrt(Dot(across, across));
  return length > 0 ? Times(across, 1 / length) : axis;
}

// The first of the three that has a length, scaled to length 1.
Vector3 UnitOf(const Vector3& vector, const Vector3& other, const Vector3& last) {
  for (const Vector3& candidate : {vector, other, last}) {
    const double length = std::sqrt(Dot(candidate, candidate));
    if (length > kShearTolerance) return Times(candidate, 1 / length);
  }
  return last;
}

// Turns rows of length 1 or 0 that are orthogonal, more or less, into a rotation.
Matrix4 Orthonormalize(const std::array<Vector3, 3>& rows) {
  const Vector3 x = UnitOf(rows[0], Cross(rows[1], rows[2]), Across(UnitOf(rows[1], rows[2], {1, 0, 0})));
  const auto besideX = [&x](const Vector3& row) { return Minus(row, Times(x, Dot(x, row))); };
  const Vector3 y = UnitOf(besideX(rows[1]), Cross(besideX(rows[2]), x), Across(x));
  Matrix4 rotation;
  SetRow(rotation, 0, x);
  SetRow(rotation, 1, y);
  SetRow(rotation, 2, Cross(x, y));
  return rotation;
}

// The eigenvectors of a symmetric matrix as rows of a rotation, by Jacobi's turns.
Matrix4 EigenRows(Matrix4 symmetric) {
  Matrix4 rows;
  for (int sweep = 0; sweep < 32; ++sweep) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const std::size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
      if (symmetric(u, v) == 0) continue;
      Vector3 angles = {0, 0, 0};
      // Of the two turns that clear the element, the smaller: with the larger the sweeps needn't converge.
      const double difference = symmetric(u, u) - symmetric(v, v);
      const double twice = 2 * symmetric(u, v);
      angles[axis] = 0.5 * std::atan2(difference < 0 ? -twice : twice, std::abs(difference));
      const Matrix4 turn = Turn(angles);
      rows = turn * rows;
      Matrix4 back;
      for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) back(row, column) = turn(column, row);
      symmetric = turn * symmetric * back;
      symmetric(u, v) = symmetric(v, u) = 0;
    }
  }
  return rows;
}

}  // namespace

Matrix4 FromAssimp(const aiMatrix4x4& matrix) {
  Matrix4 result;
  for (unsigned row = 0; row < 4; ++row)
    for (unsigned column = 0; column < 4; ++column) result(column, row) = static_cast<double>(matrix[row][column]);
  return result;
}

Quaternion FromAssimp(const aiQuaternion& rotation) {
  const Quaternion q = {static_cast<double>(rotation.x), static_cast<double>(rotation.y),
                        static_cast<double>(rotation.z), static_cast<double>(rotation.w)};
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(length > 0)) return {0, 0, 0, 1};
  return {q[0] / length, q[1] / length, q[2] / length, q[3] / length};
}

Matrix4 MatrixOf(const Placement& placement) {
  Matrix4 matrix = Turn(placement.angles);
  for (std::size_t row = 0; row < 3; ++row) SetRow(matrix, row, Times(Row(matrix, row), placement.scale[row]));
  SetRow(matrix, 3, placement.position);
  return matrix;
}

Placement DecomposeNearly(const Matrix4& matrix) {
  Placement placement;
  placement.position = Row(matrix, 3);
  const double sign = Determinant(matrix) < 0 ? -1 : 1;
  std::array<Vector3, 3> rows;
  for (std::size_t row = 0; row < 3; ++row) {
    rows[row] = Row(matrix, row);
    placement.scale[row] = sign * std::sqrt(Dot(rows[row], rows[row]));
  }
  const double largest =
      std::max({std::abs(placement.scale[0]), std::abs(placement.scale[1]), std::abs(placement.scale[2])});
  for (std::size_t row = 0; row < 3; ++row) {
    // What is left of a flat matrix's row by rounding has no direction.
    const bool isFlat = std::abs(placement.scale[row]) <= 1e-12 * largest;
    rows[row] = isFlat ? Vector3{0, 0, 0} : Times(rows[row], 1 / placement.scale[row]);
  }
  placement.angles = AnglesOf(Orthonormalize(rows), {0, 0, 0});
  return placement;
}

std::optional<Placement> Decompose(const Matrix4& matrix) {
  const Placement placement = DecomposeNearly(matrix);
  const Matrix4 made = MatrixOf(placement);
  if (matrix(0, 3) != 0 || matrix(1, 3) != 0 || matrix(2, 3) != 0 || matrix(3, 3) != 1) return std::nullopt;
  for (std::size_t row = 0; row < 3; ++row) {
    const Vector3 difference = Minus(Row(made, row), Row(matrix, row));
    const double length = std::abs(placement.scale[row]);
    if (std::sqrt(Dot(difference, difference)) > kShearTolerance * length) return std::nullopt;
  }
  return placement;
}

ShearedPlacement DecomposeSheared(const Matrix4& matrix) {
  Matrix4 symmetric;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      symmetric(row, column) = Dot(Row(matrix, row), Row(matrix, column));
  // With E the eigenvectors of M * M', the rows of E * M are orthogonal: M = E' * (scale * rotation).
  const Matrix4 eigen = EigenRows(symmetric);
  Matrix4 first;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column) first(row, column) = eigen(column, row);
  return {AnglesOf(first, {0, 0, 0}), DecomposeNearly(eigen * matrix)};
}

Vector3 AnglesOf(const Matrix4& rotation, const Vector3& near) {
  const double cosY = std::hypot(rotation(0, 0), rotation(0, 1));
  // Where y is a quarter turn, x and z turn about the same axis: x stays where it was.
  const double x = cosY > 1e-9 ? std::atan2(rotation(1, 2), rotation(2, 2)) : near[0];
  const Matrix4 rest = Turn({-x, 0, 0}) * rotation;
  const double y = std::atan2(-rest(0, 2), rest(2, 2));
  const double z = std::atan2(-rest(1, 0), rest(1, 1));
  constexpr double kHalfTurn = std::numbers::pi;
  Vector3 best = {x, y, z}, other = {x + kHalfTurn, kHalfTurn - y, z + kHalfTurn};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    best[axis] = Unwrap(best[axis], near[axis]);
    other[axis] = Unwrap(other[axis], near[axis]);
  }
  return Distance(best, near) <= Distance(other, near) ? best : other;
}

Vector3 AnglesOf(const Quaternion& rotation, const Vector3& near) {
  auto [x, y, z, w] = rotation;
  // The exporter reads rotations back from matrices, and loses the axis of a half turn in their rounding. One that
  // falls short by 0.002 degrees keeps it.
  constexpr double kLeastW = 2e-5;
  if (std::abs(w) < kLeastW) w = w < 0 ? -kLeastW : kLeastW;
  Matrix4 matrix;
  SetRow(matrix, 0, {1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)});
  SetRow(matrix, 1, {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)});
  SetRow(matrix, 2, {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)});
  return AnglesOf(matrix, near);
}

Quaternion Interpolate(const Quaternion& from, const Quaternion& to, double part) {
  double dot = from[0] * to[0] + from[1] * to[1] + from[2] * to[2] + from[3] * to[3];
  const double sign = dot < 0 ? -1 : 1;
  dot = std::min(std::abs(dot), 1.0);
  double a = 1 - part, b = part;
  if (const double angle = std::acos(dot); angle > 1e-6) {
    a = std::sin(a * angle) / std::sin(angle);
    b = std::sin(b * angle) / std::sin(angle);
  }
  Quaternion result;
  double length = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    result[i] = a * from[i] + sign * b * to[i];
    length += result[i] * result[i];
  }
  for (double& value : result) value /= std::sqrt(length);
  return result;
}

Quaternion QuaternionOf(const Matrix4& m) {
  // Of the four, the largest is read first: it is the one that loses least.
  const double trace = m(0, 0) + m(1, 1) + m(2, 2);
  const std::array<double, 4> squares = {1 + 2 * m(0, 0) - trace, 1 + 2 * m(1, 1) - trace, 1 + 2 * m(2, 2) - trace,
                                         1 + trace};
  const auto largest =
      static_cast<std::size_t>(std::max_element(squares.begin(), squares.end()) - squares.begin());
  const double twice = std::sqrt(squares[largest]);
  Quaternion q;
  q[largest] = twice / 2;
  if (largest == 3) {
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
      q[i] = (m(j, k) - m(k, j)) / (2 * twice);
    }
    return q;
  }
  const std::size_t j = (largest + 1) % 3, k = (largest + 2) % 3;
  q[j] = (m(largest, j) + m(j, largest)) / (2 * twice);
  q[k] = (m(largest, k) + m(k, largest)) / (2 * twice);
  q[3] = (m(j, k) - m(k, j)) / (2 * twice);
  return q;
}

bool IsFinite(const Matrix4& matrix) {
  return std::all_of(matrix.m.begin(), matrix.m.end(), [](double value) { return std::isfinite(value); });
}

bool IsIdentity(const Matrix4& matrix) { return matrix == Matrix4(); }

double Determinant(const Matrix4& matrix) { return Dot(Row(matrix, 0), Cross(Row(matrix, 1), Row(matrix, 2))); }

bool IsClose(const Matrix4& left, const Matrix4& right) {
  for (std::size_t row = 0; row < 4; ++row) {
    double largest = 0;
    for (std::size_t column = 0; column < 3; ++column)
      largest = std::max({largest, std::abs(left(row, column)), std::abs(right(row, column))});
    if (row == 3) largest = std::max(largest, 1.0);
    for (std::size_t column = 0; column < 3; ++column)
      if (std::abs(left(row, column) - right(row, column)) > 1e-4 * largest) return false;
  }
  return true;
}

}  // namespace importer
