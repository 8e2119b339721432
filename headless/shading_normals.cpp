#include "headless/shading_normals.h"

#include "headless/polygon_area.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>

namespace headless {
namespace {

// Rounding of unit vectors mustn't part coplanar polygons, nor those that bend by the angle exactly.
constexpr double kCosineSlack = 1e-12;

// Up to so many corners at a point each is compared with each. Beyond it facings are sorted into bins, whose
// number is bounded: a sixteenth wide on each axis.
constexpr std::size_t kMostPairs = 1024;
constexpr int kBinsPerUnit = 16;
constexpr int kBinsPerAxis = 2 * kBinsPerUnit + 1;

struct Facing {
  Vector3 area;
  Vector3 unit;  // (0, 0, 0) without area

  bool HasArea() const { return unit.x != 0 || unit.y != 0 || unit.z != 0; }
};

struct CornerAtPoint {
  std::uint32_t polygon = 0;
  std::uint32_t corner = 0;
};

std::vector<Facing> MeasurePolygons(const MeshData& mesh) {
  std::vector<Facing> facings(mesh.PolygonCount());
  for (std::size_t polygon = 0; polygon < facings.size(); ++polygon) {
    const std::uint32_t begin = mesh.polygonStarts[polygon];
    const std::uint32_t end = mesh.polygonStarts[polygon + 1];
    const Vector3 area = AreaVector(mesh.points.data(), {mesh.polygonPoints.data() + begin, end - begin});
    facings[polygon] = {area, Normalised(area)};
  }
  return facings;
}

// The corners of each point, in polygon order: those of point i are starts[i] up to starts[i + 1].
struct CornersByPoint {
  std::vector<std::uint32_t> starts;
  std::vector<CornerAtPoint> corners;
};

CornersByPoint GatherCorners(const MeshData& mesh) {
  CornersByPoint gathered;
  // Counted one place further on: filling moves each start up to where the next point's begins.
  std::vector<std::uint32_t>& starts = gathered.starts;
  starts.assign(std::size_t{mesh.PointCount()} + 2, 0);
  for (const std::uint32_t point : mesh.polygonPoints) ++starts[std::size_t{point} + 2];
  for (std::size_t place = 3; place < starts.size(); ++place) starts[place] += starts[place - 1];
  gathered.corners.resize(mesh.polygonPoints.size());
  for (std::uint32_t polygon = 0; polygon < mesh.PolygonCount(); ++polygon) {
    for (std::uint32_t corner = mesh.polygonStarts[polygon]; corner < mesh.polygonStarts[polygon + 1]; ++corner) {
      gathered.corners[starts[std::size_t{mesh.polygonPoints[corner]} + 1]++] = {polygon, corner};
    }
  }
  return gathered;
}

// Works out the normals of the corners at one point after the other.
class PointSmoother {
 public:
  PointSmoother(const MeshData& mesh, std::vector<double>& normals)
      : facings_(MeasurePolygons(mesh)),
        normals_(normals),
        smoothsAll_(mesh.smoothingAngle >= std::numbers::pi),
        cosine_(std::cos(mesh.smoothingAngle) - kCosineSlack),
        halfCosine_(std::cos(mesh.smoothingAngle / 2) + kCosineSlack) {}

  void Smooth(std::span<const CornerAtPoint> corners) {
    if (smoothsAll_ || BendLittle(corners)) {
      SmoothTogether(corners);
    } else if (corners.size() <= kMostPairs) {
      SmoothByPairs(corners);
    } else {
      SmoothByBins(corners);
    }
  }

 private:
  struct Bin {
    Vector3 unit;  // of the first polygon
    Vector3 area;
    Vector3 normal;
  };

  const Facing& FacingOf(const CornerAtPoint& corner) const { return facings_[corner.polygon]; }

  void Put(const CornerAtPoint& corner, const Vector3& normal) {
    double* out = &normals_[std::size_t{3} * corner.corner];
    out[0] = normal.x;
    out[1] = normal.y;
    out[2] = normal.z;
  }

  // Calls with each polygon that has an area, once also when it names the point more than once.
  template <class Action>
  void ForEachFacing(std::span<const CornerAtPoint> corners, const Action& action) const {
    std::uint32_t last = kNone;
    for (const CornerAtPoint& corner : corners) {
      if (corner.polygon != last && FacingOf(corner).HasArea()) action(FacingOf(corner));
      last = corner.polygon;
    }
  }

  // All lie within half the angle of the first, so within the angle of each other.
  bool BendLittle(std::span<const CornerAtPoint> corners) const {
    const Facing* first = nullptr;
    bool little = true;
    ForEachFacing(corners, [&](const Facing& facing) {
      if (!first) first = &facing;
      little = little && Dot(first->unit, facing.unit) >= halfCosine_;
    });
    return little;
  }

  void SmoothTogether(std::span<const CornerAtPoint> corners) {
    Vector3 sum;
    ForEachFacing(corners, [&](const Facing& facing) { sum += facing.area; });
    const Vector3 normal = Normalised(sum);
    for (const CornerAtPoint& corner : corners) {
      Put(corner, smoothsAll_ || FacingOf(corner).HasArea() ? normal : Vector3{});
    }
  }

  void SmoothByPairs(std::span<const CornerAtPoint> corners) {
    for (const CornerAtPoint& corner : corners) {
      const Facing& own = FacingOf(corner);
      Vector3 sum;
      ForEachFacing(corners, [&](const Facing& other) {
        if (&other == &own || Dot(own.unit, other.unit) >= cosine_) sum += other.area;
      });
      Put(corner, own.HasArea() ? Normalised(sum) : Vector3{});
    }
  }

  void SmoothByBins(std::span<const CornerAtPoint> corners) {
    binNumbers_.assign(std::size_t{kBinsPerAxis} * kBinsPerAxis * kBinsPerAxis, kNone);
    bins_.clear();
    ForEachFacing(corners, [&](const Facing& facing) {
      std::uint32_t& number = binNumbers_[BinPlace(facing.unit)];
      if (number == kNone) {
        number = static_cast<std::uint32_t>(bins_.size());
        bins_.push_back({facing.unit, {}, {}});
      }
      bins_[number].area += facing.area;
    });
    for (Bin& bin : bins_) {
      Vector3 sum;
      for (const Bin& other : bins_) {
        if (&other == &bin || Dot(bin.unit, other.unit) >= cosine_) sum += other.area;
      }
      bin.normal = Normalised(sum);
    }
    for (const CornerAtPoint& corner : corners) {
      const Facing& own = FacingOf(corner);
      Put(corner, own.HasArea() ? bins_[binNumbers_[BinPlace(own.unit)]].normal : Vector3{});
    }
  }

  static std::size_t BinPlace(const Vector3& unit) {
    const auto bin = [](double value) -> std::size_t {
      return std::clamp(static_cast<int>(std::lround(value * kBinsPerUnit)) + kBinsPerUnit, 0, kBinsPerAxis - 1);
    };
    return (bin(unit.x) * kBinsPerAxis + bin(unit.y)) * kBinsPerAxis + bin(unit.z);
  }

  std::vector<Facing> facings_;
  std::vector<double>& normals_;
  bool smoothsAll_;
  double cosine_;
  double halfCosine_;
  std::vector<std::uint32_t> binNumbers_;
  std::vector<Bin> bins_;
};

}  // namespace

std::vector<double> CalculateCornerNormals(const MeshData& mesh) {
  std::vector<double> normals(mesh.polygonPoints.size() * 3);
  const CornersByPoint gathered = GatherCorners(mesh);
  PointSmoother smoother(mesh, normals);
  for (std::size_t point = 0; point < mesh.PointCount(); ++point) {
    const std::uint32_t begin = gathered.starts[point];
    const std::uint32_t end = gathered.starts[point + 1];
    if (begin != end) smoother.Smooth({gathered.corners.data() + begin, end - begin});
  }
  return normals;
}

}  // namespace headless
