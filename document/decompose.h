// A node's matrix as rotation, translation and scale.
#pragma once

#include "host/matrix4.h"

#include <array>

struct NodeTransform {
  std::array<double, 4> rotation;  // quaternion x, y, z, w
  std::array<double, 3> translation;
  std::array<double, 3> scale;  // never negative, so a mirroring is lost
};

// On purpose the scale isn't taken out of the matrix before the rotation is read, and the quaternion isn't
// normalised: that of a scaled matrix has a length other than 1.
NodeTransform Decompose(const Matrix4& matrix);
