#include "saver/ik_items.h"

namespace {

void AddChildren(SaveState& state, const CZyUser_Item& item, std::vector<CZyUser_Item>& stack) {
  std::uint32_t count = 0;
  item.SubCount(count);
  for (std::uint32_t index = 0; index < count; ++index) {
    CZyUser_Item child;
    if (ZyFailed(item.SubByIndex(index, child))) continue;
    if (IsOfType(child, state.typeCodes.locator) && child.PackageTest("ik.joint") == ZYe_OK)
      state.log.Info("   IK joint:%s", NameOf(child));
    state.ikItems.insert(child.Raw());
    stack.push_back(std::move(child));
  }
}

}  // namespace

void CollectIkItems(SaveState& state) {
  std::vector<CZyUser_Item> stack;
  for (IZyItem* raw : state.ikRoots) {
    CZyUser_Item root;
    root.Set(raw);
    state.log.Info("Processing IK root:%s", NameOf(root));
    state.ikItems.insert(raw);
    stack.push_back(std::move(root));
    while (!stack.empty()) {
      const CZyUser_Item item = std::move(stack.back());
      stack.pop_back();
      AddChildren(state, item, stack);
    }
  }
}
