#include "saver/scene_binding.h"

namespace {

// -1 when the item has no such channel.
std::int32_t ChannelNumber(const CZyUser_Item& item, const char* name) {
  std::int32_t channel = -1;
  return ZySucceeded(item.ChannelLookup(name, channel)) ? channel : -1;
}

struct MatrixChannelRow {
  const char* name;
  std::int32_t MatrixChannels::*number;
};
constexpr MatrixChannelRow kMatrixChannels[] = {
    {"wposMatrix", &MatrixChannels::wposMatrix},   {"wrotMatrix", &MatrixChannels::wrotMatrix},
    {"wsclMatrix", &MatrixChannels::wsclMatrix},   {"worldMatrix", &MatrixChannels::worldMatrix},
    {"localMatrix", &MatrixChannels::localMatrix}, {"parentMatrix", &MatrixChannels::parentMatrix},
};

// The transform types share their channel layout, so the first one found settles the numbers for all.
struct VectorChannelRow {
  TransformKind kind;
  const char* x;
  const char* y;
  const char* z;
};
constexpr VectorChannelRow kVectorChannels[] = {
    {TransformKind::Position, "pos.X", "pos.Y", "pos.Z"},
    {TransformKind::Rotation, "rot.X", "rot.Y", "rot.Z"},
    {TransformKind::Scale, "scl.X", "scl.Y", "scl.Z"},
};

void ReadMatrixChannels(const CZyUser_Item& item, MatrixChannels& channels) {
  for (const MatrixChannelRow& row : kMatrixChannels) channels.*row.number = ChannelNumber(item, row.name);
  CZyUser_Locator locator;
  locator.Set(item.Raw());
  for (const VectorChannelRow& row : kVectorChannels) {
    CZyUser_Item transform;
    if (channels.vecX != -1 || ZyFailed(locator.TransformItem(row.kind, transform))) continue;
    channels.vecX = ChannelNumber(transform, row.x);
    channels.vecY = ChannelNumber(transform, row.y);
    channels.vecZ = ChannelNumber(transform, row.z);
  }
}

// Calls `visit` with each item of the type as long as it returns true.
template <class Visit>
void WalkItems(const CZyUser_Scene& scene, std::uint32_t type, Visit visit) {
  std::uint32_t count = 0;
  if (type != 0) scene.ItemCount(type, count);
  for (std::uint32_t index = 0; index < count; ++index) {
    CZyUser_Item item;
    if (ZySucceeded(scene.ItemByIndex(type, index, item)) && !visit(item)) return;
  }
}

double SceneTime(const SaveState& state, const CZyUser_Item& sceneItem) {
  double seconds = 0;
  std::int32_t channel = -1;
  if (ZySucceeded(sceneItem.ChannelLookup("time", channel))) state.chanSetup.Double(sceneItem, channel, seconds);
  return seconds;
}

}  // namespace

CZyUser_Item BindScene(SaveState& state) {
  CZyUser_Scene& scene = state.scene;
  scene.Set(state.frame->SceneObject());
  CZyUser_Item sceneItem;
  std::uint32_t sceneType = 0;
  if (ZySucceeded(state.sceneService.ItemTypeLookup("scene", sceneType)))
    scene.ItemByIndex(sceneType, 0, sceneItem);

  scene.GraphLookup("xfrmCore", state.xfrmCore);
  scene.GraphLookup("xfrmLocal", state.xfrmLocal);
  scene.GraphLookup("targets", state.targets);
  scene.GraphLookup("chanLinks", state.chanLinks);

  scene.SetupChannels(state.chanBind);
  scene.Channels("setup", 0, state.chanSetup);
  scene.Channels("edit", 0, state.chanEdit);
  scene.Channels(nullptr, SceneTime(state, sceneItem), state.chanCurrent);

  state.typeCodes = LookupItemTypes(state.sceneService);
  return sceneItem;
}

void FindChannelNumbers(SaveState& state) {
  MatrixChannels& channels = state.channels;
  channels = MatrixChannels();
  WalkItems(state.scene, state.typeCodes.locator, [&](const CZyUser_Item& item) {
    ReadMatrixChannels(item, channels);
    return channels.vecX == -1;
  });
  WalkItems(state.scene, state.typeCodes.morphDeform, [&](const CZyUser_Item& item) {
    channels.morphEnable = ChannelNumber(item, "enable");
    return channels.morphEnable == -1;
  });
}
