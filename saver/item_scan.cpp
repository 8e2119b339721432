#include "saver/item_scan.h"

#include "host/user_action.h"

namespace {

// The identity when the host gives no matrix.
Matrix4 BindMatrix(const SaveState& state, const CZyUser_Locator& locator) {
  Matrix4 matrix;
  locator.WorldTransform(state.chanBind, matrix);
  return matrix;
}

void ScanIkSolver(SaveState& state, const CZyUser_Item& solver) {
  state.log.Info("IKSolver:%s", NameOf(solver));
  CZyUser_Item root;
  if (ZyFailed(solver.Parent(root))) return;
  state.ikRoots.push_back(root.Raw());
  state.log.Info("IK root:%s", NameOf(root));
}

void ScanDeformer(SaveState& state, const CZyUser_Item& deformer) {
  CZyUser_Item driver;
  if (ZyFailed(state.deformerService.DeformerDeformationItem(deformer, driver))) return;
  const char* name = NameOf(driver);
  CZyUser_Locator locator;
  Matrix4 matrix;
  if (locator.Set(driver.Raw()))
    matrix = BindMatrix(state, locator);
  else
    state.log.Error("Failed to obtain locator for item:%s", name);
  state.setupMatricesByName.insert({name, matrix});
}

void ScanDeformGroup(SaveState& state, const CZyUser_Item& group) {
  CZyUser_GroupDeformer groupDeformer;
  state.deformerService.GroupDeformer(group, state.chanBind, groupDeformer);
  const std::uint32_t count = groupDeformer.DeformerCount();
  for (std::uint32_t index = 0; index < count; ++index) {
    CZyUser_Item deformer;
    if (ZySucceeded(groupDeformer.DeformerByIndex(index, deformer))) ScanDeformer(state, deformer);
  }
  state.deformGroups.push_back(group.Raw());
}

void ScanMask(SaveState& state, const CZyUser_Item& mask) {
  std::int32_t channel = -1;
  std::int32_t enabled = 0;
  if (ZySucceeded(mask.ChannelLookup("enable", channel)) && channel >= 0)
    state.chanSetup.Integer(mask, channel, enabled);
  if (enabled == 0) return;

  const char* polyTag = "";
  if (ZySucceeded(mask.ChannelLookup("ptag", channel))) state.chanSetup.String(mask, channel, polyTag);
  state.masksByPtag.insert({polyTag ? polyTag : "", mask.Raw()});
}

void ScanLocator(SaveState& state, const CZyUser_Item& item) {
  CZyUser_Locator locator;
  if (locator.Set(item.Raw())) state.setupMatricesByName.insert({NameOf(item), BindMatrix(state, locator)});
}

void LogActionClip(SaveState& state, const CZyUser_Item& item) {
  CZyUser_ActionClip clip;
  if (clip.Set(item.Raw()))
    state.log.Info("Action:%s active:%d enabled:%d", NameOf(item), clip.Active(), clip.Enabled());
}

}  // namespace

void ScanItem(SaveState& state, const CZyUser_Item& item) {
  const ItemTypeCodes& types = state.typeCodes;
  if (IsOfType(item, types.ikFullBody)) ScanIkSolver(state, item);
  if (IsOfType(item, types.replicator)) state.log.Info("Replicator:%s", NameOf(item));

  // A deform group may be a locator too, and then counts as a group only.
  if (IsOfType(item, types.deformGroup))
    ScanDeformGroup(state, item);
  else if (IsOfType(item, types.mask))
    ScanMask(state, item);
  else if (IsOfType(item, types.locator))
    ScanLocator(state, item);
  else if (IsOfType(item, types.actionclip))
    LogActionClip(state, item);
}
