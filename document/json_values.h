// Small JSON values in the document's allocator.
#pragma once

#include "document/document.h"

#include <array>

// Prints with the digits of the double that equals the f32.
inline double AsF32(double value) {
  // Where g++ 12 vectorises a conversion there and back it leaves both out; it can't see through a volatile.
  volatile const float rounded = static_cast<float>(value);
  return static_cast<double>(rounded);
}

inline JsonValue TextValue(const std::string& text, JsonAllocator& allocator) {
  return JsonValue(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

template <std::size_t N>
JsonValue NumbersValue(const std::array<double, N>& numbers, JsonAllocator& allocator) {
  JsonValue array(rapidjson::kArrayType);
  array.Reserve(N, allocator);
  for (const double number : numbers) array.PushBack(number, allocator);
  return array;
}

template <std::size_t N>
JsonValue F32NumbersValue(std::array<double, N> numbers, JsonAllocator& allocator) {
  for (double& number : numbers) number = AsF32(number);
  return NumbersValue(numbers, allocator);
}

// Moves the value to the array's end and returns its index.
inline std::uint32_t AppendValue(JsonValue& array, JsonValue value, JsonAllocator& allocator) {
  array.PushBack(value, allocator);
  return array.Size() - 1;
}
