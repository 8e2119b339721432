// Links between numbered things, grouped by one of their ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace headless {

using Link = std::pair<std::int32_t, std::int32_t>;  // from, to

enum class LinkEnd { From, To };

class LinkTable {
 public:
  LinkTable() = default;
  // Groups by `end`, each group in the order of `links`. A link that leaves the range of nodes is dropped.
  LinkTable(std::size_t nodes, std::span<const Link> links, LinkEnd end);

  // The other ends of a node's links; empty when the node is out of range.
  std::span<const std::int32_t> Of(std::int32_t node) const {
    if (node < 0 || static_cast<std::size_t>(node) + 1 >= starts_.size()) return {};
    const auto place = static_cast<std::size_t>(node);
    return std::span(others_).subspan(starts_[place], starts_[place + 1] - starts_[place]);
  }
  std::size_t NodeCount() const { return starts_.empty() ? 0 : starts_.size() - 1; }

 private:
  std::vector<std::uint32_t> starts_;
  std::vector<std::int32_t> others_;
};

// The number of each node's strongly connected component: two nodes share one when each can be reached from
// the other. So a link lies on a circle exactly when its ends share a component.
std::vector<std::int32_t> StrongComponents(const LinkTable& links);

}  // namespace headless
