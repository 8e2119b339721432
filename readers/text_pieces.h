// A text prepared for the scans of text_numbers.h.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace readers {

// The text without a byte order mark, in two pieces that end where a statement does, each with the ending that
// the scans need: the first is the text itself up to its last whole line, the second a copy of the rest.
class TextPieces {
 public:
  explicit TextPieces(std::string_view text);
  TextPieces(const TextPieces&) = delete;
  TextPieces& operator=(const TextPieces&) = delete;

  std::array<std::string_view, 2> Pieces() const { return {body_, tail_}; }
  // From 1; `place` lies in one of the pieces.
  std::size_t LineOf(const char* place) const;

 private:
  std::string_view body_;
  std::string tail_;
};

}  // namespace readers
