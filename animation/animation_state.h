// Tables of the animation step: the actor, and what a sampling run follows.
#pragma once

#include "document/animation_records.h"
#include "host/insertion_map.h"
#include "host/user_action.h"

#include <array>
#include <vector>

// The one actor of a scene.
struct ActorRecord {
  CZyUser_Item item;               // the actor's group item; empty when the scene has no actor
  std::vector<IZyItem*> items;     // its members without action clips, each once
  std::vector<IZyItem*> actions;   // enabled action clips, in order of enumeration
  std::uint32_t channelCount = 0;  // group channels visited
};

// Which paths of one node are sampled.
struct XformRecord {
  GltfAnimationSampler* translation = nullptr;
  GltfAnimationSampler* rotation = nullptr;
  GltfAnimationSampler* scale = nullptr;
  bool doTranslation = false, doRotation = false, doScale = false;
  GltfNode* node = nullptr;
  GltfAnimation* animation = nullptr;  // null until the scene is sampled
  IZyItem* item = nullptr;
  std::int32_t mode = -1;  // 1 sampled, -1 not sampled
};

struct AnimationState {
  ActorRecord actor;
  double startTime = 0;   // seconds
  double endTime = 0;     // seconds
  double sampleRate = 0;  // samples a second, multiplier included
  // Records of a sampling run per item, items in order of first insertion.
  InsertionMap<IZyItem*, std::vector<XformRecord>> sampleRecords;
};
