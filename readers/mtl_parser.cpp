#include "readers/mtl_parser.h"

#include "readers/text_numbers.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace readers {
namespace {

struct ColorWord {
  std::string_view word;
  std::optional<MtlColor> MtlMaterial::*field;
};

constexpr ColorWord kColorWords[] = {
    {"Kd", &MtlMaterial::diffuse}, {"Ks", &MtlMaterial::specular}, {"Ke", &MtlMaterial::emissive}};

struct NumberWord {
  std::string_view word;
  std::optional<double> MtlMaterial::*field;
};

constexpr NumberWord kNumberWords[] = {{"d", &MtlMaterial::dissolve},
                                       {"Tr", &MtlMaterial::transparency},
                                       {"Ns", &MtlMaterial::shininess},
                                       {"Pr", &MtlMaterial::roughness},
                                       {"Pm", &MtlMaterial::metallic}};

struct MapWord {
  std::string_view word;
  MtlMapKind kind;
};

constexpr MapWord kMapWords[] = {{"map_Kd", MtlMapKind::BaseColor}, {"map_d", MtlMapKind::Dissolve},
                                 {"map_Pm", MtlMapKind::Metallic},  {"map_Pr", MtlMapKind::Roughness},
                                 {"map_Ke", MtlMapKind::Emissive},  {"norm", MtlMapKind::Normal},
                                 {"map_Bump", MtlMapKind::Bump},    {"bump", MtlMapKind::Bump}};

enum class MapOption { Offset, Scale, BumpFactor, Clamp, Ignored };

struct MapOptionWord {
  std::string_view word;
  MapOption option;
  int needed;  // arguments
  int most;
};

constexpr MapOptionWord kMapOptions[] = {
    {"-o", MapOption::Offset, 1, 3},        {"-s", MapOption::Scale, 1, 3},
    {"-bm", MapOption::BumpFactor, 1, 1},   {"-clamp", MapOption::Clamp, 1, 1},
    {"-t", MapOption::Ignored, 1, 3},       {"-mm", MapOption::Ignored, 2, 2},
    {"-boost", MapOption::Ignored, 1, 1},   {"-texres", MapOption::Ignored, 1, 1},
    {"-blendu", MapOption::Ignored, 1, 1},  {"-blendv", MapOption::Ignored, 1, 1},
    {"-imfchan", MapOption::Ignored, 1, 1}, {"-type", MapOption::Ignored, 1, 1},
    {"-cc", MapOption::Ignored, 1, 1},
};

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Exporters don't agree on the case of "map_bump" and the like.
bool IsWord(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

template <class Entry, std::size_t count>
const Entry* Find(const Entry (&table)[count], std::string_view word) {
  const Entry* found = std::find_if(table, table + count, [&](const Entry& e) { return IsWord(word, e.word); });
  return found == table + count ? nullptr : found;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && EndsToken(text.front())) text.remove_prefix(1);
  while (!text.empty() && EndsToken(text.back())) text.remove_suffix(1);
  return text;
}

// Takes the first token off a trimmed text.
std::string_view TakeToken(std::string_view& text) {
  const auto* end = std::find_if(text.begin(), text.end(), EndsToken);
  const std::string_view token = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text = Trim(text.substr(token.size()));
  return token;
}

std::optional<double> ReadDouble(std::string_view token) {
  const std::string ended = std::string(token) + '\n';
  double value = 0;
  if (!ReadAnyNumber(ended.data(), ended.data() + ended.size(), value)) return std::nullopt;
  return value;
}

class Parser {
 public:
  MtlFile Run(std::string_view text);

 private:
  void ParseStatement(std::string_view statement);
  void StartMaterial(std::string_view name);
  void ParseColor(std::string_view word, std::string_view rest, std::optional<MtlColor>& color);
  void ParseMap(std::string_view rest, std::optional<MtlMap>& map);
  // False after a bad argument.
  bool ParseOption(const MapOptionWord& option, std::string_view& rest, MtlMap& map);
  void SkipWord(std::string_view word, std::string_view rest);
  void SkipBad(const std::string& reason);

  MtlFile file_;
  MtlMaterial* material_ = nullptr;  // that the statements belong to
  MtlMaterial repeated_;             // takes the statements of a material whose name is taken
  std::set<std::string, std::less<>> names_;
  std::size_t line_ = 0;
};

MtlFile Parser::Run(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  std::size_t lines = 1;
  for (std::string statement; !text.empty();) {
    line_ = lines;
    statement.clear();
    for (bool continued = true; continued && !text.empty();) {
      const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
      std::string_view line = text.substr(0, end);
      text.remove_prefix(text.substr(end).starts_with("\r\n") ? end + 2 : std::min(end + 1, text.size()));
      ++lines;
      continued = line.ends_with('\\') && !Trim(statement.empty() ? line : statement).starts_with('#');
      if (continued) line.remove_suffix(1);
      statement.append(line).push_back(continued ? ' ' : '\n');
    }
    statement = ToUtf8(std::move(statement));
    ParseStatement(Trim(statement));
  }
  return std::move(file_);
}

void Parser::ParseStatement(std::string_view statement) {
  if (statement.empty() || statement.starts_with('#')) return;
  const std::string_view word = TakeToken(statement);
  if (IsWord(word, "newmtl")) return StartMaterial(statement);
  if (!material_) return CountSkipped(file_, fmt::format("{} before newmtl", word));
  if (const ColorWord* color = Find(kColorWords, word)) {
    ParseColor(word, statement, material_->*color->field);
  } else if (const NumberWord* number = Find(kNumberWords, word)) {
    const std::string_view token = TakeToken(statement);
    const std::optional<double> value = ReadDouble(token);
    if (!value) return SkipBad(fmt::format("bad number \"{}\"", token));
    material_->*number->field = value;
  } else if (const MapWord* map = Find(kMapWords, word)) {
    ParseMap(statement, material_->maps[static_cast<std::size_t>(map->kind)]);
  } else {
    SkipWord(word, statement);
  }
}

void Parser::StartMaterial(std::string_view name) {
  if (name.empty()) name = kDefaultMaterial;
  if (names_.insert(std::string(name)).second) {
    material_ = &file_.materials.emplace_back();
  } else {
    CountSkipped(file_, "newmtl of a name that is taken");
    material_ = &repeated_;
  }
  material_->name = name;
}

void Parser::ParseColor(std::string_view word, std::string_view rest, std::optional<MtlColor>& color) {
  if (rest.starts_with("spectral") || rest.starts_with("xyz")) {
    return CountSkipped(file_, fmt::format("{} {}", word, TakeToken(rest)));
  }
  MtlColor values{};
  for (std::size_t i = 0; i < values.size(); ++i) {
    // One number alone is a grey.
    if (i > 0 && (rest.empty() || rest.starts_with('#'))) {
      values[i] = values[i - 1];
      continue;
    }
    const std::string_view token = TakeToken(rest);
    const std::optional<double> value = ReadDouble(token);
    if (!value) return SkipBad(fmt::format("bad number \"{}\"", token));
    values[i] = *value;
  }
  color = values;
}

void Parser::ParseMap(std::string_view rest, std::optional<MtlMap>& map) {
  MtlMap parsed;
  while (rest.starts_with('-')) {
    std::string_view behind = rest;
    const MapOptionWord* option = Find(kMapOptions, TakeToken(behind));
    if (!option) break;  // a file name then
    rest = behind;
    if (!ParseOption(*option, rest, parsed)) return;
  }
  if (rest.empty()) return SkipBad("map without a file");
  // The name is the rest of the line: it may hold blanks.
  parsed.file = rest;
  std::replace(parsed.file.begin(), parsed.file.end(), '\\', '/');
  map = std::move(parsed);
}

bool Parser::ParseOption(const MapOptionWord& option, std::string_view& rest, MtlMap& map) {
  if (option.option == MapOption::Clamp) {
    map.clamped = IsWord(TakeToken(rest), "on");
    return true;
  }
  if (option.option == MapOption::Ignored) CountSkipped(file_, option.word);
  double numbers[3] = {};
  int count = 0;
  for (; count < option.most; ++count) {
    // The last token is the file, even if it looks like a number.
    std::string_view behind = rest;
    const std::string_view token = TakeToken(behind);
    const std::optional<double> number = ReadDouble(token);
    const bool isText = option.option == MapOption::Ignored && option.most == 1;
    if (count >= option.needed && (!number || behind.empty())) break;
    if (!number && !isText) {
      SkipBad(fmt::format("bad number \"{}\"", token));
      return false;
    }
    numbers[count] = number.value_or(0);
    rest = behind;
  }
  if (option.option == MapOption::BumpFactor) map.bumpFactor = numbers[0];
  std::array<double, 2>* pair = option.option == MapOption::Offset  ? &map.offset
                                : option.option == MapOption::Scale ? &map.scale
                                                                    : nullptr;
  for (int i = 0; pair && i < std::min(count, 2); ++i) (*pair)[static_cast<std::size_t>(i)] = numbers[i];
  return true;
}

void Parser::SkipWord(std::string_view word, std::string_view rest) {
  // Ambient light and the plain lighting models stand in every file and mean nothing here.
  if (IsWord(word, "Ka")) return;
  if (!IsWord(word, "illum")) return CountSkipped(file_, word);
  const std::string_view model = TakeToken(rest);
  if (model != "0" && model != "1" && model != "2") CountSkipped(file_, fmt::format("{} {}", word, model));
}

void Parser::SkipBad(const std::string& reason) {
  if (file_.badStatements++ > 0) return;
  file_.firstBadLine = line_;
  file_.firstBadReason = reason;
}

}  // namespace

MtlFile ParseMtl(std::string_view text) { return Parser().Run(text); }

void CountSkipped(MtlFile& file, std::string_view what) {
  // A file that isn't a material library at all mustn't fill the warning.
  constexpr std::size_t kMostWords = 20;
  const auto isWhat = [&](const auto& entry) { return entry.first == what; };
  auto found = std::find_if(file.skipped.begin(), file.skipped.end(), isWhat);
  if (found == file.skipped.end()) {
    if (file.skipped.size() >= kMostWords) {
      what = "others";
      found = std::find_if(file.skipped.begin(), file.skipped.end(), isWhat);
    }
    if (found == file.skipped.end()) found = file.skipped.insert(found, {std::string(what), 0});
  }
  ++found->second;
}

}  // namespace readers
