// Finds a point's place by its id.
#pragma once

#include "host/mesh_api.h"

#include <cstdint>
#include <unordered_map>

constexpr std::uint32_t kUnknownPoint = 0xFFFFFFFFu;

// Ids that count up by one from the first, as most hosts give them, cost no table.
class PointIndexTable {
 public:
  // Enters the id; one that is already there keeps its place. Places must come in order, from 0.
  void Add(ZyPointId id, std::uint32_t place) {
    if (place == 0) {
      firstId_ = id;
      runLength_ = 1;
    } else if (runLength_ == place && id == firstId_ + place) {
      ++runLength_;
    } else if (!InRun(id)) {
      placeById_.try_emplace(id, place);
    }
  }

  // kUnknownPoint for an id that wasn't entered.
  std::uint32_t Find(ZyPointId id) const {
    if (InRun(id)) return static_cast<std::uint32_t>(id - firstId_);
    const auto found = placeById_.find(id);
    return found == placeById_.end() ? kUnknownPoint : found->second;
  }

 private:
  bool InRun(ZyPointId id) const { return id - firstId_ < runLength_; }

  ZyPointId firstId_ = 0;
  std::uint64_t runLength_ = 0;                             // ids firstId_ and up, whose places count from 0
  std::unordered_map<ZyPointId, std::uint32_t> placeById_;  // all others
};
