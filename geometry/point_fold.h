// Folds corners into distinct entries. What makes two corners one entry is the caller's; entries of different
// points are never one. So an entry is looked for in a short list per point instead of in one large hash table.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

class PointFold {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  PointFold() = default;
  PointFold(std::size_t pointCount, std::size_t expectedEntries) : heads_(pointCount, kNone) {
    next_.reserve(expectedEntries);
  }

  // The number of the point's entry for which `same(entry)` holds, kNone without one. `hash()` must give equal
  // numbers for corners that are the same.
  template <class Same, class Hash>
  std::uint32_t Find(std::uint32_t point, Same same, Hash hash) const {
    int length = 0;
    for (std::uint32_t entry = heads_[point]; entry != kNone; entry = next_[entry], ++length)
      if (same(entry)) return entry;
    return length < kLongest ? kNone : FindOverflow(point, same, hash());
  }

  // The same without a look at the entries of a full list that stand in the hash table.
  template <class Same>
  std::uint32_t FindListed(std::uint32_t point, Same same) const {
    for (std::uint32_t entry = heads_[point]; entry != kNone; entry = next_[entry])
      if (same(entry)) return entry;
    return kNone;
  }

  // Adds an entry to the point; its number is the count of entries so far.
  template <class Hash>
  std::uint32_t Append(std::uint32_t point, Hash hash) {
    const auto number = static_cast<std::uint32_t>(next_.size());
    next_.push_back(kNone);
    if (IsFull(point)) {
      overflow_.emplace(KeyOf(point, hash()), OverflowEntry{point, number});
    } else {
      next_[number] = heads_[point];
      heads_[point] = number;
    }
    return number;
  }

 private:
  // A list that grew to this length goes on in a hash table: the tip of a flat-shaded cone has as many
  // normals as the cone has sides.
  static constexpr int kLongest = 32;

  static std::uint64_t KeyOf(std::uint32_t point, std::uint64_t hash) {
    return (hash ^ point) * 0x9E3779B97F4A7C15u;
  }

  bool IsFull(std::uint32_t point) const {
    int length = 0;
    for (std::uint32_t entry = heads_[point]; entry != kNone; entry = next_[entry]) ++length;
    return length == kLongest;
  }

  template <class Same>
  std::uint32_t FindOverflow(std::uint32_t point, Same same, std::uint64_t hash) const {
    const auto [first, last] = overflow_.equal_range(KeyOf(point, hash));
    for (auto entry = first; entry != last; ++entry)
      if (entry->second.point == point && same(entry->second.number)) return entry->second.number;
    return kNone;
  }

  struct OverflowEntry {
    std::uint32_t point;
    std::uint32_t number;
  };

  std::vector<std::uint32_t> heads_;  // per point: its latest entry
  std::vector<std::uint32_t> next_;   // per entry: the point's one before
  std::unordered_multimap<std::uint64_t, OverflowEntry> overflow_;
};
