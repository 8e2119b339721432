#include "tool/not_carried.h"

#include "headless/item_types.h"

#include <fmt/core.h>

#include <map>
#include <string_view>

namespace tool {
namespace {

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

std::vector<const KindRule*> RulesFor(const headless::SceneData& scene, string_view type) {
  std::vector<const KindRule*> rules;
  for (const KindRule& rule : kKindRules)
    if (headless::TypeDerivesFrom(scene, type, rule.type)) rules.push_back(&rule);
  return rules;
}

// As the channel stands without keys or links: non-zero hides the mesh.
bool IsHidden(const headless::ItemData& item) {
  if (!item.mesh || item.mesh->PointCount() == 0) return false;
  const std::int32_t place = headless::FindChannel(item, "visible");
  if (place < 0) return false;
  const headless::ChannelData& channel = item.channels[static_cast<std::size_t>(place)];
  const headless::ChannelValue& value = channel.edit ? *channel.edit : channel.setup;
  const auto* number = std::get_if<std::int32_t>(&value);
  return number && *number != 0;
}

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
  std::map<string_view, std::vector<const KindRule*>> rulesByType;  // scenes have many items and few types
  for (const headless::ItemData& item : scene.items) {
    if (IsHidden(item)) found.push_back({item.name, "mesh", "its channel \"visible\" hides it", ""});
    const auto [entry, isNew] = rulesByType.try_emplace(item.type);
    if (isNew) entry->second = RulesFor(scene, item.type);
    for (const KindRule* rule : entry->second) found.push_back({item.name, rule->what, rule->why, ""});
  }
  return found;
}

}  // namespace tool
