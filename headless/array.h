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
    size_ = owned->size();
    data_ = {owned, owned->data()};
  }
  // A view that keeps `owner` alive, a mapped file for instance.
  Array(std::span<const T> values, const std::shared_ptr<const void>& owner)
      : data_(owner, values.data()), size_(values.size()) {}

  const T& operator[](std::size_t index) const { return data()[index]; }
  const T* data() const { return data_.get(); }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const T* begin() const { return data(); }
  const T* end() const { return data() + size_; }

 private:
  std::shared_ptr<const T> data_;  // together with what it lies in
  std::size_t size_ = 0;
};

}  // namespace headless
