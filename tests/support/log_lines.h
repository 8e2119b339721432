// The host's log as text: a JSON object a line, as the command writes it.
#pragma once

#include "headless/host.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <vector>

namespace test_support {

inline std::string LogLinesText(const std::vector<headless::LogLine>& log) {
  static constexpr const char* kKinds[] = {"setup", "info", "warning", "error", "warningDialog", "errorDialog"};
  rapidjson::StringBuffer text;
  for (const headless::LogLine& line : log) {
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    writer.StartObject();
    writer.Key("kind");
    writer.String(kKinds[static_cast<std::size_t>(line.kind)]);
    writer.Key("text");
    writer.String(line.text.c_str(), static_cast<rapidjson::SizeType>(line.text.size()));
    writer.EndObject();
    text.Put('\n');
  }
  return {text.GetString(), text.GetSize()};
}

}  // namespace test_support
