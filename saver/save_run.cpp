#include "saver/save_run.h"

#include "animation/actors.h"
#include "animation/export_animation.h"
#include "geometry/skins.h"
#include "host/fourcc.h"
#include "materials/create_materials.h"
#include "saver/ik_items.h"
#include "saver/item_scan.h"
#include "saver/node_tree.h"
#include "saver/root_items.h"
#include "saver/scene_binding.h"

#include <string_view>

namespace {

void MakeDocument(SaveState& state) {
  state.document = std::make_unique<GltfDocument>();
  state.document->format = state.textFormat;
  state.document->skinnedMeshInWS = static_cast<std::uint32_t>(state.options.skinnedMeshInWS);
  state.document->indices32 = static_cast<std::uint32_t>(state.options.indicesExport);
  state.document->log = &state.log;
  state.gltfScene = state.document->CreateScene();
}

void ScanItemsOfType(SaveState& state, const char* typeName) {
  state.frame->StartScan(typeName);
  while (state.frame->NextItem()) {
    CZyUser_Item item;
    state.frame->GetItem(item);
    ScanItem(state, item);
  }
}

// Masks and deform groups stand outside of the hierarchy, where a selection doesn't lead to them.
void ScanBeyondSelection(SaveState& state) {
  const SaveOptions& options = state.options;
  if (options.geometry == 0 || (options.exportType != 1 && options.exportType != 2)) return;
  if (options.materials != 0 && state.polyTagMaterials.empty()) ScanItemsOfType(state, "mask");
  if (state.deformGroups.empty()) ScanItemsOfType(state, "deformGroup");
}

void LogRoots(SaveState& state) {
  state.log.Info("Scanning finished, rootItems:%d", static_cast<int>(state.rootItems.size()));
  for (IZyItem* raw : state.rootItems) {
    CZyUser_Item item;
    item.Set(raw);
    state.log.Info("Root item:%s\n", NameOf(item));
  }
}

bool IsActor(const SaveState& state, const CZyUser_Item& item) {
  if (!IsOfType(item, state.typeCodes.group)) return false;
  const char* tag = item.GetTag(kTagGroupType);
  return tag && std::string_view(tag) == "actor";
}

// Only the first actor of the scene counts.
void LoadActor(SaveState& state, const CZyUser_Item& sceneItem) {
  CZyUser_ItemGraph groups;
  if (ZyFailed(state.scene.GraphLookup("currentGroups", groups))) return;
  std::uint32_t count = 0;
  groups.FwdCount(sceneItem, count);
  for (std::uint32_t index = 0; index < count; ++index) {
    CZyUser_Item item;
    if (ZyFailed(groups.FwdByIndex(sceneItem, index, item)) || !IsActor(state, item)) continue;
    FillActor(state, item);
    const ActorRecord& actor = state.animation.actor;
    state.log.Info("---   Actor:%s actions:%d items:%d chans:%d", NameOf(item),
                   static_cast<int>(actor.actions.size()), static_cast<int>(actor.items.size()),
                   static_cast<int>(actor.channelCount));
    return;
  }
}

bool WriteAndFreeDocument(SaveState& state) {
  const bool written = WriteDocument(*state.document, state.filename);
  ClearDocument(*state.document);
  state.document.reset();
  state.gltfScene = nullptr;
  return written;
}

}  // namespace

zyresult InitSaver(SaveState& state) {
  state.initialized = true;
  state.log.Setup("glTf v2 :: InitSaver()");
  state.options = ReadSaveOptions();
  MakeDocument(state);
  const CZyUser_Item sceneItem = BindScene(state);
  FindChannelNumbers(state);
  ScanBeyondSelection(state);
  GatherRootItems(state);
  LogRoots(state);
  LoadActor(state, sceneItem);
  CollectIkItems(state);
  return ZYe_OK;
}

zyresult RunSaver(SaveState& state) {
  state.log.Info("RunSaver()");
  CreateNodes(state);
  // Named for morphs, this option is about skins.
  if (state.options.morphMaps == 1)
    for (const auto& [item, mesh] : state.meshesByItem) CreateDeformers(state, mesh, item);
  CreateMaterials(state);
  ExportAnimation(state);
  if (!WriteAndFreeDocument(state)) {
    state.log.ErrorDialog("Failed to export GLTF!");
    return ZYe_FAILED;
  }
  state.log.Info("...DONE");
  return ZYe_OK;
}
