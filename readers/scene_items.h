// The items of a scene file: their order, their ids, and references to them.
#pragma once

#include "headless/scene_data.h"
#include "readers/scene_json.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace readers {

// Where an item comes from.
struct ItemSource {
  enum class Kind {
    Builtin,    // the scene item that every scene has
    Item,       // an item object
    Transform,  // an entry of a locator's "transforms"
    Vector      // a locator's "position", "rotation" or "scale"
  };
  Kind kind = Kind::Builtin;
  const Json* json = nullptr;
  headless::ItemIndex owner = -1;  // of Transform and Vector: the locator
};

class SceneItems {
 public:
  // Adds all items of the root object's "items" to the scene, in the order of the file, and gives them their
  // ids. An item is followed by its own transform items, by what else stands inside it, and by its children.
  // Parents are set; nothing else of the items is filled.
  SceneItems(const Json& root, headless::SceneData& scene);

  const std::vector<ItemSource>& Sources() const { return sources_; }  // by item

  // The item that a value names by id, or that it is itself.
  headless::ItemIndex Find(const Json& reference) const;
  std::vector<headless::ItemIndex> FindAll(const Json& references) const;
  // Of an item and one of its channels, by name or number. All channels must be there already.
  headless::ChannelRef FindChannel(const Json& reference) const;
  // The transform items that stand inside a locator's object, in stack order, and those it names.
  std::vector<headless::ItemIndex> Stack(headless::ItemIndex locator) const;

 private:
  void AddTree(const Json& item, headless::ItemIndex parent);
  void AddTransforms(const Json& item, headless::ItemIndex locator);
  headless::ItemIndex Add(const ItemSource& source, const Json& place, const std::string& type,
                          const std::string& name, headless::ItemIndex parent);
  void GiveIds();
  std::string PlainId(headless::ItemIndex index) const;
  void SetParents();
  void SetChildren(const Json& children, headless::ItemIndex parent);
  void CheckParents() const;

  headless::SceneData& scene_;
  std::vector<ItemSource> sources_;
  std::unordered_map<const Json*, headless::ItemIndex> byJson_;
  std::unordered_map<std::string, headless::ItemIndex> byId_;
  std::unordered_map<std::string, int> ambiguous_;  // how many items have the name and no id of their own
};

}  // namespace readers
