// Base of the temporary objects that the headless host hands out: it keeps count of those that live.
#pragma once

#include "host/counted_object.h"

#include <cstddef>

namespace headless {

template <class... Interfaces>
class HostObject : public CountedObject<Interfaces...> {
 public:
  // `live` is the host's counter and outlives the object.
  explicit HostObject(std::size_t& live) : live_(live) { ++live_; }
  ~HostObject() override { --live_; }

 protected:
  std::size_t& LiveCounter() const { return live_; }

 private:
  std::size_t& live_;
};

}  // namespace headless
