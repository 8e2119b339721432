#include "saver/server_table.h"

#include <algorithm>

void ServerTable::Add(const char* name, IZyFactory* factory) {
  Server server;
  server.factory.Take(factory);
  server.name = name;
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
