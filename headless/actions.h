// Envelopes and groups, as the host hands them out.
#pragma once

#include "headless/host_object.h"
#include "headless/host_state.h"
#include "host/action_api.h"

#include <vector>

namespace headless {

class Envelope final : public HostObject<IZyEnvelope> {
 public:
  // The data outlive the object.
  Envelope(std::size_t& live, const EnvelopeData& data) : HostObject(live), data_(data) {}

  zyresult Keyframe(IZyObject*& keyframe) override;

 private:
  const EnvelopeData& data_;
};

class GroupEnumerator final : public HostObject<IZyGroupEnumerator> {
 public:
  GroupEnumerator(HostState& host, const GroupData& group) : HostObject(host.live), host_(host), group_(group) {}

  zyresult Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) override;
  zyresult Item(IZyObject*& item) override { return host_.Give(current_, item); }

 private:
  HostState& host_;
  const GroupData& group_;
  ItemIndex current_ = -1;
};

}  // namespace headless
