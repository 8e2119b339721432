// Counted interface objects of the host, and the wrapper that holds one of them.
#pragma once

#include "host/result.h"

#include <cstdint>
#include <utility>

// Base of every interface. Each interface has a constant kId of its own.
struct IZyObject {
  static constexpr std::uint32_t kId = 0;

  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // The object's interface `id` as a pointer to that interface class, without a reference; null when
  // the object lacks it.
  virtual void* Interface(std::uint32_t id) = 0;

 protected:
  ~IZyObject() = default;
};

// Holds one counted reference to an interface; starts empty.
template <class T>
class CountedRef {
 public:
  CountedRef() = default;
  CountedRef(const CountedRef& other) : raw_(other.raw_) {
    if (raw_) raw_->AddRef();
  }
  CountedRef(CountedRef&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  CountedRef& operator=(CountedRef other) noexcept {
    std::swap(raw_, other.raw_);
    return *this;
  }
  ~CountedRef() { Clear(); }

  // Asks the object for the interface and takes a reference. Empty and false when it has none.
  bool Set(IZyObject* object) {
    T* raw = object ? static_cast<T*>(object->Interface(T::kId)) : nullptr;
    if (raw) raw->AddRef();
    Clear();
    raw_ = raw;
    return raw_ != nullptr;
  }

  // As Set, but takes over the reference that a result object comes with.
  zyresult Take(IZyObject* counted) {
    const bool set = Set(counted);
    if (counted) counted->Release();
    return set ? ZYe_OK : ZYe_NO_INTERFACE;
  }

  void Clear() {
    if (T* raw = std::exchange(raw_, nullptr)) raw->Release();
  }

  bool Empty() const { return raw_ == nullptr; }
  explicit operator bool() const { return raw_ != nullptr; }
  T* Raw() const { return raw_; }

 protected:
  // Forwards to the interface; an empty wrapper fails with ZYe_FAILED and leaves outputs alone.
  template <class... Parameters, class... Arguments>
  zyresult Call(zyresult (T::*operation)(Parameters...), Arguments&&... arguments) const {
    return raw_ ? (raw_->*operation)(std::forward<Arguments>(arguments)...) : ZYe_FAILED;
  }

  // The same for an operation whose last output is a result object, which `out` takes over. On
  // failure `out` is empty.
  template <class U, class... Parameters, class... Arguments>
  zyresult CallFor(CountedRef<U>& out, zyresult (T::*operation)(Parameters...), Arguments&&... arguments) const {
    IZyObject* object = nullptr;
    const zyresult result = Call(operation, std::forward<Arguments>(arguments)..., object);
    if (ZyFailed(result)) {
      out.Clear();
      return result;
    }
    const zyresult taken = out.Take(object);
    return ZyFailed(taken) ? taken : result;
  }

 private:
  T* raw_ = nullptr;
};
