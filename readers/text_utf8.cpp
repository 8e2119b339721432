#include "readers/text_utf8.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>

namespace readers {

std::string ToUtf8(std::string text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(text.begin(), text.end(), isAscii)) return text;
  using Utf8 = rapidjson::UTF8<>;
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::StringBuffer copy;
  bool isUtf8 = true;
  while (isUtf8 && stream.Tell() < text.size()) isUtf8 = Utf8::Validate(stream, copy);
  if (isUtf8) return text;
  copy.Clear();
  for (const char c : text) Utf8::Encode(copy, static_cast<unsigned char>(c));
  return {copy.GetString(), copy.GetSize()};
}

std::string WithoutControls(std::string text) {
  for (char& c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code == 0x7F) c = '?';
  }
  return text;
}

}  // namespace readers
