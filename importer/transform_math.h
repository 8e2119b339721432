// From the matrices and quaternions of Assimp to the transform items of the host.
#pragma once

#include "host/matrix4.h"

#include <assimp/types.h>  // matrix4x4.h declares operators that it leaves undefined

#include <array>
#include <optional>

namespace importer {

using Vector3 = std::array<double, 3>;
using Quaternion = std::array<double, 4>;  // x, y, z, w

Matrix4 FromAssimp(const aiMatrix4x4& matrix);
Quaternion FromAssimp(const aiQuaternion& rotation);

// A point is scaled, then turned about x, y and z, then moved.
struct Placement {
  Vector3 scale = {1, 1, 1};
  Vector3 angles = {0, 0, 0};  // radians
  Vector3 position = {0, 0, 0};
};

Matrix4 MatrixOf(const Placement& placement);
// The scale is negative on all axes for a mirroring. Nothing for a matrix that isn't such a product.
std::optional<Placement> Decompose(const Matrix4& matrix);
// The placement that comes closest in the same sense.
Placement DecomposeNearly(const Matrix4& matrix);

// The product of a first turn and a placement, which every invertible affine matrix is.
struct ShearedPlacement {
  Vector3 firstAngles = {0, 0, 0};
  Placement placement;
};
ShearedPlacement DecomposeSheared(const Matrix4& matrix);

// The angles about x, y and z of a rotation that lie closest to `near`, so that they run on without jumps.
Vector3 AnglesOf(const Quaternion& rotation, const Vector3& near);
Vector3 AnglesOf(const Matrix4& rotation, const Vector3& near);
Quaternion Interpolate(const Quaternion& from, const Quaternion& to, double part);
Quaternion QuaternionOf(const Matrix4& rotation);

bool IsFinite(const Matrix4& matrix);
bool IsIdentity(const Matrix4& matrix);
// Of the upper left part.
double Determinant(const Matrix4& matrix);
// Whether the elements differ by no more than the rounding of files in single precision.
bool IsClose(const Matrix4& left, const Matrix4& right);

}  // namespace importer
