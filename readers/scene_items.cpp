#include "readers/scene_items.h"

#include "headless/item_types.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <unordered_set>
#include <utility>

namespace readers {
namespace {

using headless::ItemData;
using headless::ItemIndex;
using Kind = ItemSource::Kind;

struct VectorKey {
  const char* key;
  const char* type;
  const char* name;
};

// In stack order.
constexpr VectorKey kVectorKeys[] = {
    {"position", "translation", "Position"}, {"rotation", "rotation", "Rotation"}, {"scale", "scale", "Scale"}};

std::size_t At(ItemIndex index) { return static_cast<std::size_t>(index); }

// The end of a transform item's id, and with a capital its name, when the file gives none.
std::string TransformLabel(const std::string& type) { return type == "translation" ? "position" : type; }

std::string Capitalized(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

const Json& ItemObject(const Json& value) {
  if (!value.IsObject()) Fail(value, "expected an item, an object");
  return value;
}

std::string TypeOf(const Json& item) {
  if (const Json* type = Find(item, "type")) return ReadText(*type);
  return Find(item, "mesh") ? "mesh" : "locator";
}

std::string NameOf(const Json& item, const std::string& type) {
  for (const char* key : {"name", "id"}) {
    if (const Json* text = Find(item, key)) return ReadText(*text);
  }
  return Capitalized(type);
}

bool HoldsSceneItem(const Json& items) {
  return std::any_of(items.Begin(), items.End(), [](const Json& item) {
    const Json* type = item.IsObject() ? Find(item, "type") : nullptr;
    return type && type->IsString() && TextView(*type) == "scene";
  });
}

}  // namespace

SceneItems::SceneItems(const Json& root, headless::SceneData& scene) : scene_(scene) {
  const Json* items = readers::Find(root, "items");
  if (items && HoldsSceneItem(ReadList(*items))) scene.items.clear();
  sources_.resize(scene.items.size());
  if (items) {
    // Most items bring two transform items or three.
    scene.items.reserve(scene.items.size() + std::size_t{4} * ReadList(*items).Size());
    for (const Json& item : items->GetArray()) AddTree(item, -1);
  }
  GiveIds();
  SetParents();
}

ItemIndex SceneItems::AddTree(const Json& item, ItemIndex parent) {
  const std::string type = TypeOf(ItemObject(item));
  const ItemIndex index = Add({Kind::Item, &item, -1}, item, type, NameOf(item, type), parent);
  AddTransforms(item, index);
  const auto addInline = [this](const Json& value) {
    if (value.IsObject()) AddInside(value, -1);
  };
  if (const Json* locator = readers::Find(item, "textureLocator")) addInline(*locator);
  const auto addList = [&](const Json* list) {
    if (!list) return;
    for (const Json& entry : ReadList(*list).GetArray()) addInline(entry);
  };
  addList(readers::Find(item, "deformers"));
  if (const Json* group = readers::Find(item, "deformGroup")) addList(readers::Find(*group, "deformers"));
  if (const Json* children = readers::Find(item, "children")) {
    for (const Json& child : ReadList(*children).GetArray()) {
      if (!child.IsString()) AddInside(child, index);
    }
  }
  return index;
}

void SceneItems::AddInside(const Json& item, ItemIndex parent) { byJson_.emplace(&item, AddTree(item, parent)); }

void SceneItems::AddTransforms(const Json& item, ItemIndex locator) {
  const Json* transforms = readers::Find(item, "transforms");
  for (const VectorKey& row : kVectorKeys) {
    const Json* value = readers::Find(item, row.key);
    if (!value) continue;
    if (transforms) Fail(*value, "is short for an entry of \"transforms\", which stands here too");
    Add({Kind::Vector, value, locator}, *value, row.type, row.name, -1);
  }
  if (!transforms) return;
  for (const Json& entry : ReadList(*transforms).GetArray()) {
    if (entry.IsString()) continue;
    const std::string type = ReadText(Require(entry, "type"));
    const Json* name = readers::Find(entry, "name");
    byJson_.emplace(&entry, Add({Kind::Transform, &entry, locator}, entry, type,
                                name ? ReadText(*name) : Capitalized(TransformLabel(type)), -1));
  }
}

ItemIndex SceneItems::Add(const ItemSource& source, const Json& place, const std::string& type,
                          const std::string& name, ItemIndex parent) {
  if (!headless::IsKnownType(scene_, type)) {
    const Json* key = place.IsObject() ? readers::Find(place, "type") : nullptr;
    Fail(key ? *key : place, "unknown type \"" + type + "\"; \"types\" can add it");
  }
  if (scene_.items.size() >= std::numeric_limits<ItemIndex>::max()) Fail(place, "too many items");
  if (type == "scene" && std::any_of(scene_.items.begin(), scene_.items.end(),
                                     [](const ItemData& item) { return item.type == "scene"; })) {
    Fail(place, "a scene has one scene item, which stands at the top of \"items\"");
  }
  const ItemIndex index = headless::AddItem(scene_, type, name, parent);
  sources_.push_back(source);
  return index;
}

// The id that an item has when it is the only one to want it.
std::string SceneItems::PlainId(ItemIndex index) const {
  const ItemData& item = scene_.items[At(index)];
  const ItemSource& source = sources_[At(index)];
  if (source.kind == Kind::Builtin) return "scene";
  if (source.kind == Kind::Item) return item.name;
  const bool isNamed = source.kind == Kind::Transform && source.json->HasMember("name");
  return scene_.items[At(source.owner)].id + "." + (isNamed ? item.name : TransformLabel(item.type));
}

std::vector<ItemIndex> SceneItems::TakeGivenIds() {
  std::vector<ItemIndex> nameless;
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    const auto index = static_cast<ItemIndex>(i);
    const ItemSource& source = sources_[i];
    const bool isObject = source.kind == Kind::Item || source.kind == Kind::Transform;
    const Json* id = isObject ? readers::Find(*source.json, "id") : nullptr;
    if (!id) {
      nameless.push_back(index);
      continue;
    }
    scene_.items[i].id = ReadText(*id);
    const bool isNew = ids_.insert({scene_.items[i].id, IdEntry{index, 0, true}}).second;
    if (!isNew) Fail(*id, "\"" + ReadText(*id) + "\" is the id of another item already");
  }
  return nameless;
}

void SceneItems::GiveIds() {
  ids_.reserve(sources_.size());
  const std::vector<ItemIndex> nameless = TakeGivenIds();
  for (const ItemIndex index : nameless) {
    if (sources_[At(index)].kind == Kind::Item) ++ids_[scene_.items[At(index)].name].namesakes;
  }
  // True when the id is free.
  const auto take = [this](const std::string& id, ItemIndex index) {
    IdEntry& entry = ids_[id];
    if (entry.item >= 0) return false;
    entry.item = index;
    return true;
  };
  // An owner stands before its transform items, so that its id is known when theirs are made.
  std::unordered_map<std::string, int> numbers;
  for (const ItemIndex index : nameless) {
    std::string& id = scene_.items[At(index)].id;
    id = PlainId(index);
    const bool isShared = sources_[At(index)].kind == Kind::Item && ids_[id].namesakes > 1;
    if (!isShared && take(id, index)) continue;
    const std::string plain = id;
    int& number = numbers[plain];
    do id = fmt::format("{}#{}", plain, ++number);
    while (!take(id, index));
  }
}

void SceneItems::SetParents() {
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    if (sources_[i].kind != Kind::Item) continue;
    const Json* parent = readers::Find(*sources_[i].json, "parent");
    if (!parent || parent->IsNull()) continue;
    if (scene_.items[i].parent >= 0) Fail(*parent, "the item stands among the children of another one");
    scene_.items[i].parent = Find(*parent);
  }
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    if (sources_[i].kind != Kind::Item) continue;
    const Json* children = readers::Find(*sources_[i].json, "children");
    if (children) SetChildren(*children, static_cast<ItemIndex>(i));
  }
  CheckParents();
}

void SceneItems::SetChildren(const Json& children, ItemIndex parent) {
  if (std::none_of(children.Begin(), children.End(), [](const Json& child) { return child.IsString(); })) return;
  std::vector<ItemIndex>& order = scene_.items[At(parent)].extras.Make().childOrder;
  std::unordered_set<ItemIndex> seen;
  for (const Json& child : children.GetArray()) {
    const ItemIndex index = Find(child);
    ItemIndex& known = scene_.items[At(index)].parent;
    if (known >= 0 && known != parent) Fail(child, "the item has another parent");
    if (!seen.insert(index).second) Fail(child, "the item stands here twice");
    known = parent;
    order.push_back(index);
  }
}

void SceneItems::CheckParents() const {
  // An item is done when a walk up from it has ended well.
  std::vector<ItemIndex> walkOf(scene_.items.size(), -1);
  for (std::size_t i = 0; i < scene_.items.size(); ++i) {
    const auto walk = static_cast<ItemIndex>(i);
    ItemIndex item = walk;
    for (; item >= 0 && walkOf[At(item)] < 0; item = scene_.items[At(item)].parent) walkOf[At(item)] = walk;
    if (item < 0 || walkOf[At(item)] != walk) continue;
    // Only item objects name parents, so the circle has at least one.
    while (sources_[At(item)].kind != Kind::Item) item = scene_.items[At(item)].parent;
    const Json& json = *sources_[At(item)].json;
    const Json* parent = readers::Find(json, "parent");
    Fail(parent ? *parent : json, "the parents of \"" + scene_.items[At(item)].id + "\" run in a circle");
  }
}

ItemIndex SceneItems::Find(const Json& reference) const {
  if (!reference.IsString()) {
    const auto item = byJson_.find(&reference);
    if (item != byJson_.end()) return item->second;
  }
  const std::string_view id = TextView(reference);
  const auto known = ids_.find(id);
  const IdEntry entry = known == ids_.end() ? IdEntry() : known->second;
  if (entry.namesakes > 1 && !entry.isGiven)
    Fail(reference, fmt::format("{} items are named \"{}\": give them ids", entry.namesakes, id));
  if (entry.item < 0) Fail(reference, fmt::format("no item has the id \"{}\"", id));
  return entry.item;
}

std::vector<ItemIndex> SceneItems::FindAll(const Json& references) const {
  std::vector<ItemIndex> items;
  for (const Json& reference : ReadList(references).GetArray()) items.push_back(Find(reference));
  return items;
}

headless::ChannelRef SceneItems::FindChannel(const Json& reference) const {
  ReadList(reference, 2);
  const ItemIndex index = Find(reference[0]);
  const ItemData& item = scene_.items[At(index)];
  if (reference[1].IsString()) {
    const std::string name = ReadText(reference[1]);
    const std::int32_t channel = headless::FindChannel(item, name);
    if (channel < 0) Fail(reference[1], "item \"" + item.id + "\" has no channel \"" + name + "\"");
    return {index, channel};
  }
  const std::int32_t channel = ReadInteger(reference[1]);
  if (channel < 0 || At(channel) >= item.channels.size()) {
    Fail(reference[1], fmt::format("channel {} of {}", channel, item.channels.size()));
  }
  return {index, channel};
}

std::vector<ItemIndex> SceneItems::Stack(ItemIndex locator) const {
  std::vector<ItemIndex> stack;
  const Json& item = *sources_[At(locator)].json;
  for (ItemIndex next = locator + 1; At(next) < sources_.size() && sources_[At(next)].kind == Kind::Vector; ++next)
    stack.push_back(next);
  if (const Json* transforms = readers::Find(item, "transforms")) {
    for (const Json& entry : transforms->GetArray()) stack.push_back(Find(entry));
  }
  return stack;
}

}  // namespace readers
