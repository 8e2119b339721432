// An array of plain values that is either owned or lies in a mapped file.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace headless {

// Immutable and cheap to copy: copies share the storage.
template <class T>
class Array {
 public:
  Array() = default;
  Array(std::vector<T> values) {  // NOLINT: an owned array is a vector's values
    auto owned = std::make_shared<const std::vector<T>>(std::move(values));
    values_ = *owned;
    owner_ = std::move(owned);
  }
  // A view that keeps `owner` alive, a mapped file for instance.
  Array(std::span<const T> values, std::shared_ptr<const void> owner)
      : values_(values), owner_(std::move(owner)) {}

  const T& operator[](std::size_t index) const { return values_[index]; }
  const T* data() const { return values_.data(); }
  std::size_t size() const { return values_.size(); }
  bool empty() const { return values_.empty(); }
  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

 private:
  std::span<const T> values_;
  std::shared_ptr<const void> owner_;
};

}  // namespace headless
