#include "animation/time_range.h"

#include <initializer_list>

namespace {

double ReadSceneValue(const SaveState& state, const CZyUser_Item& sceneItem, const char* name) {
  std::int32_t channel = -1;
  double value = 0;
  if (ZySucceeded(sceneItem.ChannelLookup(name, channel))) state.chanSetup.Double(sceneItem, channel, value);
  return value;
}

std::uint32_t ChannelCountOf(const CZyUser_Item& item) {
  std::uint32_t count = 0;
  item.ChannelCount(count);
  return count;
}

void WarnOfAnimatedItem(SaveState& state, const CZyUser_Item& item) {
  int animated = 0;
  const std::uint32_t channelCount = ChannelCountOf(item);
  for (std::uint32_t channel = 0; channel < channelCount; ++channel)
    animated += state.chanSetup.IsAnimated(item, static_cast<std::int32_t>(channel)) != 0;
  if (animated == 0) return;
  const char* type = "";
  state.sceneService.ItemTypeName(item.Type(), type);
  state.log.Warning("Unable to get time range for item:%s, type:%s (%d) with %d animated channels", NameOf(item),
                    type, static_cast<int>(item.Type()), animated);
}

void WidenByItem(const SaveState& state, const CZyUser_Item& item, double& min, double& max) {
  CZyUser_Locator locator;
  if (locator.Set(item.Raw())) {
    for (const TransformKind kind : {TransformKind::Position, TransformKind::Rotation, TransformKind::Scale}) {
      CZyUser_Item transform;
      if (ZyFailed(locator.TransformItem(kind, transform))) continue;
      for (const std::int32_t channel : {state.channels.vecX, state.channels.vecY, state.channels.vecZ})
        KeyRange(state, transform, channel, min, max);
    }
  }
  const std::uint32_t channelCount = ChannelCountOf(item);
  for (std::uint32_t channel = 0; channel < channelCount; ++channel)
    KeyRange(state, item, static_cast<std::int32_t>(channel), min, max);
}

}  // namespace

void ReadTimeRange(SaveState& state) {
  CZyUser_Item sceneItem;
  state.scene.ItemByIndex(state.typeCodes.scene, 0, sceneItem);
  AnimationState& animation = state.animation;
  animation.startTime = ReadSceneValue(state, sceneItem, "currentS");
  animation.endTime = ReadSceneValue(state, sceneItem, "currentE");
  animation.sampleRate = ReadSceneValue(state, sceneItem, "fps");
  if (state.options.sampleAnimFpsMultiplier == 1) animation.sampleRate += animation.sampleRate;
}

bool KeyRange(const SaveState& state, const CZyUser_Item& item, std::int32_t channel, double& min, double& max) {
  if (state.chanEdit.IsAnimated(item, channel) == 0) return false;
  CZyUser_Envelope envelope;
  CZyUser_Keyframe cursor;
  if (ZyFailed(state.chanEdit.ChannelEnvelope(item, channel, envelope)) || ZyFailed(envelope.Keyframe(cursor)))
    return false;
  double first = 0, last = 0;
  const zyresult atFirst = cursor.First();
  cursor.GetTime(first);
  const zyresult atLast = cursor.Last();
  cursor.GetTime(last);
  if (ZyFailed(atFirst) || ZyFailed(atLast)) return false;
  if (first < min) min = first;
  if (last > max) max = last;
  return true;
}

void GatherActorTimeRange(SaveState& state, const std::string& animationName) {
  state.log.Setup("Getting animation time range for actor: %s", animationName.c_str());
  double min = 0, max = 0;  // the range always holds 0
  for (IZyItem* raw : state.animation.actor.items) {
    CZyUser_Item item;
    item.Set(raw);
    if (state.nodesByItem.contains(raw))
      WidenByItem(state, item, min, max);
    else
      WarnOfAnimatedItem(state, item);
  }
}
