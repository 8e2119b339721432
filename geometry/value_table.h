// The table of distinct values that the corners of a mesh refer to. Its oddity is a settled property of the
// output: it compares numbers, by which 0.0 and -0.0 are equal, but within a bucket, for which it hashes bytes. So
// zeros of both signs are one entry in a table of up to 64 entries, and from then on two, but for some that differ
// in two signs.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

template <class T, std::size_t N>
bool HasZero(const std::array<T, N>& numbers) {
  return std::any_of(numbers.begin(), numbers.end(), [](T number) { return number == 0; });
}

template <class T, std::size_t N>
bool HasNegativeZero(const std::array<T, N>& numbers) {
  return std::any_of(numbers.begin(), numbers.end(), [](T number) { return number == 0 && std::signbit(number); });
}

// Mixes numbers into a hash; -0.0 counts as 0.0, which it equals.
template <class T, std::size_t N>
void HashNumbers(std::uint64_t& hash, const std::array<T, N>& numbers) {
  for (const T number : numbers) {
    hash = (hash ^ std::bit_cast<BitsOf<T>>(static_cast<T>(number + T(0)))) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  }
}

// The hash by whose low bits a value has its bucket: FNV-1 with the constants of its 32-bit form on a 64-bit
// state.
template <class T, std::size_t N>
std::uint64_t HashBytes(const std::array<T, N>& value) {
  unsigned char bytes[sizeof value];
  std::memcpy(bytes, value.data(), sizeof value);
  std::uint64_t hash = 2166136261u;
  for (const unsigned char byte : bytes) hash = (hash * 16777619u) ^ byte;
  return hash;
}

constexpr std::size_t kFirstBuckets = 8;
// How many buckets a table of this many gets when it is to hold an entry more than it has buckets.
constexpr std::size_t GrownBuckets(std::size_t buckets) { return buckets * (buckets < 512 ? 8 : 2); }

// Entries are found by what they equal, and only then by their bucket: there are few signs of zeros to choose
// from, while a bucket may hold any number of values, those of a hostile file for instance.
template <class T, std::size_t N>
class ValueTable {
 public:
  using Value = std::array<T, N>;

  explicit ValueTable(std::uint64_t buckets = kFirstBuckets) : buckets_(buckets) {}

  // The value of the entry for a value, which is entered when there is none. A NaN is a new entry each time.
  Value Fold(const Value& value) {
    if (std::any_of(value.begin(), value.end(), [](T number) { return std::isnan(number); })) {
      CountEntry();
      return value;
    }
    if (entries_.size() * 2 >= slots_.size()) Resize(std::max<std::size_t>(64, 2 * slots_.size()));
    const std::uint64_t hash = HashBytes(value);
    std::uint32_t& first = slots_[SlotOf(value)];
    for (std::uint32_t entry = first; entry != kNone; entry = entries_[entry].next)
      if (((entries_[entry].hash ^ hash) & (buckets_ - 1)) == 0) return entries_[entry].value;
    CountEntry();
    entries_.push_back({value, hash, first});
    first = static_cast<std::uint32_t>(entries_.size() - 1);
    return value;
  }

  std::uint64_t BucketCount() const { return buckets_; }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  struct Entry {
    Value value;
    std::uint64_t hash;
    std::uint32_t next;  // the one that equals it and was entered before
  };

  // A bucket for each entry at least.
  void CountEntry() {
    if (++count_ > buckets_) buckets_ = GrownBuckets(buckets_);
  }

  // The slot of the entries that equal the value, or the one for them.
  std::size_t SlotOf(const Value& value) const {
    std::uint64_t hash = 0;
    HashNumbers(hash, value);
    std::size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot] != kNone && entries_[slots_[slot]].value != value) slot = (slot + 1) & (slots_.size() - 1);
    return slot;
  }

  void Resize(std::size_t slots) {
    const std::vector<std::uint32_t> old = std::exchange(slots_, std::vector<std::uint32_t>(slots, kNone));
    for (const std::uint32_t first : old)
      if (first != kNone) slots_[SlotOf(entries_[first].value)] = first;
  }

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;  // open addressing; a power of two of them, at most half full
  std::uint64_t count_ = 0;           // of entries, NaNs included
  std::uint64_t buckets_;
};

template <class T, std::size_t N>
bool HasSameBits(const std::array<T, N>& left, const std::array<T, N>& right) {
  using Bits = std::array<BitsOf<T>, N>;
  return std::bit_cast<Bits>(left) == std::bit_cast<Bits>(right);
}

// Whether two values are one entry of a table: entries differ in their bits, and a NaN is a new one each time.
template <class T, std::size_t N>
bool IsSame(const std::array<T, N>& left, const std::array<T, N>& right) {
  return left == right && HasSameBits(left, right);
}

// The entries for the values of a mesh's corners, as one ValueTable of them all would give them. Only values that
// hold a zero can share an entry, and how many buckets there are matters only to those that would share one of the
// fewest there can be. So most meshes cost no table, or one of the few values that hold a zero.
template <class T, std::size_t N>
class ValueEntries {
 public:
  using Value = std::array<T, N>;

  // The entry for the next corner. `known` are those of the corners before it.
  Value Take(const Value& value, const std::vector<Value>& known) {
    if (!all_) {
      if (!zeros_ && !HasNegativeZero(value)) return value;
      if (!HasZero(value)) return value;
      if (!zeros_) KeepZeros(known, kFirstBuckets);
      if (HasSameBits(zeros_->Fold(value), value)) return value;
      all_.emplace();
      for (const Value& entry : known) all_->Fold(entry);
    }
    const std::uint64_t buckets = all_->BucketCount();
    const Value entry = all_->Fold(value);
    const bool givesUp = !hasGivenUp_ && buckets >= kManyBuckets && HasSameBits(entry, value);
    if (givesUp || all_->BucketCount() != buckets) ++generation_;
    if (givesUp) {
      KeepZeros(known, buckets);
      if (HasZero(entry)) zeros_->Fold(entry);
      all_.reset();
      hasGivenUp_ = true;
    }
    return entry;
  }

  // Counts the times from which an entry may stand for fewer values than before.
  std::uint64_t Generation() const { return generation_; }

 private:
  // Of so many, values that differ in signs of zeros hardly ever share one.
  static constexpr std::uint64_t kManyBuckets = 1u << 14;

  void KeepZeros(const std::vector<Value>& known, std::uint64_t buckets) {
    zeros_.emplace(buckets);
    for (const Value& entry : known)
      if (HasZero(entry)) zeros_->Fold(entry);
  }

  std::optional<ValueTable<T, N>> zeros_;  // of as many buckets as there are at least
  std::optional<ValueTable<T, N>> all_;    // made when the count of buckets matters, given up once when it is high
  bool hasGivenUp_ = false;
  std::uint64_t generation_ = 0;
};
