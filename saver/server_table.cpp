#include "saver/server_table.h"

#include <algorithm>

void ServerTable::Add(std::string name, IZyFactory* factory) {
  Server server{std::move(name), {}};
  server.factory.Take(factory);
  servers_.push_back(std::move(server));
}

const char* ServerTable::Name(std::uint32_t index) const {
  return index < servers_.size() ? servers_[index].name.c_str() : nullptr;
}

IZyFactory* ServerTable::Find(std::string_view name) const {
  const auto found =
      std::find_if(servers_.begin(), servers_.end(), [&](const Server& server) { return server.name == name; });
  return found == servers_.end() ? nullptr : found->factory.Raw();
}
