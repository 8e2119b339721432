// The tables of distinct values that corners refer to. That they hash bytes but compare numbers is a settled
// property of the output: 0.0 and -0.0 are one entry while they share a bucket, mostly up to 64 entries, and two
// from then on.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

// Folds values of N numbers, of which the first `Compared` tell them apart. Numbers compare with ==, without any
// tolerance; a NaN equals nothing.
template <class T, std::size_t N, std::size_t Compared = N>
class ValueTable {
 public:
  using Value = std::array<T, N>;

  // The number of the value's entry; entries count from 0 in the order in which they were entered.
  std::uint32_t Fold(const Value& value) {
    const std::uint64_t hash = HashBytes(value);
    for (std::uint32_t entry = heads_[BucketOf(hash)]; entry != kNone; entry = entries_[entry].next)
      if (std::equal(value.begin(), value.begin() + Compared, entries_[entry].value.begin())) return entry;
    if (entries_.size() == heads_.size()) Grow();
    entries_.push_back({value, hash, kNone});
    Link(Size() - 1);
    return Size() - 1;
  }

  const Value& operator[](std::uint32_t entry) const { return entries_[entry].value; }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(entries_.size()); }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  struct Entry {
    Value value;
    std::uint64_t hash;
    std::uint32_t next;  // in its bucket
  };

  // FNV-1 with the constants of its 32-bit form on a 64-bit state.
  static std::uint64_t HashBytes(const Value& value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, value.data(), sizeof value);
    std::uint64_t hash = 2166136261u;
    for (const unsigned char byte : bytes) hash = (hash * 16777619u) ^ byte;
    return hash;
  }

  std::size_t BucketOf(std::uint64_t hash) const { return hash & (heads_.size() - 1); }

  void Link(std::uint32_t entry) {
    std::uint32_t& head = heads_[BucketOf(entries_[entry].hash)];
    entries_[entry].next = head;
    head = entry;
  }

  void Grow() {
    heads_.assign(heads_.size() * (heads_.size() < 512 ? 8 : 2), kNone);
    for (std::uint32_t entry = 0; entry < Size(); ++entry) Link(entry);
  }

  std::vector<std::uint32_t> heads_ = std::vector<std::uint32_t>(8, kNone);  // a power of two; first entries
  std::vector<Entry> entries_;                                               // at most one per bucket on average
};

// What the values of corners are in such a table. Without a negative zero each value is its own entry, so that
// meshes that have none cost no table.
template <class T, std::size_t N>
class ValueEntries {
 public:
  using Value = std::array<T, N>;

  // The entry that the next corner refers to. `known` are those of the corners before it.
  Value EntryOf(const Value& value, const std::vector<Value>& known) {
    if (!table_) {
      if (!HasNegativeZero(value)) return value;
      table_.emplace();
      for (const Value& entry : known) table_->Fold(entry);
    }
    return (*table_)[table_->Fold(value)];
  }

 private:
  static bool HasNegativeZero(const Value& value) {
    return std::any_of(value.begin(), value.end(), [](T number) { return number == 0 && std::signbit(number); });
  }

  std::optional<ValueTable<T, N>> table_;
};
