// JSON text that a writer left where a number was to stand that JSON can't say: a NaN or an infinite one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct CutJson {
  std::string text;               // completed: a null in the number's place, and all that is open closed
  std::vector<std::string> path;  // keys and indices from the root to that null
};

// None when the text doesn't end where a value was to stand. Blanks at its end don't count.
std::optional<CutJson> CompleteCutJson(std::string_view text);

}  // namespace tool
