#include "animation/actors.h"

namespace {

// Sorts the items of a group into members and action clips.
class GroupItemVisitor final : public CZyImpl_AbstractVisitor {
 public:
  GroupItemVisitor(const CZyUser_GroupEnumerator& enumerator, const ItemTypeCodes& types,
                   InsertionSet<IZyItem*>& members, std::vector<IZyItem*>& actions)
      : enumerator_(enumerator), types_(types), members_(members), actions_(actions) {}

  zyresult Evaluate() override {
    CZyUser_Item item;
    if (ZyFailed(enumerator_.Item(item))) return ZYe_OK;
    if (!IsOfType(item, types_.actionclip)) {
      members_.insert(item.Raw());
      return ZYe_OK;
    }
    CZyUser_ActionClip clip;
    if (clip.Set(item.Raw()) && clip.Enabled() != 0) actions_.push_back(item.Raw());
    return ZYe_OK;
  }

 private:
  const CZyUser_GroupEnumerator& enumerator_;
  const ItemTypeCodes& types_;
  InsertionSet<IZyItem*>& members_;
  std::vector<IZyItem*>& actions_;
};

// Finds the locators whose transforms the channels of a group move.
class GroupChanVisitor final : public CZyImpl_AbstractVisitor {
 public:
  GroupChanVisitor(const CZyUser_GroupEnumerator& enumerator, const ItemTypeCodes& types,
                   InsertionSet<IZyItem*>& members, std::uint32_t& channelCount)
      : enumerator_(enumerator), types_(types), members_(members), channelCount_(channelCount) {}

  zyresult Evaluate() override {
    ++channelCount_;
    CZyUser_Item carrier;
    if (ZySucceeded(enumerator_.Item(carrier)) && IsTransform(carrier)) InsertLocatorOf(carrier);
    return ZYe_OK;
  }

 private:
  bool IsTransform(const CZyUser_Item& item) const {
    return IsOfType(item, types_.translation) || IsOfType(item, types_.rotation) || IsOfType(item, types_.scale);
  }

  void InsertLocatorOf(const CZyUser_Item& transform) {
    if (!graphSought_) {
      graphSought_ = true;
      CZyUser_Scene scene;
      if (ZySucceeded(transform.Context(scene))) scene.GraphLookup("xfrmCore", xfrmCore_);
    }
    std::uint32_t count = 0;
    CZyUser_Item locator;
    if (ZySucceeded(xfrmCore_.FwdCount(transform, count)) && count != 0 &&
        ZySucceeded(xfrmCore_.FwdByIndex(transform, 0, locator)))
      members_.insert(locator.Raw());
  }

  const CZyUser_GroupEnumerator& enumerator_;
  const ItemTypeCodes& types_;
  InsertionSet<IZyItem*>& members_;
  std::uint32_t& channelCount_;
  bool graphSought_ = false;
  CZyUser_ItemGraph xfrmCore_;
};

}  // namespace

zyresult FillActor(SaveState& state, const CZyUser_Item& item) {
  ActorRecord& actor = state.animation.actor;
  actor = {};
  actor.item = item;

  CZyUser_GroupItem group;
  group.Set(item.Raw());
  InsertionSet<IZyItem*> members;
  CZyUser_GroupEnumerator enumerator;
  group.Enumerator(enumerator);
  GroupItemVisitor items(enumerator, state.typeCodes, members, actor.actions);
  enumerator.Enumerate(GroupMembers::Items, items);
  GroupChanVisitor channels(enumerator, state.typeCodes, members, actor.channelCount);
  enumerator.Enumerate(GroupMembers::Channels, channels);

  actor.items.assign(members.begin(), members.end());
  return ZYe_OK;
}
