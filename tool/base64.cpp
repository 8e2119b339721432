#include "tool/base64.h"

#include <cstdint>

namespace tool {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string EncodeBase64(std::span<const char> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t start = 0; start < bytes.size(); start += 3) {
    const std::size_t count = bytes.size() - start < 3 ? bytes.size() - start : 3;
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i)
      group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[start + i]) : 0u);
    for (std::size_t i = 0; i < 4; ++i) text += i <= count ? kDigits[group >> (18 - 6 * i) & 63] : '=';
  }
  return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  while (text.ends_with('=') && text.size() % 4 != 1) text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t bits = 0;
  int count = 0;  // of the lowest bits that aren't taken yet
  for (const char digit : text) {
    const std::size_t value = kDigits.find(digit);
    if (value == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

}  // namespace tool
