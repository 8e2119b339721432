#include "geometry/tangent_table.h"

#include <algorithm>

std::uint32_t TangentTable::Fold(const TangentBasis& basis, std::vector<TangentBasis>& data) {
  const std::uint64_t hash = HashBytes(basis);
  for (const Entry& entry : buckets_[hash & (buckets_.size() - 1)])
    if (std::equal(basis.begin(), basis.begin() + 4, entry.basis.begin())) return entry.index;

  if (size_ + 1 > buckets_.size()) Grow();
  const auto index = static_cast<std::uint32_t>(data.size());
  buckets_[hash & (buckets_.size() - 1)].push_back({basis, hash, index});
  ++size_;
  data.push_back(basis);
  return index;
}

void TangentTable::Grow() {
  std::vector<std::vector<Entry>> grown(GrownBuckets(buckets_.size()));
  for (const std::vector<Entry>& bucket : buckets_)
    for (const Entry& entry : bucket) grown[entry.hash & (grown.size() - 1)].push_back(entry);
  buckets_ = std::move(grown);
}
