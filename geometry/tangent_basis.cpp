#include "geometry/tangent_basis.h"

#include <cmath>

namespace {

constexpr float kTolerance = -0.0000019073486328125f;  // -2^-19

float Divide(float component, float length) { return static_cast<float>(double{component} / double{length}); }

}  // namespace

bool PassesAsOrthonormal(const TangentBasis& basis, const Normal3f& n) {
  const auto [t0, t1, t2, b0, b1, b2] = basis;
  if (t0 == 0 && t1 == 0 && t2 == 0) return true;
  const float d = (t1 * b2 - t2 * b1) + (b0 * t2 - t0 * b2) + (t0 * b1 - b0 * t1) - (n[1] + n[0] + n[2]);
  return d > kTolerance;  // a NaN fails
}

std::array<float, 4> TangentOf(const TangentBasis& basis, const Normal3f& n) {
  const auto [t0, t1, t2, b0, b1, b2] = basis;
  const float h = (n[2] * t0 - n[0] * t2) * b1 + (n[1] * t2 - n[2] * t1) * b0 + (n[0] * t1 - n[1] * t0) * b2;
  const float sign = h < 0 ? -1.0f : 1.0f;
  const float length = std::sqrt(t0 * t0 + t1 * t1 + t2 * t2);
  if (length > 0) return {Divide(t0, length), Divide(t1, length), Divide(t2, length), sign};
  return {1, 0, 0, sign};
}
