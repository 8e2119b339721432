// Small animated scenes, and the animation step of a save run on them without a file.
#pragma once

#include "animation/export_animation.h"
#include "headless/host.h"
#include "host/fourcc.h"
#include "tests/support/scan_rig.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace motion {

using headless::ChannelRef;
using headless::ItemIndex;
using headless::SceneData;

enum class Axis { X, Y, Z };

// A locator with main position, rotation and scale items.
struct Mover {
  ItemIndex item = -1;
  ItemIndex position = -1, rotation = -1, scale = -1;
};

inline headless::ItemData& At(SceneData& scene, ItemIndex item) {
  return scene.items[static_cast<std::size_t>(item)];
}

inline ItemIndex AddSceneItem(SceneData& scene, double start, double end, double fps) {
  const ItemIndex item = headless::AddItem(scene, "scene", "Scene");
  headless::SetChannel(At(scene, item), "currentS", start);
  headless::SetChannel(At(scene, item), "currentE", end);
  headless::SetChannel(At(scene, item), "fps", fps);
  scene.userValues["sceneio.gltf.save.exportType"] = 0;
  scene.graphs["chanLinks"];
  return item;
}

inline Mover AddMover(SceneData& scene, const std::string& name, ItemIndex parent = -1,
                      const std::string& type = "locator") {
  Mover mover;
  mover.item = headless::AddItem(scene, type, name, parent);
  mover.position = headless::AddTransform(scene, mover.item, "translation", name + " Position");
  mover.rotation = headless::AddTransform(scene, mover.item, "rotation", name + " Rotation");
  mover.scale = headless::AddTransform(scene, mover.item, "scale", name + " Scale");
  return mover;
}

// The component of a transform item's vector channel.
inline ChannelRef Component(SceneData& scene, ItemIndex transform, Axis axis) {
  const std::string& type = At(scene, transform).type;
  const std::string prefix = type == "translation" ? "pos." : type == "rotation" ? "rot." : "scl.";
  const std::string suffix = axis == Axis::X ? "X" : axis == Axis::Y ? "Y" : "Z";
  return {transform, headless::FindChannel(At(scene, transform), prefix + suffix)};
}

inline headless::ChannelData& Channel(SceneData& scene, ChannelRef channel) {
  return At(scene, channel.item).channels[static_cast<std::size_t>(channel.channel)];
}

inline headless::EnvelopeData Line(double time0, double value0, double time1, double value1) {
  headless::EnvelopeData envelope;
  envelope.keys.resize(2);
  envelope.keys[0].time = time0;
  envelope.keys[0].value = value0;
  envelope.keys[1].time = time1;
  envelope.keys[1].value = value1;
  envelope.before = envelope.after = headless::Extrapolation::Linear;
  return envelope;
}

inline void Key(SceneData& scene, ItemIndex transform, Axis axis, headless::EnvelopeData envelope) {
  Channel(scene, Component(scene, transform, axis)).extras.Make().envelope = std::move(envelope);
}

inline void Place(SceneData& scene, ItemIndex transform, double x, double y, double z) {
  Channel(scene, Component(scene, transform, Axis::X)).setup = x;
  Channel(scene, Component(scene, transform, Axis::Y)).setup = y;
  Channel(scene, Component(scene, transform, Axis::Z)).setup = z;
}

inline ChannelRef NamedChannel(SceneData& scene, ItemIndex item, const std::string& name) {
  return {item, headless::FindChannel(At(scene, item), name)};
}

// A group tagged as the actor of the scene.
inline ItemIndex AddActor(SceneData& scene, ItemIndex sceneItem, const std::string& name) {
  const ItemIndex actor = headless::AddItem(scene, "group", name);
  At(scene, actor).extras.Make().tags[kTagGroupType] = "actor";
  At(scene, actor).group.emplace();
  scene.graphs["currentGroups"].emplace_back(sceneItem, actor);
  return actor;
}

inline ItemIndex AddClip(SceneData& scene, ItemIndex actor, const std::string& name, const std::string& tag = "") {
  const ItemIndex clip = headless::AddItem(scene, "actionclip", name);
  At(scene, clip).clip.emplace().exportTag = tag;
  At(scene, actor).group->items.push_back(clip);
  return clip;
}

inline void KeyInClip(SceneData& scene, ItemIndex clip, ChannelRef channel, headless::EnvelopeData envelope) {
  At(scene, clip).clip->channels.emplace_back(channel, std::move(envelope));
}

// A save up to the nodes of the scene.
class Save : public test_support::ScanRig {
 public:
  explicit Save(SceneData scene) : ScanRig(std::move(scene)), state(&Build()) {}

  const std::vector<std::unique_ptr<GltfAnimation>>& Animations() const { return state->gltfScene->animations; }
  std::size_t CountLog(const std::string& text) const {
    state->log.Info("counting");  // the host holds a warning or error back until the next line
    std::size_t count = 0;
    for (const headless::LogLine& line : Log()) count += line.text.find(text) != std::string::npos;
    return count;
  }
  // The sampler of a node's path in the animation at a place; null when there is none.
  const GltfAnimationSampler* Find(const std::string& node, GltfPath path, std::size_t animation = 0) const {
    if (animation >= Animations().size()) return nullptr;
    for (const auto& channel : Animations()[animation]->channels)
      if (channel->node->name == node && channel->path == path) return channel->sampler;
    return nullptr;
  }

  SaveState* const state;
};

}  // namespace motion
