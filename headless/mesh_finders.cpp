#include "headless/mesh_finders.h"

namespace headless {

std::uint32_t CornerFinder::FindMarked(std::uint32_t polygon, std::uint32_t point) {
  if (marked_ != polygon) MarkCorners(polygon);
  return marks_[point].polygon == polygon ? marks_[point].corner : kNone;
}

// Backwards, so that the first of several corners at a point stays.
void CornerFinder::MarkCorners(std::uint32_t polygon) {
  if (marks_.empty()) marks_.resize(mesh_.PointCount());
  for (std::uint32_t corner = starts_[polygon + 1]; corner-- != starts_[polygon];) {
    marks_[points_[corner]] = {polygon, corner};
  }
  marked_ = polygon;
}

}  // namespace headless
