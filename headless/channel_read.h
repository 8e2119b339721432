// One state of the channels, as the host hands it out.
#pragma once

#include "headless/host_object.h"
#include "headless/host_state.h"
#include "host/scene_api.h"

#include <memory>

namespace headless {

class ChannelRead final : public HostObject<IZyChannelRead> {
 public:
  ChannelRead(HostState& host, const ReadState& state) : HostObject(host.live), host_(host), state_(state) {}
  ~ChannelRead() override { host_.evaluator.GiveBack(std::move(cache_)); }

  zyresult ValueObject(IZyItem* item, std::int32_t channel, IZyObject*& object) override;
  zyresult Integer(IZyItem* item, std::int32_t channel, std::int32_t& value) override;
  zyresult Double(IZyItem* item, std::int32_t channel, double& value) override;
  zyresult String(IZyItem* item, std::int32_t channel, const char*& text) override;
  std::int32_t IsAnimated(IZyItem* item, std::int32_t channel) override;
  zyresult ChannelEnvelope(IZyItem* item, std::int32_t channel, IZyObject*& envelope) override;

  const Matrix4& World(ItemIndex locator);

 private:
  bool IsReadable(ChannelRef ref, ChannelKind kind) const;

  HostState& host_;
  ReadState state_;
  std::unique_ptr<WorldCache> cache_;  // taken when the first matrix is asked for
};

}  // namespace headless
