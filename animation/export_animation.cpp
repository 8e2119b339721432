#include "animation/export_animation.h"

#include "animation/clip_tags.h"
#include "animation/sampling.h"
#include "animation/sampling_plan.h"
#include "animation/time_range.h"

#include <optional>

namespace {

enum ActionType : std::int32_t { kWholeScene = 0, kEveryAction = 1, kActiveAction = 2 };

// The first enabled clip that is in force; empty when none is.
std::optional<std::size_t> FindActiveClip(const ActorRecord& actor) {
  for (std::size_t index = 0; index < actor.actions.size(); ++index) {
    CZyUser_ActionClip clip;
    if (clip.Set(actor.actions[index]) && clip.Active() != 0) return index;
  }
  return {};
}

void SetClipActive(const ActorRecord& actor, std::size_t index, std::int32_t active) {
  CZyUser_ActionClip clip;
  clip.Set(actor.actions[index]);
  clip.SetActive(active);
}

// Samples one clip into an animation of its name.
void ExportAction(SaveState& state, std::size_t index) {
  AnimationState& animation = state.animation;
  animation.sampleRecords.clear();
  CZyUser_ActionClip clip;
  if (index >= animation.actor.actions.size() || !clip.Set(animation.actor.actions[index])) return;
  CZyUser_Item clipItem;
  clipItem.Set(animation.actor.actions[index]);
  const std::string name = ExportTagsPrefix(state.log, clip) + NameOf(clipItem);

  clip.SetActive(1);
  PlanAllNodes(state);
  GatherActorTimeRange(state, name);
  SampleScene(state, animation.sampleRate);
  for (const auto& entry : animation.sampleRecords)
    for (const XformRecord& record : entry.second)
      if (record.animation) record.animation->name = name;
}

void ExportActions(SaveState& state) {
  const ActorRecord& actor = state.animation.actor;
  const char* actorName = actor.item ? NameOf(actor.item) : "";
  state.log.Info("Actor:%s items:%d channels:%d actions:%d", actorName, static_cast<int>(actor.items.size()),
                 static_cast<int>(actor.channelCount), static_cast<int>(actor.actions.size()));
  const std::optional<std::size_t> active = FindActiveClip(actor);

  if (state.options.exportActionType == kEveryAction)
    for (std::size_t index = 0; index < actor.actions.size(); ++index) ExportAction(state, index);
  else if (state.options.exportActionType == kActiveAction && active)
    ExportAction(state, *active);

  // The user's clip comes back into force; where none was, the clip exported last goes out of it.
  if (active)
    SetClipActive(actor, *active, 1);
  else if (const std::optional<std::size_t> left = FindActiveClip(actor))
    SetClipActive(actor, *left, 0);
}

}  // namespace

zyresult ExportAnimation(SaveState& state) {
  if (state.options.animation == 0) return ZYe_OK;
  ReadTimeRange(state);
  if (state.options.exportActionType != kWholeScene) {
    ExportActions(state);
    return ZYe_OK;
  }
  state.animation.sampleRecords.clear();
  PlanAllNodes(state);
  return SampleScene(state, state.animation.sampleRate);
}
