// 64-bit FNV-1a, the hash of the exporter's tables (http://www.isthe.com/chongo/tech/comp/fnv/).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

constexpr std::uint64_t kFnvOffsetBasis = 0xCBF29CE484222325u;
constexpr std::uint64_t kFnvPrime = 0x100000001B3u;

constexpr std::uint64_t Fnv1a(std::string_view bytes) {
  std::uint64_t hash = kFnvOffsetBasis;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * kFnvPrime;
  return hash;
}

// Hashes a pointer by its eight bytes and a text by its characters.
struct Fnv1aHash {
  using is_transparent = void;

  std::size_t operator()(const void* pointer) const {
    char bytes[sizeof pointer];
    std::memcpy(bytes, &pointer, sizeof pointer);
    return Fnv1a({bytes, sizeof bytes});
  }
  std::size_t operator()(std::string_view text) const { return Fnv1a(text); }
  // Else a text would be taken for a pointer.
  std::size_t operator()(const char* text) const { return Fnv1a(text); }
};
