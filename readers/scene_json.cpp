#include "readers/scene_json.h"

#include "readers/read_scene.h"

#include <fast_float/fast_float.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace readers {
namespace {

constexpr int kMaxDepth = 2000;

// Stands between the parser and the tree: converts the numbers, whose texts the parser hands over, and
// refuses what would harm later.
template <class Target>
class TreeFilter {
 public:
  TreeFilter(Target& target, std::string& reason) : target_(target), reason_(reason) {}

  bool Null() { return target_.Null(); }
  bool Bool(bool value) { return target_.Bool(value); }
  bool Int(int value) { return target_.Int(value); }
  bool Uint(unsigned value) { return target_.Uint(value); }
  bool Int64(std::int64_t value) { return target_.Int64(value); }
  bool Uint64(std::uint64_t value) { return target_.Uint64(value); }
  bool Double(double value) { return target_.Double(value); }

  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    const std::string_view digits(text, size);
    const bool whole = digits.find_first_of(".eE") == std::string_view::npos;
    if (whole && digits != "-0") {
      std::int64_t integer = 0;
      if (std::from_chars(text, text + size, integer).ec == std::errc()) return target_.Int64(integer);
      std::uint64_t natural = 0;
      if (std::from_chars(text, text + size, natural).ec == std::errc()) return target_.Uint64(natural);
    }
    double value = 0;
    fast_float::from_chars(text, text + size, value);
    return std::isfinite(value) ? target_.Double(value) : Refuse("the number is too big");
  }
  bool String(const char* text, rapidjson::SizeType size, bool copy) {
    return HasZero(text, size) ? Refuse("a text holds a zero character") : target_.String(text, size, copy);
  }
  bool Key(const char* text, rapidjson::SizeType size, bool copy) {
    return HasZero(text, size) ? Refuse("a key holds a zero character") : target_.Key(text, size, copy);
  }
  bool StartObject() { return Enter() && target_.StartObject(); }
  bool EndObject(rapidjson::SizeType count) { return --depth_ >= 0 && target_.EndObject(count); }
  bool StartArray() { return Enter() && target_.StartArray(); }
  bool EndArray(rapidjson::SizeType count) { return --depth_ >= 0 && target_.EndArray(count); }

 private:
  static bool HasZero(const char* text, rapidjson::SizeType size) {
    return std::string_view(text, size).find('\0') != std::string_view::npos;
  }
  bool Refuse(const char* reason) {
    reason_ = reason;
    return false;
  }
  bool Enter() {
    return ++depth_ <= kMaxDepth ||
           Refuse("nested deeper than 2000 levels; give deep items a \"parent\" instead of \"children\"");
  }

  Target& target_;
  std::string& reason_;
  int depth_ = 0;
};

struct TreeGenerator {
  std::string_view text;
  std::string reason;
  std::size_t offset = 0;

  // Called by the document with itself.
  bool operator()(rapidjson::Document& document) {
    // Iterative, so that nesting costs no stack. The numbers come as texts: the parser's own conversion is
    // not exact for every number.
    constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag |
                                rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(text.data(), text.size());
    TreeFilter<rapidjson::Document> filter(document, reason);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, filter);
    if (result.IsError()) {
      offset = result.Offset();
      if (reason.empty()) reason = rapidjson::GetParseError_En(result.Code());
      return false;
    }
    offset = stream.Tell();
    if (offset < text.size()) reason = "unexpected zero byte";
    return reason.empty();
  }
};

std::string LineAndColumn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const std::size_t line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
  const std::size_t start = before.find_last_of('\n');
  const std::size_t column = before.size() - (start == std::string_view::npos ? 0 : start + 1) + 1;
  return std::to_string(line) + ":" + std::to_string(column);
}

// Adds the steps from `from` to `target` to the front of `place`.
bool FindPlace(const Json& from, const Json& target, std::string& place) {
  if (&from == &target) return true;
  if (from.IsObject()) {
    for (const auto& member : from.GetObject()) {
      // A fault of a key is told at its value.
      if (&member.name != &target && !FindPlace(member.value, target, place)) continue;
      std::string step = "/";
      for (const char c : TextView(member.name)) step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
      place.insert(0, step);
      return true;
    }
  } else if (from.IsArray()) {
    for (rapidjson::SizeType i = 0; i < from.Size(); ++i) {
      if (!FindPlace(from[i], target, place)) continue;
      place.insert(0, "/" + std::to_string(i));
      return true;
    }
  }
  return false;
}

}  // namespace

void Fail(const Json& value, std::string reason) { throw JsonFault{&value, std::move(reason)}; }

void ParseJson(std::string_view text, const std::string& file, rapidjson::Document& document) {
  TreeGenerator generator{text, {}, 0};
  document.Populate(generator);
  if (!generator.reason.empty()) {
    throw InputError(file + ":" + LineAndColumn(text, generator.offset) + ": " + generator.reason);
  }
}

std::string JsonPlace(const Json& root, const Json& value) {
  std::string place;
  FindPlace(root, value, place);
  return place;
}

const Json* Find(const Json& object, const char* key) {
  if (!object.IsObject()) Fail(object, "expected an object");
  const auto member = object.FindMember(key);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

const Json& Require(const Json& object, const char* key) {
  const Json* value = Find(object, key);
  if (!value) Fail(object, "key \"" + std::string(key) + "\" is missing");
  return *value;
}

std::string_view TextView(const Json& value) {
  if (!value.IsString()) Fail(value, "expected a text");
  return {value.GetString(), value.GetStringLength()};
}

std::string ReadText(const Json& value) { return std::string(TextView(value)); }

double ReadNumber(const Json& value) {
  if (!value.IsNumber()) Fail(value, "expected a number");
  return value.GetDouble();
}

std::int32_t ReadInteger(const Json& value) {
  if (!value.IsInt()) Fail(value, "expected a whole number of 32 bits");
  return value.GetInt();
}

bool ReadBool(const Json& value) {
  if (!value.IsBool()) Fail(value, "expected true or false");
  return value.GetBool();
}

std::uint32_t ReadFourCC(const Json& value) {
  const std::string_view text = TextView(value);
  std::uint32_t number = 0;
  if (text.size() == 10 && text.substr(0, 2) == "0x" &&
      std::from_chars(text.data() + 2, text.data() + 10, number, 16).ptr == text.data() + 10)
    return number;
  if (text.empty() || text.size() > 4) Fail(value, "expected a code of one to four characters");
  std::uint32_t code = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    code = code << 8 | static_cast<unsigned char>(i < text.size() ? text[i] : ' ');
  }
  return code;
}

const Json& ReadList(const Json& value) {
  if (!value.IsArray()) Fail(value, "expected a list");
  return value;
}

const Json& ReadList(const Json& value, rapidjson::SizeType size) {
  if (ReadList(value).Size() != size) {
    Fail(value, "expected " + std::to_string(size) + " entries, found " + std::to_string(value.Size()));
  }
  return value;
}

}  // namespace readers
