#include "saver/root_items.h"

#include "saver/item_scan.h"

#include <functional>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace {

// An item's identity is the pointer, whatever the text. Null when the host gives none.
const void* IdentOf(const CZyUser_Item& item) {
  const char* ident = nullptr;
  item.Ident(ident);
  return ident;
}

// The selected items; packets without an item are left out.
std::vector<CZyUser_Item> SelectedItems() {
  std::vector<CZyUser_Item> selection;
  CZyItemSelection().GetList(selection);
  std::erase_if(selection, [](const CZyUser_Item& item) { return item.Empty(); });
  return selection;
}

void GatherAll(SaveState& state) {
  SceneFrame& frame = *state.frame;
  frame.StartScan(nullptr);
  while (frame.NextItem()) {
    CZyUser_Item item, parent;
    frame.GetItem(item);
    ScanItem(state, item);
    item.Parent(parent);
    if (parent || !IsOfType(item, state.typeCodes.locator)) continue;
    state.rootItems.push_back(item.Raw());
    state.log.Info("Root item:%s\n", NameOf(item));
  }
}

void GatherSelected(SaveState& state) {
  for (const CZyUser_Item& item : SelectedItems()) {
    if (IsOfType(item, state.typeCodes.scene)) continue;
    state.log.Info("   %s", NameOf(item));
    ScanItem(state, item);
    state.rootItems.push_back(item.Raw());
  }
}

// The selected items and all below them, and the skeletons of the selected meshes.
class SelectedHierarchies {
 public:
  explicit SelectedHierarchies(SaveState& state) : state_(state) {}

  void Gather() {
    const std::vector<CZyUser_Item> selection = SelectedItems();
    for (const CZyUser_Item& item : selection)
      if (const void* ident = IdentOf(item)) selectedIdents_.insert(ident);
    for (const CZyUser_Item& item : selection) {
      if (IsOfType(item, state_.typeCodes.scene)) continue;
      ScanItem(state_, item);
      AddUnlessBelowRoot(item);
      if (state_.options.geometry != 0) AddSkeleton(item);
    }
  }

 private:
  void AddRoot(const CZyUser_Item& item) {
    knownRoots_.insert(item.Raw());
    state_.rootItems.push_back(item.Raw());
  }

  void AddRootOnce(const CZyUser_Item& item) {
    if (!knownRoots_.contains(item.Raw())) AddRoot(item);
  }

  void AddUnlessBelowRoot(const CZyUser_Item& item) {
    CZyUser_Item parent;
    item.Parent(parent);
    if (parent && (selectedIdents_.contains(IdentOf(parent)) || knownRoots_.contains(parent.Raw()))) return;
    AddRoot(item);
  }

  bool HasMesh(const CZyUser_Item& item) const {
    std::int32_t channel = -1;
    CZyUser_Mesh mesh;
    return ZySucceeded(item.ChannelLookup("mesh", channel)) &&
           ZySucceeded(state_.chanSetup.ValueObject(item, channel, mesh));
  }

  // The last deform group that names the mesh wins. The scan of a selected group lengthens the list, so the
  // table follows it.
  IZyItem* GroupOfMesh(const CZyUser_Item& mesh) {
    for (; groupsIndexed_ < state_.deformGroups.size(); ++groupsIndexed_) {
      CZyUser_Item group;
      group.Set(state_.deformGroups[groupsIndexed_]);
      std::uint32_t count = 0;
      state_.deformerService.MeshCount(group, count);
      for (std::uint32_t index = 0; index < count; ++index) {
        CZyUser_Item member;
        if (ZySucceeded(state_.deformerService.MeshByIndex(group, index, member)))
          groupByMesh_[IdentOf(member)] = group.Raw();
      }
    }
    const void* ident = IdentOf(mesh);
    const auto found = groupByMesh_.find(ident);
    return ident && found != groupByMesh_.end() ? found->second : nullptr;
  }

  // The items that drive the mesh's deformers, in pointer order, which is scene order.
  std::set<IZyItem*, std::less<>> DrivingItems(const CZyUser_Item& mesh) {
    CZyUser_Item group;
    CZyUser_GroupDeformer groupDeformer;
    if (group.Set(GroupOfMesh(mesh))) state_.deformerService.GroupDeformer(group, state_.chanBind, groupDeformer);
    std::set<IZyItem*, std::less<>> drivers;
    const std::uint32_t count = groupDeformer.DeformerCount();
    for (std::uint32_t index = 0; index < count; ++index) {
      CZyUser_Item deformer, driver;
      if (ZyFailed(groupDeformer.DeformerByIndex(index, deformer))) continue;
      // Stricter than elsewhere on purpose: other codes of success don't count here.
      if (state_.deformerService.DeformerDeformationItem(deformer, driver) == ZYe_OK) drivers.insert(driver.Raw());
    }
    return drivers;
  }

  // The top joints themselves have no say in where a skeleton starts: their parents do.
  void AddSkeleton(const CZyUser_Item& item) {
    if (!HasMesh(item)) return;
    const std::set<IZyItem*, std::less<>> drivers = DrivingItems(item);
    for (IZyItem* driver : drivers) {
      CZyUser_Item joint, parent;
      joint.Set(driver);
      joint.Parent(parent);
      if (!parent)
        AddRootOnce(joint);
      else if (!drivers.contains(parent.Raw()))
        AddRootOnce(parent);
    }
  }

  SaveState& state_;
  std::unordered_set<const void*> selectedIdents_;
  std::unordered_set<const IZyItem*> knownRoots_;  // the entries of rootItems
  std::unordered_map<const void*, IZyItem*> groupByMesh_;
  std::size_t groupsIndexed_ = 0;
};

}  // namespace

void GatherRootItems(SaveState& state) {
  switch (state.options.exportType) {
    case 0:
      return GatherAll(state);
    case 1:
      return GatherSelected(state);
    case 2:
      return SelectedHierarchies(state).Gather();
  }
}
