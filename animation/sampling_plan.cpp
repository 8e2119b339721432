#include "animation/sampling_plan.h"

#include <algorithm>
#include <array>

namespace {

using PathFlag = bool XformRecord::*;

// The transform items of a locator, in the order in which they are looked at, with their paths.
struct TransformPath {
  TransformKind kind;
  PathFlag flag;
};
constexpr std::array<TransformPath, 3> kTransformPaths = {{
    {TransformKind::Position, &XformRecord::doTranslation},
    {TransformKind::Rotation, &XformRecord::doRotation},
    {TransformKind::Scale, &XformRecord::doScale},
}};

void SamplePaths(XformRecord& record, bool translation, bool rotation, bool scale) {
  record.mode = 1;
  record.doTranslation = translation;
  record.doRotation = rotation;
  record.doScale = scale;
}

// Turns one path on; the path that makes a record a sampled one starts from all paths off.
void AddPath(XformRecord& record, PathFlag flag) {
  if (record.mode != 1) SamplePaths(record, false, false, false);
  record.*flag = true;
}

// A sampled record merges into the item's first sampled one, so no path of an item is sampled twice.
void InsertRecord(SaveState& state, const XformRecord& record) {
  std::vector<XformRecord>& records = state.animation.sampleRecords[record.item];
  const auto sampled =
      std::find_if(records.begin(), records.end(), [](const XformRecord& earlier) { return earlier.mode == 1; });
  if (record.mode != 1 || sampled == records.end()) {
    records.push_back(record);
    return;
  }
  for (const TransformPath& path : kTransformPaths)
    if (record.*path.flag) (*sampled).*path.flag = true;
}

void InsertMainRecord(SaveState& state, const XformRecord& record) {
  state.log.Info("Adding sample xform anim for %s", record.node->name.c_str());
  InsertRecord(state, record);
  record.node->useMatrix = false;
}

std::array<std::int32_t, 3> VectorChannels(const SaveState& state) {
  return {state.channels.vecX, state.channels.vecY, state.channels.vecZ};
}

bool IsAnimated(const SaveState& state, const CZyUser_Item& transform, const CZyUser_ChannelRead& read) {
  const auto channels = VectorChannels(state);
  return std::any_of(channels.begin(), channels.end(),
                     [&](std::int32_t channel) { return read.IsAnimated(transform, channel) != 0; });
}

bool IsLinked(const SaveState& state, const CZyUser_Item& transform) {
  const auto channels = VectorChannels(state);
  return std::any_of(channels.begin(), channels.end(), [&](std::int32_t channel) {
    std::uint32_t count = 0;
    state.chanLinks.RevCount(transform, channel, count);
    return count != 0;
  });
}

// A transform item without keys whose channels are driven by links. The node keeps its matrix form on this
// road, so it can hold a matrix and an animation at once; that is wanted.
void PlanLinkedTransform(SaveState& state, IZyItem* item, const CZyUser_Item& transform, GltfNode* node) {
  if (!IsLinked(state, transform)) return;
  XformRecord record;
  record.item = item;
  record.node = node;
  if (IsOfType(transform, state.typeCodes.translation))
    SamplePaths(record, true, false, false);
  else if (IsOfType(transform, state.typeCodes.rotation))
    SamplePaths(record, false, true, false);
  else if (IsOfType(transform, state.typeCodes.scale))
    SamplePaths(record, false, false, true);
  InsertRecord(state, record);
}

void PlanDrivenMatrices(const TransformInfo& info, bool followsOthers, XformRecord& record) {
  if (info.drivenWorld != 0 || info.drivenLocal != 0 || info.drivenParent != 0)
    SamplePaths(record, true, true, true);
  else if (followsOthers)
    SamplePaths(record, true, true, false);
  if (info.drivenWpos != 0) AddPath(record, &XformRecord::doTranslation);
  if (info.drivenWrot != 0) AddPath(record, &XformRecord::doRotation);
  if (info.drivenWscl != 0) AddPath(record, &XformRecord::doScale);
}

}  // namespace

bool IsTopLevel(const SaveState& state, const GltfNode& node) {
  return state.options.exportType != 0 && node.parent == state.gltfScene;
}

void PlanSampling(SaveState& state, const CZyUser_Item& item, GltfNode* node, const CZyUser_ChannelRead& read) {
  if (!IsOfType(item, state.typeCodes.locator)) return;
  const auto info = state.transformInfoByItem.find(item.Raw());
  if (info == state.transformInfoByItem.end() || !node) return;

  XformRecord record;
  record.item = item.Raw();
  record.node = node;
  const bool inIk = state.ikItems.contains(item.Raw());
  PlanDrivenMatrices(info->second, inIk || IsTopLevel(state, *node), record);
  if (inIk || info->second.drivenChannels > 0) {
    InsertMainRecord(state, record);  // also one that samples nothing: the node then drops its matrix form
    return;
  }

  CZyUser_Locator locator;
  locator.Set(item.Raw());
  bool animated = false;
  for (const TransformPath& path : kTransformPaths) {
    CZyUser_Item transform;
    if (ZyFailed(locator.TransformItem(path.kind, transform))) continue;
    if (IsAnimated(state, transform, read)) {
      animated = true;
      AddPath(record, path.flag);
    } else {
      PlanLinkedTransform(state, item.Raw(), transform, node);
    }
  }
  if (animated) InsertMainRecord(state, record);
}

void PlanAllNodes(SaveState& state) {
  for (const auto& [raw, node] : state.nodesByItem) {
    CZyUser_Item item;
    item.Set(raw);
    PlanSampling(state, item, node, state.chanEdit);
  }
}
