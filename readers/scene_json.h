// The text of a scene file as a tree of JSON values, and typed reads of them.
//
// A read that doesn't find what it wants throws a JsonFault. The place of the value is worked out only when
// the fault is told, so reads carry no places around.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace readers {

using Json = rapidjson::Value;

struct JsonFault {
  const Json* value = nullptr;  // lies in the tree
  std::string reason;
  std::string below;  // the place from there on, inside a list that the tree holds as text
};

[[noreturn]] void Fail(const Json& value, std::string reason);

enum class LongLists {
  InTree,
  InText,  // long lists of numbers stay in the text, see scene_lists.h: that of a mapped file, there as long as
           // the tree
};

// Numbers are read exactly: whole ones as integers, all others as the nearest f64. A byte order mark is passed
// over. Throws InputError "file:line:column: reason".
void ParseJson(std::string_view text, const std::string& file, LongLists longLists, rapidjson::Document& document);

// Adds the JSON pointer from one value to another one inside it to the front of `place`; false when it isn't
// there.
bool FindJson(const Json& from, const Json& target, std::string& place);
// The JSON pointer of a fault, empty for the root.
std::string JsonPlace(const Json& root, const JsonFault& fault);

// The value of a key, null when the object lacks it.
const Json* Find(const Json& object, std::string_view key);
// As Find, but a missing key is a fault.
const Json& Require(const Json& object, std::string_view key);

std::string_view TextView(const Json& value);  // of a text
std::string ReadText(const Json& value);
double ReadNumber(const Json& value);
std::int32_t ReadInteger(const Json& value);  // in 32 bits
bool ReadBool(const Json& value);
// One to four characters, filled up with blanks, or 0x and eight hexadecimal digits.
std::uint32_t ReadFourCC(const Json& value);
const Json& ReadList(const Json& value);                            // any list
const Json& ReadList(const Json& value, rapidjson::SizeType size);  // of that many entries

// One of a few words.
template <class T>
T ReadWord(const Json& value, std::initializer_list<std::pair<const char*, T>> words) {
  const std::string_view text = TextView(value);
  std::string known;
  for (const auto& [word, meaning] : words) {
    if (text == word) return meaning;
    known += (known.empty() ? "\"" : ", \"") + std::string(word) + "\"";
  }
  Fail(value, "\"" + std::string(text) + "\" is not one of " + known);
}

}  // namespace readers
