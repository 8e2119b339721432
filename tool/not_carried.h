// What of a scene an export doesn't carry over, and why.
#pragma once

#include "headless/host.h"

#include <compare>
#include <optional>
#include <string>
#include <vector>

namespace tool {

struct NotCarried {
  std::string item;  // its name; empty when it isn't one item's matter
  std::string what;  // "mesh", "image", "light", ...
  std::string why;
  std::string help;  // the flag that helps, empty for none

  auto operator<=>(const NotCarried&) const = default;
};

// What a warning or an error of the host's log says was left out.
std::optional<NotCarried> NotCarriedByLog(const headless::LogLine& line);

// What the export of a whole scene passes over without a word: kinds of items that the savers don't know, names that
// leave items out, meshes below these, hidden meshes.
std::vector<NotCarried> NotCarriedByKind(const headless::SceneData& scene);

}  // namespace tool
