#include "tool/not_carried.h"

#include "headless/item_types.h"
#include "headless/scene_index.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

namespace tool {
namespace {

using headless::At;
using headless::ItemIndex;
using std::string_view;

// A message of the savers: the item's name stands between `before` and the last `after` (empty: the end).
struct LogRule {
  string_view before;
  string_view after;
  const char* what;
  const char* why;  // "{}" stands for the number behind `numberKey`
  const char* help = "";
  string_view numberKey = {};
};

// The first one that fits counts.
constexpr LogRule kLogRules[] = {
    {"   Creating mesh:", " type:", "mesh", "has {} triangle corners, and 16-bit indices reach 65535 only",
     "--indices 32, or --indices auto", " polyInds:"},
    {"Failed to obtain locator for item:", "", "item", "has no locator"},
    {"Failed to get mesh for item:", "", "mesh", "can't be read from the host"},
    {"Failed to find node:", " (for skin deformer)", "joint", "isn't exported as a node, so skins do without it"},
    {"Failed to find node:", "", "joint", "isn't exported as a node, so skins do without it"},
    {"Failed to create skin deformer for mesh:", "", "skin", "can't be made"},
    {"Warning - Skin: ", " Node:", "skin", "has points with more than four joints, of which only four count"},
    {"Failed to create material:", "", "material", "can't be made"},
    {"    Poly tag ", " does not have material layer effect", "material", "has no material layer"},
    {"    Multiple material layers detected within poly tag ", "", "material layers",
     "more than one in a material; only one counts"},
    {"    Unsupported layer effect ", "", "layer effect", "has no counterpart in glTF"},
    {"    Unsupported layer ", "", "layer", "has no counterpart in glTF"},
    {"Creating texture:", " failed!", "texture", "needs a texture locator and the projection type UVMap"},
    {"Image file path: ", " doesn't exist!", "image", "there is no such file", "--image-root DIR"},
    {"Unable to get time range for item:", ", type:", "animation", "its channels don't tell a range of time"},
    {"Sampling stopped at time:", ", too many samples", "animation", "too many samples; it stops at this time"},
};

struct KindRule {
  string_view type;
  const char* what;
  const char* why;
};

constexpr KindRule kKindRules[] = {
    {"light", "light", "lights aren't exported"},
    {"camera", "camera lens", "all cameras are exported with the same lens"},
    {"meshInst", "instance", "becomes a node without a mesh"},
    {"replicator", "replicator", "becomes an empty node"},
    {"triSurf", "surface", "becomes an empty node"},
    {"morphDeform", "morph", "morphs aren't exported"},
};

// What the savers leave out together with all below it.
constexpr string_view kDroppedTypes[] = {"light", "lightMaterial", "txtrLocator", "morphDeform"};
constexpr string_view kDroppedNames[] = {"MorphGroup", "TextureGroup"};
constexpr char kCameras[] = "sceneio.gltf.save.cameras";  // cameras go the same way when it is 0

// Keys of these move no node by themselves.
constexpr string_view kStillTypes[] = {"locator", "textureLayer", "morphDeform"};
constexpr char kAnimation[] = "sceneio.gltf.save.animation";

// The digits behind a key.
string_view NumberBehind(string_view text, string_view key) {
  const std::size_t place = text.rfind(key);
  if (place == string_view::npos) return "more";
  const string_view rest = text.substr(place + key.size());
  return rest.substr(0, rest.find_first_not_of("0123456789"));
}

std::optional<NotCarried> Apply(const LogRule& rule, string_view text) {
  if (!text.starts_with(rule.before)) return std::nullopt;
  const string_view rest = text.substr(rule.before.size());
  const std::size_t end = rule.after.empty() ? rest.size() : rest.rfind(rule.after);
  if (end == string_view::npos) return std::nullopt;
  std::string why = rule.why;
  if (!rule.numberKey.empty()) why.replace(why.find("{}"), 2, NumberBehind(text, rule.numberKey));
  return NotCarried{std::string(rest.substr(0, end)), rule.what, why, rule.help};
}

bool IsOff(const headless::SceneData& scene, const char* userValue) {
  const auto value = scene.userValues.find(userValue);
  return value != scene.userValues.end() && value->second == 0;
}

struct TypeRules {
  std::vector<const KindRule*> kinds;
  bool isLocator = false;
  bool isDropped = false;
  bool isStill = false;
};

// What holds for the items of a scene by their types, of which there are few.
class RuleTable {
 public:
  explicit RuleTable(const headless::SceneData& scene) : scene_(scene) {
    rulesOfItem_.reserve(scene.items.size());
    for (const headless::ItemData& item : scene.items) {
      const auto [entry, isNew] = rulesByType_.try_emplace(item.type);
      if (isNew) entry->second = Find(item.type);
      rulesOfItem_.push_back(&entry->second);
    }
  }

  const TypeRules& Of(ItemIndex item) const { return *rulesOfItem_[At(item)]; }

 private:
  TypeRules Find(string_view type) const {
    const auto derives = [&](string_view base) { return headless::TypeDerivesFrom(scene_, type, base); };
    const auto isOneOf = [&](const auto& types) {
      return std::any_of(std::begin(types), std::end(types), derives);
    };
    const bool isUnwanted = IsOff(scene_, kCameras) && derives("camera");
    TypeRules rules;
    for (const KindRule& rule : kKindRules)
      if (!isUnwanted && derives(rule.type)) rules.kinds.push_back(&rule);
    rules.isLocator = derives("locator");
    rules.isDropped = isUnwanted || isOneOf(kDroppedTypes);
    rules.isStill = isOneOf(kStillTypes);
    return rules;
  }

  const headless::SceneData& scene_;
  std::map<string_view, TypeRules> rulesByType_;
  std::vector<const TypeRules*> rulesOfItem_;
};

bool IsDroppedForName(const headless::ItemData& item, const TypeRules& rules) {
  const string_view name = item.name;
  return rules.isLocator &&
         std::find(std::begin(kDroppedNames), std::end(kDroppedNames), name) != std::end(kDroppedNames);
}

// Per item: the nearest one above it that is dropped, -1 for none.
std::vector<ItemIndex> FindDroppedAbove(const headless::SceneData& scene, const std::vector<bool>& dropped) {
  constexpr ItemIndex kNone = -1, kUnknown = -2;
  std::vector<ItemIndex> above(scene.items.size(), kUnknown);
  std::vector<ItemIndex> path;
  for (std::size_t start = 0; start < above.size(); ++start) {
    ItemIndex item = static_cast<ItemIndex>(start);
    for (; item >= 0 && above[At(item)] == kUnknown; item = scene.items[At(item)].parent) {
      above[At(item)] = kNone;  // ends a circle
      path.push_back(item);
    }
    for (; !path.empty(); path.pop_back()) {
      if (item >= 0) above[At(path.back())] = dropped[At(item)] ? item : above[At(item)];
      item = path.back();
    }
  }
  return above;
}

bool HasShape(const headless::ItemData& item) { return item.mesh && item.mesh->PointCount() > 0; }

// As the channel stands without keys or links: non-zero hides the mesh.
bool IsHidden(const headless::ItemData& item) {
  const std::int32_t place = headless::FindChannel(item, "visible");
  if (place < 0) return false;
  const headless::ChannelData& channel = item.channels[static_cast<std::size_t>(place)];
  const headless::ChannelValue& value = channel.extras->edit ? *channel.extras->edit : channel.setup;
  const auto* number = std::get_if<std::int32_t>(&value);
  return number && *number != 0;
}

void AddBelowDropped(const headless::SceneData& scene, const std::vector<bool>& dropped,
                     std::vector<NotCarried>& found) {
  if (std::find(dropped.begin(), dropped.end(), true) == dropped.end()) return;
  const std::vector<ItemIndex> above = FindDroppedAbove(scene, dropped);
  for (std::size_t place = 0; place < above.size(); ++place) {
    const headless::ItemData& item = scene.items[place];
    if (above[place] < 0 || !HasShape(item)) continue;
    const std::string& name = scene.items[At(above[place])].name;
    found.push_back({item.name, "mesh", fmt::format("stands below \"{}\", which is left out", name), ""});
  }
}

bool Moves(const headless::EnvelopeData& curve) { return curve.keys.size() > 1; }

bool Moves(const headless::ChannelExtras& extras) {
  return (extras.envelope && Moves(*extras.envelope)) || (extras.setupEnvelope && Moves(*extras.setupEnvelope));
}

// Keys that only tell of colours, visibility and the like. What a link carries on may move a node.
class LostKeys {
 public:
  LostKeys(const headless::SceneData& scene, const RuleTable& rules) : scene_(scene), rules_(rules) {
    for (const headless::ChannelLink& link : scene.channelLinks)
      linked_.emplace(link.from.item, link.from.channel);
  }

  void AddTo(std::vector<NotCarried>& found) const {
    for (ItemIndex index = 0; At(index) < scene_.items.size(); ++index) {
      const headless::ItemData& item = scene_.items[At(index)];
      if (item.clip)
        for (const auto& [channel, value] : item.clip->channels)
          if (const auto* curve = std::get_if<headless::EnvelopeData>(&value); curve && Moves(*curve))
            Add(channel, found);
      if (!rules_.Of(index).isStill) continue;
      for (std::int32_t channel = 0; At(channel) < item.channels.size(); ++channel)
        if (Moves(*item.channels[At(channel)].extras)) Add({index, channel}, found);
    }
  }

 private:
  void Add(headless::ChannelRef ref, std::vector<NotCarried>& found) const {
    if (!rules_.Of(ref.item).isStill || linked_.count({ref.item, ref.channel}) > 0) return;
    const headless::ItemData& item = scene_.items[At(ref.item)];
    const string_view channel = item.channels[At(ref.channel)].name;
    found.push_back({item.name, "animation", fmt::format("keys of \"{}\" aren't exported", channel), ""});
  }

  const headless::SceneData& scene_;
  const RuleTable& rules_;
  std::set<std::pair<ItemIndex, std::int32_t>> linked_;
};

}  // namespace

std::optional<NotCarried> NotCarriedByLog(const headless::LogLine& line) {
  using Kind = headless::LogLine::Kind;
  if (line.kind != Kind::Warning && line.kind != Kind::Error) return std::nullopt;
  for (const LogRule& rule : kLogRules)
    if (std::optional<NotCarried> found = Apply(rule, line.text)) return found;
  return std::nullopt;
}

std::vector<NotCarried> NotCarriedByKind(const headless::SceneData& scene) {
  std::vector<NotCarried> found;
  const RuleTable table(scene);
  std::vector<bool> dropped;
  for (ItemIndex index = 0; At(index) < scene.items.size(); ++index) {
    const headless::ItemData& item = scene.items[At(index)];
    const TypeRules& rules = table.Of(index);
    if (HasShape(item) && IsHidden(item))
      found.push_back({item.name, "mesh", "its channel \"visible\" hides it", ""});
    for (const KindRule* rule : rules.kinds) found.push_back({item.name, rule->what, rule->why, ""});
    const bool forName = IsDroppedForName(item, rules);
    if (forName) found.push_back({item.name, "item", "for its name it is left out with all below it", ""});
    dropped.push_back(rules.isDropped || forName);
  }
  AddBelowDropped(scene, dropped, found);
  if (!IsOff(scene, kAnimation)) LostKeys(scene, table).AddTo(found);
  return found;
}

}  // namespace tool
