#include "readers/scene_schema.h"

#include "readers/scene_lists.h"

#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <span>
#include <vector>

namespace readers {
namespace {

using Validator = rapidjson::GenericSchemaValidator<rapidjson::SchemaDocument>;

constexpr rapidjson::SizeType kCheckedEntries = 64;
static_assert(kCheckedEntries <= kLongestShortList);

struct Schema {
  rapidjson::Document tree;
  rapidjson::SchemaDocument rules;

  Schema() : tree(Parse()), rules(tree) {}

  static rapidjson::Document Parse() {
    rapidjson::Document document;
    document.Parse(SceneSchema().data(), SceneSchema().size());
    return document;
  }
};

const Schema& SharedSchema() {
  static const Schema schema;
  return schema;
}

void CheckUniqueKeys(const Json& object) {
  std::vector<std::string_view> keys;
  keys.reserve(object.MemberCount());
  for (const auto& member : object.GetObject()) keys.push_back(TextView(member.name));
  std::sort(keys.begin(), keys.end());
  const auto twin = std::adjacent_find(keys.begin(), keys.end());
  if (twin != keys.end()) Fail(object, "key \"" + std::string(*twin) + "\" stands twice");
}

bool Feed(const Json& value, Validator& validator);

// Of a long list the first entries are enough: the reads check the rest, and no limit of the schema is above them.
// The validator must not be told of more: it keeps something for each entry.
bool FeedList(const Json& list, Validator& validator) {
  if (!validator.StartArray()) return false;
  rapidjson::SizeType count = 0;
  if (FindLongList(list)) {
    for (LongListReader reader(list); count < kCheckedEntries; ++count) {
      if (!Feed(*reader.Next(), validator)) return false;
    }
  } else {
    for (; count < list.Size(); ++count) {
      if (!Feed(list[count], validator)) return false;
    }
  }
  return validator.EndArray(count);
}

bool Feed(const Json& value, Validator& validator) {
  if (value.IsArray()) return FeedList(value, validator);
  if (!value.IsObject()) return value.Accept(validator);
  CheckUniqueKeys(value);
  if (!validator.StartObject()) return false;
  for (const auto& member : value.GetObject()) {
    if (!validator.Key(member.name.GetString(), member.name.GetStringLength(), false)) return false;
    if (!Feed(member.value, validator)) return false;
  }
  return validator.EndObject(value.MemberCount());
}

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Words for a value of a rule that is one text or a list of texts: "a, b or c".
std::string Listed(const Json& value, std::string (*word)(const Json&)) {
  if (!value.IsArray()) return word(value);
  std::string text;
  for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
    if (i > 0) text += i + 1 == value.Size() ? " or " : ", ";
    text += word(value[i]);
  }
  return text;
}

std::string TypeWord(const Json& type) {
  static constexpr std::pair<std::string_view, const char*> kWords[] = {
      {"array", "a list"},    {"boolean", "true or false"}, {"integer", "a whole number"}, {"null", "null"},
      {"number", "a number"}, {"object", "an object"},      {"string", "a text"}};
  for (const auto& [name, word] : kWords) {
    if (name == TextView(type)) return word;
  }
  return ReadText(type);
}

std::string EnumWord(const Json& value) {
  return value.IsString() ? Quoted(TextView(value)) : std::to_string(value.GetInt());
}

std::string ValueWord(const Json& value) {
  switch (value.GetType()) {
    case rapidjson::kNullType:
      return "null";
    case rapidjson::kFalseType:
      return "false";
    case rapidjson::kTrueType:
      return "true";
    case rapidjson::kObjectType:
      return "an object";
    case rapidjson::kArrayType:
      return "a list of " + std::to_string(ListSize(value));
    case rapidjson::kStringType:
      return Quoted(TextView(value).substr(0, 60));
    case rapidjson::kNumberType:
      break;
  }
  return value.IsInt64()    ? std::to_string(value.GetInt64())
         : value.IsUint64() ? std::to_string(value.GetUint64())
                            : "a number with a fraction";
}

// Number of edits between two words.
std::size_t Distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t replaced = diagonal + (left[i] == right[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

std::string UnknownKey(const Json& rule, std::string_view key) {
  std::string known;
  std::string_view nearest;
  std::size_t best = std::min<std::size_t>(key.size(), 64) / 2 + 1;
  if (const Json* properties = Find(rule, "properties")) {
    for (const auto& property : properties->GetObject()) {
      const std::string_view name = TextView(property.name);
      known += (known.empty() ? "" : ", ") + std::string(name);
      const std::size_t distance = Distance(key.substr(0, 64), name);
      if (distance < best) {
        best = distance;
        nearest = name;
      }
    }
  }
  return "unknown key " + Quoted(key) +
         (nearest.empty() ? "; known are " + known : "; is " + Quoted(nearest) + " meant?");
}

std::string MissingKey(const Json& rule, const Json& value) {
  for (const Json& key : Require(rule, "required").GetArray()) {
    if (!value.HasMember(key)) return "key " + Quoted(TextView(key)) + " is missing";
  }
  return "a key is missing";
}

// What a value does against a keyword of the schema's rule for it.
std::string Reason(const Json& rule, const std::string& keyword, const Json& value) {
  const Json* limit = Find(rule, keyword.c_str());
  if (keyword == "required") return MissingKey(rule, value);
  if (!limit) return "doesn't fit the scene format";
  if (keyword == "type") return "expected " + Listed(*limit, TypeWord) + ", found " + ValueWord(value);
  if (keyword == "enum") return "expected " + Listed(*limit, EnumWord) + ", found " + ValueWord(value);
  if (keyword == "minimum") return "is below " + std::to_string(limit->GetInt64());
  if (keyword == "maximum") return "is above " + std::to_string(limit->GetInt64());
  if (keyword == "minLength") return "is an empty text";
  if (keyword == "maxLength") return "is longer than " + std::to_string(limit->GetInt()) + " characters";
  if (keyword == "minItems" || keyword == "maxItems") {
    const bool exact = rule.HasMember("minItems") && rule.HasMember("maxItems") &&
                       rule["minItems"].GetInt() == rule["maxItems"].GetInt();
    return std::string("expected ") +
           (exact                   ? ""
            : keyword == "minItems" ? "at least "
                                    : "at most ") +
           std::to_string(limit->GetInt()) + " entries, found " + std::to_string(ListSize(value));
  }
  return "doesn't fit the scene format";
}

// The rule behind a pointer into the schema; a reference stands for what it names.
const Json& RuleAt(const Json& tree, const rapidjson::Pointer& pointer) {
  const Json* rule = pointer.Get(tree);
  while (rule && rule->IsObject() && rule->HasMember("$ref")) {
    const Json& reference = (*rule)["$ref"];
    rule = rapidjson::Pointer(reference.GetString(), reference.GetStringLength()).Get(tree);
  }
  return rule ? *rule : tree;
}

using Steps = std::span<const rapidjson::Pointer::Token>;

Steps StepsOf(const rapidjson::Pointer& pointer) { return {pointer.GetTokens(), pointer.GetTokenCount()}; }

[[noreturn]] void ExplainValue(const Json& value, const Validator& validator) {
  const Json& rule = RuleAt(SharedSchema().tree, validator.GetInvalidSchemaPointer());
  const char* word = validator.GetInvalidSchemaKeyword();
  const std::string keyword = word ? word : "";
  if (keyword != "additionalProperties") Fail(value, Reason(rule, keyword, value));
  // The pointer ends with the unknown key.
  const rapidjson::Pointer place = validator.GetInvalidDocumentPointer();
  const auto& last = StepsOf(place).back();
  Fail(value, UnknownKey(rule, {last.name, last.length}));
}

// Tells what is wrong with the value that the steps lead to.
[[noreturn]] void Explain(const Json& from, Steps steps, const Validator& validator) {
  const Json* value = &from;
  for (; !steps.empty() && !FindLongList(*value); steps = steps.subspan(1)) {
    value = rapidjson::Pointer(steps.data(), 1).Get(*value);
    if (!value) ExplainValue(from, validator);
  }
  if (steps.empty()) ExplainValue(*value, validator);
  // The entry is there only while the list is read.
  LongListReader reader(*value);
  const Json* entry = reader.Next();
  for (rapidjson::SizeType i = 0; i < steps.front().index; ++i) entry = reader.Next();
  try {
    Explain(*entry, steps.subspan(1), validator);
  } catch (const JsonFault& fault) {
    throw reader.Locate(fault);
  }
}

}  // namespace

void CheckSchema(const Json& root) {
  Validator validator(SharedSchema().rules);
  if (Feed(root, validator)) return;
  const rapidjson::Pointer place = validator.GetInvalidDocumentPointer();
  Explain(root, StepsOf(place), validator);
}

}  // namespace readers
