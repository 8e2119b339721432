// Base of the objects that live as long as the host: counting their references changes nothing.
#pragma once

#include "host/object.h"

namespace headless {

template <class First, class... Rest>
class PermanentObject : public First, public Rest... {
 public:
  PermanentObject() = default;
  PermanentObject(const PermanentObject&) = delete;
  PermanentObject& operator=(const PermanentObject&) = delete;
  virtual ~PermanentObject() = default;

  void AddRef() override {}
  void Release() override {}
  void* Interface(std::uint32_t id) override {
    if (id == IZyObject::kId || id == First::kId) return static_cast<First*>(this);
    void* found = nullptr;
    static_cast<void>(((id == Rest::kId && (found = static_cast<Rest*>(this))) || ...));
    return found;
  }
};

}  // namespace headless
