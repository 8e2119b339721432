// The servers of a module, by name.
#pragma once

#include "host/module_api.h"

#include <string>
#include <string_view>
#include <vector>

class ServerTable {
 public:
  // Takes over the factory's reference, also when it throws.
  void Add(const char* name, IZyFactory* factory);

  std::uint32_t Count() const { return static_cast<std::uint32_t>(servers_.size()); }
  // Null past the end.
  const char* Name(std::uint32_t index) const;
  // The first server of just this name, without a reference; null when there is none.
  IZyFactory* Find(std::string_view name) const;

 private:
  struct Server {
    std::string name;
    CountedRef<IZyFactory> factory;
  };

  std::vector<Server> servers_;
};
