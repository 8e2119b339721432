// Lookups of one accessor: from ids to points, from points to corners. Both remember the last answer, as the
// questions about a corner come in a row.
#pragma once

#include "headless/mesh_store.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace headless {

class PointFinder {
 public:
  explicit PointFinder(MeshStore& store)
      : store_(store),
        ids_(store.Data().pointIds.empty() ? nullptr : store.Data().pointIds.data()),
        count_(store.Data().PointCount()) {}

  // kNone for an unknown id.
  std::uint32_t Find(ZyPointId id) {
    if (!ids_) return id - 1 < count_ ? static_cast<std::uint32_t>(id - 1) : kNone;
    if (lastPoint_ == kNone || id != lastId_) {
      lastPoint_ = store_.FindExplicitId(id);
      lastId_ = id;
    }
    return lastPoint_;
  }

  // Whether Find of a point's id gives that point.
  bool AreDistinct() const { return !ids_ || store_.HasDistinctIds(); }
  ZyPointId IdOf(std::uint32_t point) const { return ids_ ? ids_[point] : ZyPointId{point} + 1; }
  std::uint32_t Count() const { return count_; }

 private:
  MeshStore& store_;
  const std::uint64_t* ids_;
  std::uint32_t count_;
  ZyPointId lastId_ = 0;
  std::uint32_t lastPoint_ = kNone;
};

class CornerFinder {
 public:
  explicit CornerFinder(const MeshData& mesh)
      : mesh_(mesh),
        starts_(mesh.polygonStarts.data()),
        points_(mesh.polygonPoints.data()),
        polygonCount_(mesh.PolygonCount()) {}

  // The polygon's first corner at the point, counted over the mesh; kNone when it has none there.
  std::uint32_t Find(std::uint32_t polygon, std::uint32_t point) {
    const std::uint32_t begin = starts_[polygon];
    const std::uint32_t end = starts_[polygon + 1];
    if (end - begin > kMostScanned) return FindMarked(polygon, point);
    for (std::uint32_t corner = begin; corner != end; ++corner) {
      if (points_[corner] == point) return corner;
    }
    return kNone;
  }

  // Polygon ids are the index + 1; kNone for an unknown id.
  std::uint32_t FindPolygon(ZyPolygonId id) const {
    return id - 1 < polygonCount_ ? static_cast<std::uint32_t>(id - 1) : kNone;
  }

 private:
  static constexpr std::uint32_t kMostScanned = 8;

  struct Mark {
    std::uint32_t polygon = kNone;
    std::uint32_t corner = kNone;
  };

  std::uint32_t FindMarked(std::uint32_t polygon, std::uint32_t point);
  void MarkCorners(std::uint32_t polygon);

  const MeshData& mesh_;
  const std::uint32_t* starts_;
  const std::uint32_t* points_;
  std::uint32_t polygonCount_;
  std::vector<Mark> marks_;  // per point, of the polygon that was marked last among those at the point
  std::uint32_t marked_ = kNone;
};

}  // namespace headless
