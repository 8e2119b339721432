#include "headless/graph.h"

namespace headless {

Graph::Graph(HostState& host, std::span<const Link> links, ChannelLinks channelLinks)
    : host_(host), channelLinks_(channelLinks) {
  if (links.empty()) return;
  forward_ = LinkTable(host.index.ItemCount(), links, LinkEnd::From);
  reverse_ = LinkTable(host.index.ItemCount(), links, LinkEnd::To);
}

zyresult Graph::Count(const LinkTable& links, IZyItem* item, std::uint32_t& count) {
  if (!item) return ZYe_FAILED;
  count = static_cast<std::uint32_t>(links.Of(HostState::IndexOf(item)).size());
  return ZYe_OK;
}

zyresult Graph::ByIndex(const LinkTable& links, IZyItem* item, std::uint32_t index, IZyObject*& out) {
  const auto others = links.Of(HostState::IndexOf(item));
  return index < others.size() ? host_.Give(others[index], out) : ZYe_FAILED;
}

zyresult Graph::RevCount(IZyItem* item, std::int32_t channel, std::uint32_t& count) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  if (!host_.index.HasChannel(ref)) return ZYe_FAILED;
  count = channelLinks_ == ChannelLinks::Scene ? host_.values.LinkCount(ref) : 0;
  return ZYe_OK;
}

}  // namespace headless
