#include "readers/text_pieces.h"

#include <functional>

namespace readers {
namespace {

std::size_t CountLines(const char* begin, const char* end) {
  std::size_t lines = 0;
  for (const char* c = begin; c < end; ++c) lines += *c == '\n' || (*c == '\r' && c[1] != '\n');
  return lines;
}

}  // namespace

TextPieces::TextPieces(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  std::size_t size = text.rfind('\n') + 1;
  while (size > 0) {
    const std::string_view line = text.substr(0, size - 1);
    if (!line.ends_with('\\') && !line.ends_with("\\\r")) break;
    size = line.rfind('\n') + 1;
  }
  body_ = text.substr(0, size);
  tail_ = std::string(text.substr(size)) + "\n\n";
}

std::size_t TextPieces::LineOf(const char* place) const {
  const char* const bodyEnd = body_.data() + body_.size();
  const char* const tailEnd = tail_.data() + tail_.size();
  const std::less<> before;
  if (before(place, tail_.data()) || !before(place, tailEnd)) return 1 + CountLines(body_.data(), place);
  return 1 + CountLines(body_.data(), bodyEnd) + CountLines(tail_.data(), place);
}

}  // namespace readers
