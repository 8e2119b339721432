// Wrappers of the animation interfaces. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/action_api.h"
#include "host/user_scene.h"

class CZyUser_ActionClip : public CountedRef<IZyActionClip> {
 public:
  std::int32_t Active() const { return Raw() ? Raw()->Active() : 0; }
  std::int32_t Enabled() const { return Raw() ? Raw()->Enabled() : 0; }
  zyresult SetActive(std::int32_t state) const { return Call(&IZyActionClip::SetActive, state); }
};

class CZyUser_GroupEnumerator : public CountedRef<IZyGroupEnumerator> {
 public:
  zyresult Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) const {
    return Call(&IZyGroupEnumerator::Enumerate, members, visitor);
  }
  zyresult Item(CZyUser_Item& item) const { return CallFor(item, &IZyGroupEnumerator::Item); }
};

class CZyUser_GroupItem : public CountedRef<IZyGroupItem> {
 public:
  zyresult Enumerator(CZyUser_GroupEnumerator& enumerator) const {
    return CallFor(enumerator, &IZyGroupItem::Enumerator);
  }
};

class CZyUser_Keyframe : public CountedRef<IZyKeyframe> {
 public:
  zyresult First() const { return Call(&IZyKeyframe::First); }
  zyresult Last() const { return Call(&IZyKeyframe::Last); }
  zyresult GetTime(double& seconds) const { return Call(&IZyKeyframe::GetTime, seconds); }
};

class CZyUser_Envelope : public CountedRef<IZyEnvelope> {
 public:
  zyresult Keyframe(CZyUser_Keyframe& keyframe) const { return CallFor(keyframe, &IZyEnvelope::Keyframe); }
};

inline zyresult CZyUser_ChannelRead::ChannelEnvelope(const CZyUser_Item& item, std::int32_t channel,
                                                     CZyUser_Envelope& envelope) const {
  return CallFor(envelope, &IZyChannelRead::ChannelEnvelope, item.Raw(), channel);
}
