// The items of a scene file: their order, their ids, and references to them.
#pragma once

#include "headless/scene_data.h"
#include "host/insertion_map.h"
#include "readers/scene_json.h"

#include <string>
#include <string_view>
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
  // Parents are set; nothing else of the items is filled. While this lives no items may be added or removed.
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
  // What a name or id stands for.
  struct IdEntry {
    headless::ItemIndex item = -1;  // that has the id
    int namesakes = 0;              // items that have the name and no id of their own
    bool isGiven = false;           // the id stands in the file
  };

  headless::ItemIndex AddTree(const Json& item, headless::ItemIndex parent);
  void AddInside(const Json& item, headless::ItemIndex parent);
  void AddTransforms(const Json& item, headless::ItemIndex locator);
  headless::ItemIndex Add(const ItemSource& source, const Json& place, const std::string& type,
                          const std::string& name, headless::ItemIndex parent);
  // Returns the items that have none.
  std::vector<headless::ItemIndex> TakeGivenIds();
  void GiveIds();
  std::string PlainId(headless::ItemIndex index) const;
  void SetParents();
  void SetChildren(const Json& children, headless::ItemIndex parent);
  void CheckParents() const;

  headless::SceneData& scene_;
  std::vector<ItemSource> sources_;
  std::unordered_map<const Json*, headless::ItemIndex> byJson_;  // of what stands inside another item
  InsertionMap<std::string_view, IdEntry> ids_;                  // the texts are those of the items
};

}  // namespace readers
