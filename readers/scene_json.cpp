#include "readers/scene_json.h"

#include "readers/read_scene.h"
#include "readers/scene_lists.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace readers {
namespace {

constexpr int kMaxDepth = 2000;

// Stands between the parser and the tree: converts the numbers, whose texts the parser hands over, refuses what
// would harm later, and takes long lists away from the parser.
class TreeFilter {
 public:
  TreeFilter(std::string_view text, LongLists longLists, rapidjson::MemoryStream& stream,
             rapidjson::Document& tree, std::string& reason)
      : longLists_(longLists), stream_(stream), tree_(tree), lists_(text), reason_(reason) {}

  bool Null() { return tree_.Null(); }
  bool Bool(bool value) { return tree_.Bool(value); }
  // Not called: numbers are raw.
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(std::int64_t) { return false; }
  bool Uint64(std::uint64_t) { return false; }
  bool Double(double) { return false; }

  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    const std::optional<Json> number = ToNumber({text, size});
    return number ? number->Accept(tree_) : Refuse("the number is too big");
  }
  bool String(const char* text, rapidjson::SizeType size, bool copy) {
    return IsSound({text, size}, "a text") && tree_.String(text, size, copy);
  }
  bool Key(const char* text, rapidjson::SizeType size, bool copy) {
    return IsSound({text, size}, "a key") && tree_.Key(text, size, copy);
  }
  bool StartObject() { return Enter() && tree_.StartObject(); }
  bool EndObject(rapidjson::SizeType count) { return --depth_ >= 0 && tree_.EndObject(count); }

  // The parser stands at the bracket. Of a long list it meets no more than the last one.
  bool StartArray() {
    if (!Enter()) return false;
    const LongList* list = nullptr;
    if (longLists_ == LongLists::InText)
      list = lists_.Find(stream_.src_, static_cast<std::size_t>(kMaxDepth - depth_));
    isLong_ = list != nullptr;
    if (!isLong_) return tree_.StartArray();
    PutLongList(*list, tree_);
    stream_.src_ = list->end - 2;
    return true;
  }
  bool EndArray(rapidjson::SizeType count) {
    return --depth_ >= 0 && (std::exchange(isLong_, false) || tree_.EndArray(count));
  }

 private:
  // An escape can give what no text of a scene may hold.
  bool IsSound(std::string_view text, const char* what) {
    if (text.find('\0') != std::string_view::npos) return Refuse(std::string(what) + " holds a zero character");
    return !HasSurrogate(text) || Refuse(std::string(what) + " holds half a surrogate pair");
  }
  // The parser itself finds a first half without a second one only.
  static bool HasSurrogate(std::string_view text) {
    for (std::size_t at = text.find('\xED'); at != std::string_view::npos; at = text.find('\xED', at + 1))
      if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0) return true;
    return false;
  }
  bool Refuse(std::string reason) {
    reason_ = std::move(reason);
    return false;
  }
  bool Enter() {
    return ++depth_ <= kMaxDepth ||
           Refuse("nested deeper than 2000 levels; give deep items a \"parent\" instead of \"children\"");
  }

  LongLists longLists_;
  rapidjson::MemoryStream& stream_;
  rapidjson::Document& tree_;
  LongListFinder lists_;
  std::string& reason_;
  int depth_ = 0;
  bool isLong_ = false;  // the list that was begun last
};

struct TreeGenerator {
  std::string_view text;
  LongLists longLists;
  std::string reason;
  std::size_t offset = 0;

  // Called by the document with itself.
  bool operator()(rapidjson::Document& document) {
    // Iterative, so that nesting costs no stack. The numbers come as texts: the parser's own conversion is
    // not exact for every number.
    constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag |
                                rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(text.data(), text.size());
    TreeFilter filter(text, longLists, stream, document, reason);
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

}  // namespace

void Fail(const Json& value, std::string reason) { throw JsonFault{&value, std::move(reason), {}}; }

void ParseJson(std::string_view text, const std::string& file, LongLists longLists,
               rapidjson::Document& document) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  TreeGenerator generator{text, longLists, {}, 0};
  document.Populate(generator);
  if (!generator.reason.empty()) {
    throw InputError(file + ":" + LineAndColumn(text, generator.offset) + ": " + generator.reason);
  }
}

bool FindJson(const Json& from, const Json& target, std::string& place) {
  if (&from == &target) return true;
  if (from.IsObject()) {
    for (const auto& member : from.GetObject()) {
      // A fault of a key is told at its value.
      if (&member.name != &target && !FindJson(member.value, target, place)) continue;
      std::string step = "/";
      for (const char c : TextView(member.name)) step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
      place.insert(0, step);
      return true;
    }
  } else if (from.IsArray()) {
    for (rapidjson::SizeType i = 0; i < from.Size(); ++i) {
      if (!FindJson(from[i], target, place)) continue;
      place.insert(0, "/" + std::to_string(i));
      return true;
    }
  }
  return false;
}

std::string JsonPlace(const Json& root, const JsonFault& fault) {
  std::string place;
  FindJson(root, *fault.value, place);
  return place + fault.below;
}

const Json* Find(const Json& object, std::string_view key) {
  if (!object.IsObject()) Fail(object, "expected an object");
  for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member)
    if (key == std::string_view(member->name.GetString(), member->name.GetStringLength())) return &member->value;
  return nullptr;
}

const Json& Require(const Json& object, std::string_view key) {
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
  if (ListSize(ReadList(value)) != size) {
    Fail(value, "expected " + std::to_string(size) + " entries, found " + std::to_string(ListSize(value)));
  }
  return value;
}

}  // namespace readers
