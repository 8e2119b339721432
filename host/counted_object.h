// Implements IZyObject for an object with one or more interfaces.
#pragma once

#include "host/object.h"

// The count starts at 1, the maker's reference; the object deletes itself when it falls to 0.
template <class First, class... Rest>
class CountedObject : public First, public Rest... {
 public:
  CountedObject() = default;
  CountedObject(const CountedObject&) = delete;
  CountedObject& operator=(const CountedObject&) = delete;
  virtual ~CountedObject() = default;

  void AddRef() override { ++references_; }
  void Release() override {
    if (--references_ == 0) delete this;
  }
  void* Interface(std::uint32_t id) override {
    if (id == IZyObject::kId || id == First::kId) return static_cast<First*>(this);
    void* found = nullptr;
    static_cast<void>(((id == Rest::kId && (found = static_cast<Rest*>(this))) || ...));
    return found;
  }

 private:
  std::uint32_t references_ = 1;
};
