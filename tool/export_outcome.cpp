#include "tool/export_outcome.h"

#include <map>
#include <tuple>

namespace tool {

std::vector<NotCarriedGroup> GroupNotCarried(const std::vector<NotCarried>& notCarried) {
  std::vector<NotCarriedGroup> groups;
  std::map<std::tuple<std::string, std::string, std::string>, std::size_t> places;
  for (const NotCarried& entry : notCarried) {
    const auto [place, isNew] = places.try_emplace({entry.what, entry.why, entry.help}, groups.size());
    if (isNew) groups.push_back({{"", entry.what, entry.why, entry.help}, {}});
    if (!entry.item.empty()) groups[place->second].items.push_back(entry.item);
  }
  return groups;
}

}  // namespace tool
