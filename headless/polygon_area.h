// The area vector of a polygon.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace headless {

struct Vector3 {
  double x = 0, y = 0, z = 0;

  Vector3& operator+=(const Vector3& other) {
    x += other.x;
    y += other.y;
    z += other.z;
    return *this;
  }
};

inline Vector3 operator-(const Vector3& a, const Vector3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline double Dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector3 Cross(const Vector3& a, const Vector3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
// (0, 0, 0) stays as it is.
inline Vector3 Normalised(const Vector3& v) {
  const double length = std::sqrt(Dot(v, v));
  return length > 0 ? Vector3{v.x / length, v.y / length, v.z / length} : Vector3{};
}

inline Vector3 PointAt(const float* points, std::uint32_t index) {
  const float* point = points + std::size_t{3} * index;
  return {point[0], point[1], point[2]};
}

// Along the normal of the plane that fits best (Newell), twice the polygon's area long. `points` holds
// x, y, z per point; `corners` are the points of the polygon's corners.
inline Vector3 AreaVector(const float* points, std::span<const std::uint32_t> corners) {
  Vector3 sum;
  if (corners.size() < 3) return sum;
  // From the first corner, so that small polygons far from the origin keep their digits.
  const Vector3 origin = PointAt(points, corners[0]);
  Vector3 last = PointAt(points, corners[1]) - origin;
  for (std::size_t corner = 2; corner < corners.size(); ++corner) {
    const Vector3 next = PointAt(points, corners[corner]) - origin;
    sum += Cross(last, next);
    last = next;
  }
  return sum;
}

}  // namespace headless
