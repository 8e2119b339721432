#include "headless/scene_index.h"

#include "host/scene_api.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace headless {

namespace {

constexpr std::string_view kMatrixChannelNames[] = {"wposMatrix",  "wrotMatrix",  "wsclMatrix",
                                                    "worldMatrix", "localMatrix", "parentMatrix"};

}  // namespace

SceneIndex::SceneIndex(const SceneData& scene, ItemTypes types)
    : scene_(scene),
      types_(std::move(types)),
      locatorType_(types_.Code("locator")),
      surfaceType_(types_.Code("triSurf")),
      itemsByType_(types_.Count() + 1) {
  parents_.reserve(scene.items.size());
  firstChannels_.reserve(scene.items.size() + 1);
  firstChannels_.push_back(0);
  for (const ItemData& item : scene.items) {
    parents_.push_back(HasItem(item.parent) ? item.parent : -1);
    firstChannels_.push_back(firstChannels_.back() + item.channels.size());
  }
  CutParentCircles();
  OrderChildren();
}

// Those that their parent lists come first, in its order; the others follow in scene order.
void SceneIndex::OrderChildren() {
  std::vector<Link> links;
  links.reserve(parents_.size());
  std::vector<bool> ordered(parents_.size(), false);
  for (std::size_t parent = 0; parent < parents_.size(); ++parent)
    for (const ItemIndex child : scene_.items[parent].extras->childOrder) {
      if (!HasItem(child) || ordered[At(child)] || parents_[At(child)] != static_cast<ItemIndex>(parent)) continue;
      ordered[At(child)] = true;
      links.emplace_back(static_cast<ItemIndex>(parent), child);
    }
  for (std::size_t item = 0; item < parents_.size(); ++item)
    if (!ordered[item]) links.emplace_back(parents_[item], static_cast<ItemIndex>(item));
  children_ = LinkTable(parents_.size(), links, LinkEnd::From);
}

void SceneIndex::CutParentCircles() {
  std::vector<Link> links;
  links.reserve(parents_.size());
  for (std::size_t item = 0; item < parents_.size(); ++item)
    links.emplace_back(static_cast<ItemIndex>(item), parents_[item]);
  const auto components = StrongComponents(LinkTable(parents_.size(), links, LinkEnd::From));
  for (std::size_t item = 0; item < parents_.size(); ++item)
    if (parents_[item] >= 0 && components[item] == components[At(parents_[item])]) parents_[item] = -1;
}

const std::vector<ItemIndex>* SceneIndex::ItemsOfType(std::uint32_t type) const {
  const bool all = type == kAllItems;
  if (!all && !types_.Name(type)) return nullptr;
  auto& list = itemsByType_[all ? 0 : type];
  if (!list) {
    list.emplace();
    for (std::size_t place = 0; place < scene_.items.size(); ++place) {
      const auto item = static_cast<ItemIndex>(place);
      if (all || IsOfType(item, type)) list->push_back(item);
    }
  }
  return &*list;
}

ChannelKind SceneIndex::KindOf(ChannelRef ref) const {
  const std::string_view name = Channel(ref).name;
  if (name == "mesh" && scene_.items[At(ref.item)].mesh) return ChannelKind::Mesh;
  if (name == "surf" && IsOfType(ref.item, surfaceType_)) return ChannelKind::Surface;
  return MatrixOf(ref) ? ChannelKind::Matrix : ChannelKind::Value;
}

std::optional<MatrixChannel> SceneIndex::MatrixOf(ChannelRef ref) const {
  const auto* name = std::find(std::begin(kMatrixChannelNames), std::end(kMatrixChannelNames), Channel(ref).name);
  if (name == std::end(kMatrixChannelNames) || !IsLocator(ref.item)) return std::nullopt;
  return static_cast<MatrixChannel>(name - std::begin(kMatrixChannelNames));
}

}  // namespace headless
