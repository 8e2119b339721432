// A text that never changes and takes no more than a pointer.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace headless {

// For what many records say alike: copies share the text, from several threads too.
class SharedText {
 public:
  SharedText() = default;
  SharedText(std::string text) : shared_(text.empty() ? nullptr : new Shared{std::move(text)}) {}  // NOLINT
  SharedText(const char* text) : SharedText(std::string(text)) {}                                  // NOLINT
  SharedText(const SharedText& other) : shared_(other.shared_) {
    if (shared_) shared_->users.fetch_add(1, std::memory_order_relaxed);
  }
  SharedText(SharedText&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
  SharedText& operator=(SharedText other) noexcept {
    std::swap(shared_, other.shared_);
    return *this;
  }
  ~SharedText() {
    if (shared_ && shared_->users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete shared_;
  }

  const char* c_str() const { return shared_ ? shared_->text.c_str() : ""; }
  operator std::string_view() const { return shared_ ? std::string_view(shared_->text) : std::string_view(); }
  operator std::string() const { return std::string(std::string_view(*this)); }

  friend bool operator==(const SharedText& one, const SharedText& other) {
    return one.shared_ == other.shared_ || std::string_view(one) == std::string_view(other);
  }
  template <class Text, class = std::enable_if_t<!std::is_same_v<Text, SharedText>>>
  friend bool operator==(const SharedText& one, const Text& other) {
    return std::string_view(one) == std::string_view(other);
  }

 private:
  struct Shared {
    const std::string text;
    std::atomic<std::uint32_t> users = 1;
  };

  Shared* shared_ = nullptr;  // null: empty
};

}  // namespace headless
