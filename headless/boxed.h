// Values that take no more than a pointer where there are none.
#pragma once

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace headless {

// For what few of many records have. Copies are deep, so it is used like a std::optional.
template <class T>
class Boxed {
 public:
  Boxed() = default;
  Boxed(std::nullopt_t) {}  // NOLINT: as with std::optional
  Boxed(const Boxed& other) : value_(other ? std::make_unique<T>(*other) : nullptr) {}
  Boxed(Boxed&& other) noexcept = default;
  // From a T, from what makes one, and from an optional T.
  template <class From, class = std::enable_if_t<std::is_constructible_v<T, From&&> &&
                                                 !std::is_same_v<std::remove_cvref_t<From>, Boxed>>>
  Boxed(From&& from) : value_(std::make_unique<T>(std::forward<From>(from))) {}                     // NOLINT
  Boxed(std::optional<T> from) : value_(from ? std::make_unique<T>(std::move(*from)) : nullptr) {}  // NOLINT
  ~Boxed() = default;

  Boxed& operator=(Boxed other) noexcept {
    value_ = std::move(other.value_);
    return *this;
  }

  template <class... Arguments>
  T& emplace(Arguments&&... arguments) {
    value_ = std::make_unique<T>(std::forward<Arguments>(arguments)...);
    return *value_;
  }
  void reset() { value_.reset(); }
  T value_or(T other) const { return value_ ? *value_ : std::move(other); }

  bool has_value() const { return value_ != nullptr; }
  explicit operator bool() const { return has_value(); }
  T& operator*() { return *value_; }
  const T& operator*() const { return *value_; }
  T* operator->() { return value_.get(); }
  const T* operator->() const { return value_.get(); }

  friend bool operator==(const Boxed& one, const Boxed& other) {
    return one.value_ && other.value_ ? *one == *other : one.value_ == other.value_;
  }

 private:
  std::unique_ptr<T> value_;
};

// A record of what few have. It reads as T() where there is none.
template <class T>
class Rare {
 public:
  const T& operator*() const { return record_ ? *record_ : kNone; }
  const T* operator->() const { return &**this; }
  // To write to; makes the record where there is none.
  T& Make() { return record_ ? *record_ : record_.emplace(); }

 private:
  inline static const T kNone = T();

  Boxed<T> record_;
};

}  // namespace headless
