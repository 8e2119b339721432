// A text that never changes and is shared by its copies.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace headless {

// For what many records say alike.
class SharedText {
 public:
  SharedText() = default;
  SharedText(std::string text)  // NOLINT: used as a text is
      : text_(text.empty() ? nullptr : std::make_shared<const std::string>(std::move(text))) {}
  SharedText(const char* text) : SharedText(std::string(text)) {}  // NOLINT

  const char* c_str() const { return text_ ? text_->c_str() : ""; }
  operator std::string_view() const { return text_ ? std::string_view(*text_) : std::string_view(); }
  operator std::string() const { return std::string(std::string_view(*this)); }

  friend bool operator==(const SharedText& one, const SharedText& other) {
    return one.text_ == other.text_ || std::string_view(one) == std::string_view(other);
  }
  template <class Text, class = std::enable_if_t<!std::is_same_v<Text, SharedText>>>
  friend bool operator==(const SharedText& one, const Text& other) {
    return std::string_view(one) == std::string_view(other);
  }

 private:
  std::shared_ptr<const std::string> text_;  // null: empty
};

}  // namespace headless
