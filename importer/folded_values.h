// Distinct values of a fixed number of floats, in order of first sight.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace importer {

class FoldedValues {
 public:
  explicit FoldedValues(std::uint32_t dimension) : dimension_(dimension), slots_(16, 0) {}

  // The place of a value of `dimension` floats, compared bit by bit but for the sign of 0.
  std::uint32_t Place(std::span<const float> value);
  std::uint32_t Count() const { return static_cast<std::uint32_t>(values_.size() / dimension_); }
  std::span<const float> At(std::uint32_t place) const {
    return {values_.data() + std::size_t{place} * dimension_, dimension_};
  }
  std::vector<float> Take() { return std::move(values_); }

 private:
  std::size_t FindSlot(std::span<const float> value) const;
  void Grow();

  std::uint32_t dimension_;
  std::vector<float> values_;
  std::vector<std::uint32_t> slots_;  // place plus one, 0 for free; a power of two of them
};

}  // namespace importer
