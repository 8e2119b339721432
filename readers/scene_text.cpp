#include "readers/scene_text.h"

#include "readers/text_utf8.h"

#include <fast_float/fast_float.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace readers {
namespace {

constexpr std::size_t kFilledColumns = 100;

struct NumberText {
  char digits[32];
  std::size_t size;
  operator std::string_view() const { return {digits, size}; }  // NOLINT: it is a text
};

template <class T>
NumberText Shortest(T value) {
  if (!std::isfinite(value)) throw WriteFault{"holds a number that is not finite"};
  NumberText text;
  text.size = static_cast<std::size_t>(std::to_chars(text.digits, std::end(text.digits), value).ptr - text.digits);
  return text;
}

}  // namespace

std::string FileText(const std::string& text) { return ToUtf8(text.substr(0, text.find('\0'))); }

void SceneText::Key(std::string_view key) {
  Separate();
  Quote(key);
  Put(levels_.back().layout == Layout::Tight ? ":" : ": ");
  hasKey_ = true;
}

void SceneText::Natural(std::uint64_t value) { Raw(std::to_string(value)); }

void SceneText::Number(double value) { Raw(Shortest(value)); }

void SceneText::Number(float value) {
  const NumberText text = Shortest(value);
  // Readers go by way of the nearest f64, which in rare cases rounds to another f32 or lies above the largest.
  double wide = 0;
  fast_float::from_chars(text.digits, text.digits + text.size, wide);
  if (std::abs(wide) <= std::numeric_limits<float>::max() && static_cast<float>(wide) == value) return Raw(text);
  Number(double{value});
}

void SceneText::Real(double value) {
  const NumberText text = Shortest(value);
  const bool isWhole = std::string_view(text).find_first_of(".e") == std::string_view::npos;
  Raw(std::string(text) + (isWhole ? ".0" : ""));
}

void SceneText::Text(const std::string& text) {
  Separate();
  Quote(FileText(text));
}

void SceneText::Close() {
  Put("\n");
  Flush();
  file_.Close();
}

void SceneText::Begin(char bracket, Layout layout) {
  Raw(std::string_view(&bracket, 1));
  levels_.push_back({bracket, layout});
  breaks_ = false;
}

void SceneText::End(char bracket) {
  const Level level = levels_.back();
  levels_.pop_back();
  if (level.layout == Layout::Lines && !level.isEmpty) NewLine();
  if (level.layout == Layout::Filled && !level.isEmpty && bracket == '}') Put(" ");
  Put({&bracket, 1});
  breaks_ = false;
}

// What stands before an entry.
void SceneText::Separate() {
  if (std::exchange(hasKey_, false) || levels_.empty()) return;
  Level& level = levels_.back();
  const bool isFirst = std::exchange(level.isEmpty, false);
  if (!isFirst) Put(",");
  const bool breaks = std::exchange(breaks_, false);
  if (level.layout == Layout::Lines || (level.layout == Layout::Filled && (breaks || column_ > kFilledColumns)))
    NewLine();
  else if (level.layout == Layout::Filled && (!isFirst || level.bracket == '{'))
    Put(" ");
}

void SceneText::NewLine() {
  Put("\n");
  column_ = 0;
  Put(std::string(2 * levels_.size(), ' '));
}

void SceneText::Raw(std::string_view text) {
  Separate();
  Put(text);
}

void SceneText::Quote(std::string_view text) {
  constexpr char kHex[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += {'\\', c};
    } else if (code < 0x20) {
      quoted += {'\\', 'u', '0', '0', kHex[code >> 4], kHex[code & 15]};
    } else {
      quoted += c;
    }
  }
  Put(quoted + "\"");
}

void SceneText::Flush() {
  file_.Write(waiting_.data(), waiting_.size());
  waiting_.clear();
}

void SceneText::Put(std::string_view text) {
  constexpr std::size_t kBlock = 1 << 16;
  waiting_ += text;
  column_ += text.size();
  if (waiting_.size() >= kBlock) Flush();
}

}  // namespace readers
