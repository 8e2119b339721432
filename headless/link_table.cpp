#include "headless/link_table.h"

#include <algorithm>
#include <numeric>

namespace headless {

LinkTable::LinkTable(std::size_t nodes, std::span<const Link> links, LinkEnd end) : starts_(nodes + 1, 0) {
  const auto inRange = [&](std::int32_t node) { return node >= 0 && static_cast<std::size_t>(node) < nodes; };
  const auto isValid = [&](const Link& link) { return inRange(link.first) && inRange(link.second); };
  const auto keyOf = [&](const Link& link) {
    return static_cast<std::size_t>(end == LinkEnd::From ? link.first : link.second);
  };
  for (const Link& link : links)
    if (isValid(link)) ++starts_[keyOf(link)];
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  others_.resize(starts_.back());
  // From the last link on: each group is filled from its end, and what is its end so becomes its start.
  for (std::size_t place = links.size(); place-- > 0;)
    if (const Link& link = links[place]; isValid(link))
      others_[--starts_[keyOf(link)]] = end == LinkEnd::From ? link.second : link.first;
}

namespace {

// Tarjan's algorithm with a stack of its own, since hierarchies can be very deep.
class ComponentSearch {
 public:
  explicit ComponentSearch(const LinkTable& links)
      : links_(links),
        components_(links.NodeCount(), -1),
        order_(links.NodeCount(), -1),
        low_(links.NodeCount()) {}

  std::vector<std::int32_t> Run() {
    for (std::size_t node = 0; node < components_.size(); ++node)
      if (order_[node] < 0) Visit(static_cast<std::int32_t>(node));
    return std::move(components_);
  }

 private:
  struct Step {
    std::int32_t node;
    std::size_t next = 0;  // of the node's links
  };

  static std::size_t At(std::int32_t node) { return static_cast<std::size_t>(node); }

  void Enter(std::int32_t node) {
    order_[At(node)] = low_[At(node)] = counter_++;
    open_.push_back(node);
    path_.push_back({node});
  }

  void Visit(std::int32_t root) {
    Enter(root);
    while (!path_.empty()) {
      Step& step = path_.back();
      const auto successors = links_.Of(step.node);
      if (step.next < successors.size()) {
        const std::int32_t successor = successors[step.next++];
        if (order_[At(successor)] < 0)
          Enter(successor);
        else if (components_[At(successor)] < 0)
          low_[At(step.node)] = std::min(low_[At(step.node)], order_[At(successor)]);
        continue;
      }
      Leave(step.node);
    }
  }

  void Leave(std::int32_t node) {
    path_.pop_back();
    if (!path_.empty()) {
      std::int32_t& low = low_[At(path_.back().node)];
      low = std::min(low, low_[At(node)]);
    }
    if (low_[At(node)] != order_[At(node)]) return;
    std::int32_t member = -1;
    do {
      member = open_.back();
      open_.pop_back();
      components_[At(member)] = componentCount_;
    } while (member != node);
    ++componentCount_;
  }

  const LinkTable& links_;
  std::vector<std::int32_t> components_, order_, low_, open_;
  std::vector<Step> path_;
  std::int32_t counter_ = 0, componentCount_ = 0;
};

}  // namespace

std::vector<std::int32_t> StrongComponents(const LinkTable& links) { return ComponentSearch(links).Run(); }

}  // namespace headless
