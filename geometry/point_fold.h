// Folds the corners of each point into distinct entries. What makes two corners one entry is the caller's;
// entries of different points are never one. So an entry is looked for in a short list per point instead of
// in one large hash table.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

class PointFold {
 public:
  // `corners` is the most that will be folded; few corners of a large mesh cost no table of all its points.
  PointFold(std::size_t pointCount, std::size_t corners) : dense_(corners * 8 >= pointCount) {
    if (dense_) heads_.assign(pointCount, kNone);
    next_.reserve(corners < pointCount * 2 ? corners : pointCount * 2);
  }

  // The number of the point's entry for which `same(entry)` holds; without one a new entry, whose number is
  // the count of entries so far. `hash()` must give equal numbers for corners that are the same.
  template <class Same, class Hash>
  std::uint32_t Fold(std::uint32_t point, Same same, Hash hash) {
    std::uint32_t* link = &Head(point);
    for (int length = 0; *link != kNone; link = &next_[*link]) {
      if (same(*link)) return *link;
      if (++length == kLongest) return FoldOverflow(point, same, hash());
    }
    *link = Count();  // before next_ grows, which moves what link points at
    next_.push_back(kNone);
    return Count() - 1;
  }

  std::uint32_t Count() const { return static_cast<std::uint32_t>(next_.size()); }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;
  // A list that grew to this length goes on in a hash table: the tip of a flat-shaded cone has as many
  // normals as the cone has sides.
  static constexpr int kLongest = 32;

  std::uint32_t& Head(std::uint32_t point) {
    return dense_ ? heads_[point] : sparseHeads_.try_emplace(point, kNone).first->second;
  }

  template <class Same>
  std::uint32_t FoldOverflow(std::uint32_t point, Same same, std::uint64_t hash) {
    const std::uint64_t key = (hash ^ point) * 0x9E3779B97F4A7C15u;
    const auto [first, last] = overflow_.equal_range(key);
    for (auto entry = first; entry != last; ++entry)
      if (entry->second.point == point && same(entry->second.number)) return entry->second.number;
    overflow_.emplace(key, OverflowEntry{point, Count()});
    next_.push_back(kNone);
    return Count() - 1;
  }

  struct OverflowEntry {
    std::uint32_t point;
    std::uint32_t number;
  };

  bool dense_;
  std::vector<std::uint32_t> heads_;  // per point: its first entry
  std::unordered_map<std::uint32_t, std::uint32_t> sparseHeads_;
  std::vector<std::uint32_t> next_;  // per entry: the point's next one
  std::unordered_multimap<std::uint64_t, OverflowEntry> overflow_;
};
