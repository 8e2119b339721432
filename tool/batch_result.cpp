#include "tool/batch_result.h"

#include "readers/text_utf8.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <iterator>

namespace tool {
namespace {

constexpr int kDecimals = 6;  // of seconds

// By BatchStatus.
constexpr const char* kStatusNames[] = {"done", "skipped", "failed"};

void Add(rapidjson::Writer<rapidjson::StringBuffer>& writer, const char* key, const std::string& value) {
  const std::string text = readers::ToUtf8(value);  // an error may name a path of other bytes
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

std::string TextIn(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  if (member == object.MemberEnd() || !member->value.IsString()) return {};
  return {member->value.GetString(), member->value.GetStringLength()};
}

}  // namespace

std::string ResultJson(const BatchResult& result) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  writer.SetMaxDecimalPlaces(kDecimals);
  writer.StartObject();
  writer.Key("line");
  writer.Uint64(result.line);
  Add(writer, "input", result.input);
  Add(writer, "output", result.output);
  Add(writer, "status", kStatusNames[static_cast<std::size_t>(result.status)]);
  writer.Key("exitCode");
  writer.Int(result.exitCode);
  if (!result.error.empty()) Add(writer, "error", result.error);
  writer.Key("seconds");
  writer.Double(result.seconds);
  writer.EndObject();
  return {text.GetString(), text.GetSize()};
}

std::optional<BatchResult> ParseResult(const std::string& json) {
  rapidjson::Document object;
  object.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
  if (object.HasParseError() || !object.IsObject()) return std::nullopt;
  const auto* const status = std::find(std::begin(kStatusNames), std::end(kStatusNames), TextIn(object, "status"));
  if (status == std::end(kStatusNames) || !object.HasMember("exitCode") || !object["exitCode"].IsInt())
    return std::nullopt;
  BatchResult result;
  result.input = TextIn(object, "input");
  result.output = TextIn(object, "output");
  result.status = static_cast<BatchStatus>(status - std::begin(kStatusNames));
  result.exitCode = object["exitCode"].GetInt();
  result.error = TextIn(object, "error");
  return result;
}

}  // namespace tool
