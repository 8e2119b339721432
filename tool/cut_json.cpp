#include "tool/cut_json.h"

#include <cstddef>

namespace tool {
namespace {

struct Open {
  char closer;  // ']' or '}'
  std::size_t index = 0;
  std::string_view key;
};

// The place behind the text that begins at `begin`, its quote.
std::size_t EndOfText(std::string_view json, std::size_t begin) {
  std::size_t place = begin + 1;
  while (place < json.size() && json[place] != '"') place += json[place] == '\\' ? 2 : 1;
  return place + 1;
}

void Take(std::string_view json, std::size_t& place, std::vector<Open>& open) {
  const char c = json[place];
  const std::size_t begin = place++;
  if (c == '{' || c == '[') {
    open.push_back({c == '{' ? '}' : ']', 0, {}});
  } else if (c == '}' || c == ']') {
    if (!open.empty()) open.pop_back();
  } else if (c == ',') {
    if (!open.empty()) ++open.back().index;
  } else if (c == '"') {
    place = EndOfText(json, begin);
    const bool isKey = !open.empty() && open.back().closer == '}' && place < json.size() && json[place] == ':';
    if (isKey) open.back().key = json.substr(begin + 1, place - begin - 2);
  }
}

}  // namespace

std::optional<CutJson> CompleteCutJson(std::string_view text) {
  const std::string_view json = text.substr(0, text.find_last_not_of(' ') + 1);
  if (json.empty() || std::string_view(":[,").find(json.back()) == std::string_view::npos) return std::nullopt;
  std::vector<Open> open;
  for (std::size_t place = 0; place < json.size();) Take(json, place, open);
  if (open.empty() || (json.back() == ',' && open.back().closer == '}')) return std::nullopt;
  CutJson cut{std::string(json) + "null", {}};
  for (const Open& level : open)
    cut.path.push_back(level.closer == '}' ? std::string(level.key) : std::to_string(level.index));
  for (auto level = open.rbegin(); level != open.rend(); ++level) cut.text += level->closer;
  return cut;
}

}  // namespace tool
