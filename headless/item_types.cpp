#include "headless/item_types.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace headless {

namespace {

const ItemTypeRow* FindRow(std::string_view type) {
  static const auto* const rows = [] {
    auto byName = std::make_unique<std::unordered_map<std::string_view, const ItemTypeRow*>>();
    for (const ItemTypeRow& row : kItemTypes) byName->emplace(row.name, &row);
    return byName.release();
  }();
  const auto row = rows->find(type);
  return row == rows->end() ? nullptr : row->second;
}

auto FindAdded(const SceneData& scene, std::string_view type) {
  return std::find_if(scene.types.begin(), scene.types.end(),
                      [&](const auto& candidate) { return candidate.first == type; });
}

}  // namespace

std::string_view BaseType(const SceneData& scene, std::string_view type) {
  if (const ItemTypeRow* row = FindRow(type)) return row->base;
  const auto added = FindAdded(scene, type);
  return added == scene.types.end() ? std::string_view() : std::string_view(added->second);
}

bool IsKnownType(const SceneData& scene, std::string_view type) {
  return FindRow(type) || FindAdded(scene, type) != scene.types.end();
}

bool TypeDerivesFrom(const SceneData& scene, std::string_view type, std::string_view base) {
  // A circle of added types ends once each of them has been seen.
  std::size_t left = std::size(kItemTypes) + scene.types.size();
  for (; !type.empty() && left > 0; type = BaseType(scene, type), --left)
    if (type == base) return true;
  return false;
}

ItemTypes::ItemTypes(const SceneData& scene) {
  for (const ItemTypeRow& row : kItemTypes) Add(row.name);
  for (const auto& [name, base] : scene.types) Add(name);
  itemCodes_.reserve(scene.items.size());
  for (const ItemData& item : scene.items) itemCodes_.push_back(Add(item.type));

  for (std::uint32_t code = 1; code <= Count(); ++code) bases_[code - 1] = Code(BaseType(scene, names_[code - 1]));
  for (std::uint32_t code = 1; code <= Count(); ++code) {
    std::uint32_t steps = 0, type = code;
    while (type != 0 && steps++ <= Count()) type = bases_[type - 1];
    if (type != 0) bases_[code - 1] = 0;  // a circle: cut here
  }
}

std::uint32_t ItemTypes::Add(std::string_view name) {
  const auto [entry, added] = codes_.try_emplace(std::string(name), Count() + 1);
  if (added) {
    names_.emplace_back(name);
    bases_.push_back(0);
  }
  return entry->second;
}

std::uint32_t ItemTypes::Code(std::string_view name) const {
  const auto entry = codes_.find(std::string(name));
  return entry == codes_.end() ? 0 : entry->second;
}

const char* ItemTypes::Name(std::uint32_t code) const {
  return code >= 1 && code <= Count() ? names_[code - 1].c_str() : nullptr;
}

}  // namespace headless
