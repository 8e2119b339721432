#include "importer/clips.h"

#include "host/fourcc.h"
#include "host/scene_api.h"

#include <algorithm>
#include <set>
#include <utility>

namespace importer {
namespace {

using headless::AddItem;
using headless::ChannelRef;
using headless::EnvelopeData;
using headless::ItemData;
using headless::ItemIndex;
using headless::SceneData;
using headless::SetChannel;

// Of each kind of transform item the first of three channels in a row, by TransformKind.
constexpr const char* kFirstChannels[] = {"scl.X", "rot.X", "pos.X"};

ItemData& At(SceneData& scene, ItemIndex item) { return scene.items[static_cast<std::size_t>(item)]; }

EnvelopeData EnvelopeOf(const VectorKeys& keys, std::size_t axis) {
  EnvelopeData envelope;
  const double first = keys.values[0][axis];
  const bool isStill = std::all_of(keys.values.begin(), keys.values.end(),
                                   [&](const Vector3& value) { return value[axis] == first; });
  const std::size_t count = isStill ? 1 : keys.times.size();
  envelope.keys.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    headless::KeyData& key = envelope.keys.emplace_back();
    key.time = keys.times[i];
    key.value = keys.values[i][axis];
  }
  return envelope;
}

class ClipMaker {
 public:
  ClipMaker(const NodeItems& items, SceneData& scene) : items_(items), scene_(scene) {}

  void AddActor(ItemIndex sceneItem) {
    actor_ = AddItem(scene_, "group", "Actor");
    At(scene_, actor_).extras.Make().tags[kTagGroupType] = "actor";
    scene_.graphs["currentGroups"].emplace_back(sceneItem, actor_);
  }

  void AddClip(const PlannedClip& planned) {
    const ItemIndex clip = AddItem(scene_, "actionclip", planned.name);
    for (const NodeMotion& motion : planned.motions) {
      AddKeys(motion, TransformKind::Position, motion.position, clip);
      AddKeys(motion, TransformKind::Rotation, motion.angles, clip);
      AddKeys(motion, TransformKind::Scale, motion.scale, clip);
    }
    At(scene_, actor_).group->items.push_back(clip);
  }

 private:
  void AddKeys(const NodeMotion& motion, TransformKind kind, const std::optional<VectorKeys>& keys,
               ItemIndex clip) {
    if (!keys) return;
    const NodeItem& node = items_.byNode[static_cast<std::size_t>(motion.node)];
    const ItemIndex transform = node.transforms[static_cast<std::size_t>(kind)];
    const std::int32_t first =
        headless::FindChannel(At(scene_, transform), kFirstChannels[static_cast<std::size_t>(kind)]);
    headless::GroupData& group = *At(scene_, actor_).group;
    const ItemIndex locator = kind == TransformKind::Scale ? node.holder : node.mover;
    if (listed_.insert(locator).second) group.items.push_back(locator);
    const bool isNew = listed_.insert(transform).second;
    for (std::int32_t axis = 0; axis < 3; ++axis) {
      const ChannelRef channel = {transform, first + axis};
      if (isNew) group.channels.push_back(channel);
      At(scene_, clip).clip->channels.emplace_back(channel, EnvelopeOf(*keys, static_cast<std::size_t>(axis)));
    }
  }

  const NodeItems& items_;
  SceneData& scene_;
  ItemIndex actor_ = -1;
  std::set<ItemIndex> listed_;
};

}  // namespace

void AddClips(const NodePlans& plans, const NodeItems& items, SceneData& scene) {
  constexpr ItemIndex kSceneItem = 0;
  const MotionPlan& motions = plans.motions;
  SetChannel(At(scene, kSceneItem), "fps", motions.fps);
  if (motions.clips.empty()) return;
  SetChannel(At(scene, kSceneItem), "currentS", motions.start);
  SetChannel(At(scene, kSceneItem), "currentE", motions.end);
  ClipMaker maker(items, scene);
  maker.AddActor(kSceneItem);
  for (const PlannedClip& clip : motions.clips) maker.AddClip(clip);
  scene.userValues["sceneio.gltf.save.exportActionType"] = 1;
}

}  // namespace importer
