#include "headless/triangulate.h"

#include "headless/polygon_area.h"

#include <GL/glu.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>

namespace headless {
namespace {

constexpr QuadTriangles kSplitFrom0 = {{0, 1, 2}, {0, 2, 3}};
constexpr QuadTriangles kSplitFrom1 = {{0, 1, 3}, {1, 2, 3}};

struct Point2 {
  double u = 0, v = 0;

  friend bool operator==(const Point2&, const Point2&) = default;
};

Point2 operator-(const Point2& a, const Point2& b) { return {a.u - b.u, a.v - b.v}; }
double Cross(const Point2& a, const Point2& b) { return a.u * b.v - a.v * b.u; }

using Outline = std::vector<Point2>;
using CornerTriangle = std::array<std::uint32_t, 3>;

// Projections of a polygon in which it runs counterclockwise.
enum class Projection {
  BestPlane,  // along the normal: true for polygons that are far from flat
  DropAxis,   // leaves out the normal's longest component: exact, so that what touches goes on touching
};

void Project(const float* points, std::span<const std::uint32_t> corners, const Vector3& normal,
             Projection projection, Outline& outline) {
  const Vector3 size = {std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)};
  Vector3 axis;
  if (size.x >= size.y && size.x >= size.z) {
    axis.x = normal.x > 0 ? 1 : -1;
  } else if (size.y >= size.z) {
    axis.y = normal.y > 0 ? 1 : -1;
  } else {
    axis.z = normal.z > 0 ? 1 : -1;
  }
  // A unit vector across the axis, and from it the frame (u, v, up).
  Vector3 u = {std::abs(axis.y), std::abs(axis.z), std::abs(axis.x)};
  Vector3 up = axis;
  if (projection == Projection::BestPlane) {
    up = Normalised(normal);
    u = Normalised(Cross(u, up));
  }
  const Vector3 v = Cross(up, u);
  outline.clear();
  for (const std::uint32_t corner : corners) {
    const Vector3 point = PointAt(points, corner);
    outline.push_back({Dot(point, u), Dot(point, v)});
  }
}

// Twice the signed area.
double AreaOf(const Point2& a, const Point2& b, const Point2& c) { return Cross(b - a, c - a); }

double AreaOf(const Outline& outline) {
  double sum = 0;
  for (std::size_t corner = 2; corner < outline.size(); ++corner) {
    sum += AreaOf(outline[0], outline[corner - 1], outline[corner]);
  }
  return sum;
}

// Seen from the first corner the others turn left one by one. (Where they go all the way round the polygon
// crosses itself, and a fan is what it gets anyhow.)
bool FanCovers(const Outline& outline) {
  for (std::size_t corner = 2; corner < outline.size(); ++corner) {
    if (!(AreaOf(outline[0], outline[corner - 1], outline[corner]) > 0)) return false;
  }
  return true;
}

double LengthOf(const Point2& a) { return std::hypot(a.u, a.v); }

// Whether two edges cross, by more than rounding could make them.
bool DoCross(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
  constexpr double kClear = 1e-7;  // of their lengths
  const double margin = kClear * LengthOf(b - a) * LengthOf(d - c);
  const auto parts = [margin](double left, double right) {
    return (left > margin && right < -margin) || (left < -margin && right > margin);
  };
  return parts(AreaOf(a, b, c), AreaOf(a, b, d)) && parts(AreaOf(c, d, a), AreaOf(c, d, b));
}

// Whether edges of a polygon cross. The tessellator finds that too, but only when it has met every crossing, of
// which there may be one for each two edges. A polygon of which too many edges lie side by side counts as well.
bool CrossesItself(const Outline& outline) {
  constexpr std::size_t kFewCorners = 16;  // soon tessellated, whatever they do
  constexpr std::size_t kMostPairs = 100'000'000;
  const std::size_t size = outline.size();
  if (size <= kFewCorners) return false;
  const auto begin = [&](std::size_t edge) { return outline[edge]; };
  const auto end = [&](std::size_t edge) { return outline[edge + 1 < size ? edge + 1 : 0]; };
  std::vector<std::size_t> order(size), open;
  std::iota(order.begin(), order.end(), std::size_t{0});
  const auto left = [&](std::size_t edge) { return std::min(begin(edge).u, end(edge).u); };
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return left(a) < left(b); });
  std::size_t pairs = 0;
  for (const std::size_t edge : order) {
    std::erase_if(open, [&](std::size_t other) { return std::max(begin(other).u, end(other).u) < left(edge); });
    pairs += open.size();
    if (pairs > kMostPairs) return true;
    for (const std::size_t other : open)
      if (DoCross(begin(edge), end(edge), begin(other), end(other))) return true;
    open.push_back(edge);
  }
  return false;
}

// Whether the triangle's place at `at` lies inside of the polygon as seen from the corner, between the edge
// that leaves it and the edge that comes in.
bool HoldsTriangle(const Outline& outline, std::size_t corner, const Point2& left, const Point2& right) {
  const std::size_t size = outline.size();
  const Point2& at = outline[corner];
  const Point2 next = outline[(corner + 1) % size] - at;
  const Point2 previous = outline[(corner + size - 1) % size] - at;
  const Point2 a = left - at;
  const Point2 b = right - at;
  const double lengthA = LengthOf(a);
  const double lengthB = LengthOf(b);
  const Point2 middle = {a.u * lengthB + b.u * lengthA, a.v * lengthB + b.v * lengthA};
  if (Cross(next, previous) > 0) return Cross(next, middle) > 0 && Cross(middle, previous) > 0;
  return !(Cross(previous, middle) > 0 && Cross(middle, next) > 0);
}

// The tessellator takes corners at one place for one corner. Gives each triangle the corner that it belongs
// to, as two points at one place may differ in all else.
void SeparateCorners(const Outline& outline, std::vector<CornerTriangle>& triangles) {
  std::vector<std::uint32_t> order(outline.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto before = [&](std::uint32_t a, std::uint32_t b) {
    const Point2& p = outline[a];
    const Point2& q = outline[b];
    return p.u != q.u ? p.u < q.u : p.v < q.v;
  };
  std::stable_sort(order.begin(), order.end(), before);
  const auto same = [&](std::uint32_t a, std::uint32_t b) { return outline[a] == outline[b]; };
  if (std::adjacent_find(order.begin(), order.end(), same) == order.end()) return;
  for (CornerTriangle& triangle : triangles) {
    const CornerTriangle merged = triangle;
    for (std::size_t place = 0; place < 3; ++place) {
      const Point2& left = outline[merged[(place + 1) % 3]];
      const Point2& right = outline[merged[(place + 2) % 3]];
      const auto [begin, end] = std::equal_range(order.begin(), order.end(), merged[place], before);
      const auto holds = [&](std::uint32_t corner) { return HoldsTriangle(outline, corner, left, right); };
      const auto found = std::find_if(begin, end, holds);
      if (found != end) triangle[place] = *found;
    }
  }
}

}  // namespace

const QuadTriangles& SplitQuad(const float* points, const std::uint32_t* corners) {
  const Vector3 origin = PointAt(points, corners[0]);
  const Vector3 p1 = PointAt(points, corners[1]) - origin;
  const Vector3 p2 = PointAt(points, corners[2]) - origin;
  const Vector3 p3 = PointAt(points, corners[3]) - origin;
  const Vector3 p13 = p3 - p1;
  const Vector3 normal = Cross(p2, p13);
  const bool from0 = Dot(Cross(p1, p2), normal) > 0 && Dot(Cross(p2, p3), normal) > 0;
  const bool from1 = Dot(Cross(p1, p3), normal) > 0 && Dot(Cross(p2 - p1, p13), normal) > 0;
  if (from0 != from1) return from0 ? kSplitFrom0 : kSplitFrom1;
  return Dot(p2, p2) <= Dot(p13, p13) ? kSplitFrom0 : kSplitFrom1;
}

// The tessellator calls back from C, so nothing may be thrown there: all room is made before.
struct Triangulator::Impl {
  GLUtesselator* tessellator = nullptr;
  Outline outline;
  std::vector<std::array<GLdouble, 3>> vertices;
  std::vector<std::uint32_t> corners;
  std::vector<CornerTriangle> triangles;
  bool failed = false, outOfMemory = false;

  Impl() : tessellator(gluNewTess()) {
    if (!tessellator) throw std::bad_alloc();
    gluTessProperty(tessellator, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_POSITIVE);
    gluTessNormal(tessellator, 0, 0, 1);
    gluTessCallback(tessellator, GLU_TESS_VERTEX_DATA, reinterpret_cast<_GLUfuncptr>(&AddVertex));
    gluTessCallback(tessellator, GLU_TESS_ERROR_DATA, reinterpret_cast<_GLUfuncptr>(&Fail));
    // Asking for edge flags makes it give single triangles; no combine callback, so that a polygon that
    // crosses itself is an error.
    gluTessCallback(tessellator, GLU_TESS_EDGE_FLAG, reinterpret_cast<_GLUfuncptr>(&IgnoreEdge));
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { gluDeleteTess(tessellator); }

  static void AddVertex(void* vertex, void* self);
  static void Fail(GLenum error, void* self) {
    static_cast<Impl*>(self)->failed = true;
    static_cast<Impl*>(self)->outOfMemory |= error == GLU_OUT_OF_MEMORY;
  }
  static void IgnoreEdge(GLboolean) {}

  bool Tessellate();
};

void Triangulator::Impl::AddVertex(void* vertex, void* self) {
  Impl& impl = *static_cast<Impl*>(self);
  if (impl.corners.size() == impl.corners.capacity()) {
    impl.failed = true;
    return;
  }
  const auto* position = static_cast<const std::array<GLdouble, 3>*>(vertex);
  impl.corners.push_back(static_cast<std::uint32_t>(position - impl.vertices.data()));
}

// Fills `triangles` from the outline. False when they don't cover it once and for all.
bool Triangulator::Impl::Tessellate() {
  failed = false;
  vertices.clear();
  for (const Point2& point : outline) vertices.push_back({point.u, point.v, 0});
  corners.clear();
  corners.reserve(outline.size() * 6);
  gluTessBeginPolygon(tessellator, this);
  gluTessBeginContour(tessellator);
  for (std::array<GLdouble, 3>& vertex : vertices) gluTessVertex(tessellator, vertex.data(), &vertex);
  gluTessEndContour(tessellator);
  gluTessEndPolygon(tessellator);
  if (outOfMemory) throw std::bad_alloc();
  if (failed || corners.size() % 3 != 0) return false;

  triangles.clear();
  double covered = 0;
  for (std::size_t place = 0; place < corners.size(); place += 3) {
    triangles.push_back({corners[place], corners[place + 1], corners[place + 2]});
    covered += AreaOf(outline[corners[place]], outline[corners[place + 1]], outline[corners[place + 2]]);
  }
  const double area = AreaOf(outline);
  return std::abs(covered - area) <= 1e-6 * area;
}

Triangulator::Triangulator() : impl_(std::make_unique<Impl>()) {}

Triangulator::~Triangulator() = default;

void Triangulator::Append(const float* points, std::span<const std::uint32_t> corners,
                          std::vector<std::uint32_t>& triangles) {
  const Vector3 normal = AreaVector(points, corners);
  const bool hasArea = Dot(normal, normal) > 0;
  for (const Projection projection : {Projection::BestPlane, Projection::DropAxis}) {
    if (!hasArea) break;
    Project(points, corners, normal, projection, impl_->outline);
    if (FanCovers(impl_->outline)) break;
    if (CrossesItself(impl_->outline) || !impl_->Tessellate()) continue;
    SeparateCorners(impl_->outline, impl_->triangles);
    for (const CornerTriangle& triangle : impl_->triangles) {
      for (const std::uint32_t corner : triangle) triangles.push_back(corners[corner]);
    }
    return;
  }
  for (std::size_t corner = 2; corner < corners.size(); ++corner) {
    triangles.insert(triangles.end(), {corners[0], corners[corner - 1], corners[corner]});
  }
}

}  // namespace headless
