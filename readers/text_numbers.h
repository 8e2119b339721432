// Numbers and blanks of line-based text files. Every text ends in a line end that no backslash continues,
// so that scans stop there without asking for the end of the text.
#pragma once

#include <fast_float/fast_float.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
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

// At the next line end; `end` is the end of the whole text.
inline const char* SkipLine(const char* text, const char* end) {
  const auto* newline = static_cast<const char*>(std::memchr(text, '\n', static_cast<std::size_t>(end - text)));
  // Files of old have \r alone.
  const auto* lone = static_cast<const char*>(std::memchr(text, '\r', static_cast<std::size_t>(newline - text)));
  return lone ? lone : newline;
}

// At the line end behind the last continued line.
inline const char* SkipStatement(const char* text, const char* end) {
  for (;;) {
    const char* lineEnd = SkipLine(text, end);
    if (lineEnd == text || lineEnd[-1] != '\\') return lineEnd;
    text = SkipContinuation(lineEnd - 1);
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

inline constexpr std::array<double, 16> kPowersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct DigitRun {
  std::uint64_t value = 0;
  std::ptrdiff_t count = 0;
};

// The digits at `text`. A run of up to seven is taken in one step of eight bytes: the first byte that is no
// digit is found by its high bit, the digits are moved to the word's upper end, and pairs, then fours, then all
// are summed up by multiplication (the method of D. Lemire's eight-digit parser). The value is meaningless
// above 18 digits.
inline DigitRun ReadDigits(const char* text, const char* end) {
  if constexpr (std::endian::native == std::endian::little) {
    if (end - text >= 8) {
      std::uint64_t word;
      std::memcpy(&word, text, sizeof word);
      word ^= 0x3030303030303030u;
      const std::uint64_t others = ((word + 0x7676767676767676u) | word) & 0x8080808080808080u;
      const int count = std::countr_zero(others) / 8;
      if (count == 0) return {};
      if (count < 8) {
        word <<= 64 - 8 * count;
        word = word * 10 + (word >> 8);
        word = ((word & 0x000000FF000000FFu) * 0x000F424000000064u +
                ((word >> 16) & 0x000000FF000000FFu) * 0x0000271000000001u) >>
               32;
        return {word, count};
      }
    }
  }
  DigitRun run;
  for (; IsDigit(text[run.count]); ++run.count) {
    run.value = run.value * 10 + static_cast<std::uint64_t>(text[run.count] - '0');
  }
  return run;
}

// Reads the token at `text` as the float nearest to it, the same as ReadAnyNumber, and gives its end; null
// when it isn't a finite number. Plain decimals take a short road: digits and power of ten are exact doubles,
// so their quotient is rounded correctly once, and rounding it again to float goes wrong only when it lies
// halfway between two floats.
inline const char* ReadFloat(const char* text, const char* end, float& value) {
  const bool negative = *text == '-';
  const char* start = text + negative;
  const DigitRun whole = ReadDigits(start, end);
  const char* rest = start + whole.count;
  DigitRun decimals;
  if (*rest == '.') {
    decimals = ReadDigits(++rest, end);
    rest += decimals.count;
  }
  const std::ptrdiff_t count = whole.count + decimals.count;
  // 15 digits stay below 2 to the 53.
  if (count > 0 && count <= 15 && EndsToken(*rest)) {
    const double power = kPowersOfTen[static_cast<std::size_t>(decimals.count)];
    const double number = (static_cast<double>(whole.value) * power + static_cast<double>(decimals.value)) / power;
    constexpr std::uint64_t kDroppedBits = (1ull << 29) - 1;
    if ((std::bit_cast<std::uint64_t>(number) & kDroppedBits) != 1ull << 28) {
      value = static_cast<float>(negative ? -number : number);
      return rest;
    }
  }
  return ReadAnyNumber(text, end, value);
}

// Reads digits with an optional sign and gives their end; null when there are none or more than 18.
inline const char* ReadInteger(const char* text, const char* end, std::int64_t& value) {
  const bool negative = *text == '-';
  text += negative || *text == '+';
  const DigitRun run = ReadDigits(text, end);
  if (run.count == 0 || run.count > 18) return nullptr;
  value = negative ? -static_cast<std::int64_t>(run.value) : static_cast<std::int64_t>(run.value);
  return text + run.count;
}

}  // namespace readers
