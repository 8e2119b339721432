#include "headless/actions.h"

namespace headless {

namespace {

class Keyframe final : public HostObject<IZyKeyframe> {
 public:
  Keyframe(std::size_t& live, const std::vector<KeyData>& keys) : HostObject(live), keys_(keys) {}

  zyresult First() override {
    if (keys_.empty()) return ZYe_FAILED;
    current_ = &keys_.front();
    return ZYe_OK;
  }
  zyresult Last() override {
    if (keys_.empty()) return ZYe_FAILED;
    current_ = &keys_.back();
    return ZYe_OK;
  }
  zyresult GetTime(double& seconds) override {
    if (!current_) return ZYe_FAILED;
    seconds = current_->time;
    return ZYe_OK;
  }

 private:
  const std::vector<KeyData>& keys_;
  const KeyData* current_ = nullptr;
};

}  // namespace

zyresult Envelope::Keyframe(IZyObject*& keyframe) {
  keyframe = new headless::Keyframe(LiveCounter(), data_.keys);
  return ZYe_OK;
}

zyresult GroupEnumerator::Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) {
  const auto visit = [&](ItemIndex item) {
    current_ = item;
    return visitor.Evaluate();
  };
  if (members == GroupMembers::Items) {
    for (const ItemIndex item : group_.items)
      if (const zyresult result = visit(item); ZyFailed(result)) return result;
    return ZYe_OK;
  }
  if (members != GroupMembers::Channels) return ZYe_FAILED;
  for (const ChannelRef& channel : group_.channels)
    if (const zyresult result = visit(channel.item); ZyFailed(result)) return result;
  return ZYe_OK;
}

}  // namespace headless
