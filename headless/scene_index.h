// What is worked out once about a scene: type codes, hierarchy, places of channels.
#pragma once

#include "headless/item_types.h"
#include "headless/link_table.h"
#include "headless/scene_data.h"

#include <optional>
#include <span>
#include <vector>

namespace headless {

// What a channel holds. Only values are read as numbers and texts.
enum class ChannelKind : std::uint8_t { Value, Matrix, Mesh, Surface };

// The matrix channels of a locator, in the order in which every locator lists them.
enum class MatrixChannel { Wpos, Wrot, Wscl, World, Local, Parent };

inline std::size_t At(std::int32_t index) { return static_cast<std::size_t>(index); }

class SceneIndex {
 public:
  // The scene, whose types these are, outlives the index.
  SceneIndex(const SceneData& scene, ItemTypes types);

  const SceneData& Scene() const { return scene_; }
  const ItemTypes& Types() const { return types_; }
  std::size_t ItemCount() const { return scene_.items.size(); }
  bool HasItem(ItemIndex item) const { return item >= 0 && At(item) < scene_.items.size(); }

  std::uint32_t TypeOf(ItemIndex item) const { return types_.CodeOf(item); }
  bool IsOfType(ItemIndex item, std::uint32_t type) const { return types_.Derives(TypeOf(item), type); }
  bool IsLocator(ItemIndex item) const { return IsOfType(item, locatorType_); }

  // -1 for none, also where the parents of a scene run in a circle.
  ItemIndex Parent(ItemIndex item) const { return parents_[At(item)]; }
  std::span<const ItemIndex> Children(ItemIndex item) const { return children_.Of(item); }
  // Items of the type and of types derived from it, in scene order; null for an unknown type.
  const std::vector<ItemIndex>* ItemsOfType(std::uint32_t type) const;

  bool HasChannel(ChannelRef ref) const {
    return HasItem(ref.item) && ref.channel >= 0 && At(ref.channel) < scene_.items[At(ref.item)].channels.size();
  }
  const ChannelData& Channel(ChannelRef ref) const { return scene_.items[At(ref.item)].channels[At(ref.channel)]; }
  // Place of the channel when those of all items stand in one row.
  std::size_t ChannelPlace(ChannelRef ref) const { return firstChannels_[At(ref.item)] + At(ref.channel); }
  std::size_t ChannelCount() const { return firstChannels_.back(); }

  ChannelKind KindOf(ChannelRef ref) const;
  // Which of a locator's matrices the channel is; nothing for other channels.
  std::optional<MatrixChannel> MatrixOf(ChannelRef ref) const;

 private:
  void CutParentCircles();
  void OrderChildren();

  const SceneData& scene_;
  ItemTypes types_;
  std::uint32_t locatorType_, surfaceType_;
  std::vector<ItemIndex> parents_;
  LinkTable children_;
  std::vector<std::size_t> firstChannels_;
  mutable std::vector<std::optional<std::vector<ItemIndex>>> itemsByType_;  // filled on demand
};

}  // namespace headless
