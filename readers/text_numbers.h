// Numbers and blanks of line-based text files. Every text ends in a line end that no backslash continues,
// so that scans stop there without asking for the end of the text.
#pragma once

#include <fast_float/fast_float.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace readers {

inline bool IsDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }
inline bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }
// Blanks and line ends; bytes of UTF-8 texts are none.
inline bool EndsToken(char c) { return static_cast<unsigned char>(c) <= ' '; }

// Behind a backslash and the line end after it, null when `text` isn't at such a pair.
inline const char* SkipContinuation(const char* text) {
  if (text[0] != '\\') return nullptr;
  if (text[1] == '\n') return text + 2;
  if (text[1] == '\r') return text + (text[2] == '\n' ? 3 : 2);
  return nullptr;
}

// Continued lines count as blanks.
inline const char* SkipBlanks(const char* text) {
  for (;;) {
    while (IsBlank(*text)) ++text;
    if (*text != '\\') return text;
    const char* next = SkipContinuation(text);
    if (!next) return text;
    text = next;
  }
}

inline bool AtTokenEnd(const char* text) { return EndsToken(*text) || SkipContinuation(text); }

inline const char* SkipToken(const char* text) {
  while (!AtTokenEnd(text)) ++text;
  return text;
}

inline std::string_view TokenAt(const char* text) {
  return {text, static_cast<std::size_t>(SkipToken(text) - text)};
}

// At the next line end.
inline const char* SkipLine(const char* text) {
  while (!IsLineEnd(*text)) ++text;
  return text;
}

// At the line end behind the last continued line.
inline const char* SkipStatement(const char* text) {
  for (;; ++text) {
    if (IsLineEnd(*text)) return text;
    if (const char* next = SkipContinuation(text)) text = next - 1;
  }
}

// The general road: fast_float, after a plus sign that it doesn't take. Null when the token isn't a finite
// number.
template <class T>
const char* ReadAnyNumber(const char* text, const char* end, T& value) {
  if (*text == '+' && *++text == '-') return nullptr;
  const auto [rest, error] = fast_float::from_chars(text, end, value);
  if (error == std::errc::invalid_argument || !std::isfinite(value)) return nullptr;
  return AtTokenEnd(rest) ? rest : nullptr;
}

// Adds the digits at `text` to a number on its right and gives their end. The number is meaningless above 18
// digits. Digits come in short runs: taking eight bytes at once proved slower.
inline const char* ReadDigits(const char* text, std::uint64_t& number) {
  for (std::uint64_t digit; (digit = static_cast<unsigned char>(*text) - std::uint64_t{'0'}) < 10; ++text)
    number = number * 10 + digit;
  return text;
}

// Reads the token at `text` as the float nearest to it, the same as ReadAnyNumber, and gives its end; null
// when it isn't a finite number. Plain decimals take a short road: digits and power of ten are exact doubles,
// so their quotient is rounded correctly once, and rounding it again to float goes wrong only when it lies
// halfway between two floats.
inline const char* ReadFloat(const char* text, const char* end, float& value) {
  static constexpr std::array<double, 16> kPowersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                          1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const bool negative = *text == '-';
  const char* const start = text + negative;
  std::uint64_t digits = 0;
  const char* rest = ReadDigits(start, digits);
  auto count = rest - start;
  std::ptrdiff_t decimals = 0;
  if (*rest == '.') {
    const char* const point = rest;
    rest = ReadDigits(point + 1, digits);
    decimals = rest - point - 1;
    count += decimals;
  }
  // 15 digits stay below 2 to the 53.
  if (count > 0 && count <= 15 && EndsToken(*rest)) {
    const double number = static_cast<double>(digits) / kPowersOfTen[static_cast<std::size_t>(decimals)];
    constexpr std::uint64_t kDroppedBits = (1ull << 29) - 1;
    if ((std::bit_cast<std::uint64_t>(number) & kDroppedBits) != 1ull << 28) {
      value = static_cast<float>(negative ? -number : number);
      return rest;
    }
  }
  return ReadAnyNumber(text, end, value);
}

// Reads digits with an optional sign and gives their end; null when there are none or more than 18.
inline const char* ReadInteger(const char* text, std::int64_t& value) {
  const bool negative = *text == '-';
  const char* const start = text + (negative || *text == '+');
  std::uint64_t digits = 0;
  const char* const rest = ReadDigits(start, digits);
  if (rest == start || rest - start > 18) return nullptr;
  value = negative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
  return rest;
}

}  // namespace readers
