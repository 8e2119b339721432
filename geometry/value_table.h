// Folds values into a table of distinct ones.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>
#include <vector>

// Mixes numbers into a hash; -0.0 counts as 0.0, which it equals.
template <class T, std::size_t N>
void HashNumbers(std::uint64_t& hash, const std::array<T, N>& numbers) {
  using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  for (const T number : numbers) {
    hash = (hash ^ std::bit_cast<Bits>(static_cast<T>(number + T(0)))) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  }
}

// Finds values of N numbers in a data vector that it appends to. Numbers compare with ==, without any
// tolerance: -0.0 equals 0.0 and the value entered first stays; a NaN equals nothing.
template <class T, std::size_t N>
class ValueTable {
 public:
  using Value = std::array<T, N>;

  // The place of the value in `data`, which is appended to when it isn't there. `data` must be the same
  // vector at every call.
  std::uint32_t Fold(const Value& value, std::vector<Value>& data) {
    if (data.size() * 2 >= slots_.size()) Resize(data, std::max<std::size_t>(64, 2 * slots_.size()));
    std::size_t slot = Hash(value) & (slots_.size() - 1);
    while (slots_[slot] != kEmpty) {
      if (data[slots_[slot]] == value) return slots_[slot];
      slot = (slot + 1) & (slots_.size() - 1);
    }
    const auto place = static_cast<std::uint32_t>(data.size());
    slots_[slot] = place;
    data.push_back(value);
    return place;
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;

  static std::uint64_t Hash(const Value& value) {
    std::uint64_t hash = 0;
    HashNumbers(hash, value);
    return hash;
  }

  void Resize(const std::vector<Value>& data, std::size_t slots) {
    slots_.assign(slots, kEmpty);
    for (std::uint32_t place = 0; place < data.size(); ++place) {
      std::size_t slot = Hash(data[place]) & (slots - 1);
      while (slots_[slot] != kEmpty) slot = (slot + 1) & (slots - 1);
      slots_[slot] = place;
    }
  }

  std::vector<std::uint32_t> slots_;  // open addressing; a power of two of them, at most half full
};
