// Item graphs.
#pragma once

#include "headless/host_state.h"
#include "headless/permanent_object.h"

namespace headless {

// What a graph answers about channels: only one of them holds the links between channels.
enum class ChannelLinks { None, Scene };

class Graph final : public PermanentObject<IZyItemGraph, IZyChannelGraph> {
 public:
  Graph(HostState& host, std::span<const Link> links, ChannelLinks channelLinks);

  zyresult FwdCount(IZyItem* item, std::uint32_t& count) override { return Count(forward_, item, count); }
  zyresult FwdByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return ByIndex(forward_, item, index, out);
  }
  zyresult RevCount(IZyItem* item, std::uint32_t& count) override { return Count(reverse_, item, count); }
  zyresult RevByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return ByIndex(reverse_, item, index, out);
  }
  zyresult RevCount(IZyItem* item, std::int32_t channel, std::uint32_t& count) override;

 private:
  static zyresult Count(const LinkTable& links, IZyItem* item, std::uint32_t& count);
  zyresult ByIndex(const LinkTable& links, IZyItem* item, std::uint32_t index, IZyObject*& out);

  HostState& host_;
  LinkTable forward_, reverse_;
  ChannelLinks channelLinks_;
};

}  // namespace headless
