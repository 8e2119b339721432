// A table of distinct texts.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace readers {

// Numbers texts from 0 by first sight.
class NameTable {
 public:
  std::uint32_t Enter(std::string_view name) {
    const auto found = numbers_.find(name);
    if (found != numbers_.end()) return found->second;
    const auto number = static_cast<std::uint32_t>(names_.size());
    numbers_.emplace(names_.emplace_back(name), number);
    return number;
  }

  const std::vector<std::string>& Names() const { return names_; }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::vector<std::string> names_;
  std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> numbers_;
};

}  // namespace readers
