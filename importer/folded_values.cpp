#include "importer/folded_values.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace importer {
namespace {

std::uint64_t HashOf(std::span<const float> value) {
  std::uint64_t hash = 0x9E3779B97F4A7C15u;
  for (const float part : value) {
    std::uint32_t bits;
    std::memcpy(&bits, &part, sizeof(bits));
    hash = (hash ^ bits) * 0xFF51AFD7ED558CCDu;
    hash ^= hash >> 32;
  }
  return hash;
}

}  // namespace

std::uint32_t FoldedValues::Place(std::span<const float> value) {
  std::array<float, 8> key = {};
  std::transform(value.begin(), value.end(), key.begin(), [](float part) { return part == 0 ? 0.0f : part; });
  const std::span<const float> wanted(key.data(), dimension_);
  std::size_t slot = FindSlot(wanted);
  if (slots_[slot] == 0) {
    if (std::size_t{Count()} * 2 >= slots_.size()) {
      Grow();
      slot = FindSlot(wanted);
    }
    values_.insert(values_.end(), wanted.begin(), wanted.end());
    slots_[slot] = Count();
  }
  return slots_[slot] - 1;
}

std::size_t FoldedValues::FindSlot(std::span<const float> value) const {
  std::size_t slot = HashOf(value) & (slots_.size() - 1);
  while (slots_[slot] != 0 && std::memcmp(At(slots_[slot] - 1).data(), value.data(), value.size_bytes()) != 0)
    slot = (slot + 1) & (slots_.size() - 1);
  return slot;
}

void FoldedValues::Grow() {
  slots_.assign(slots_.size() * 2, 0);
  for (std::uint32_t place = 0; place < Count(); ++place) slots_[FindSlot(At(place))] = place + 1;
}

}  // namespace importer
