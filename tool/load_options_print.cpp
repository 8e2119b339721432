#include "tool/load_options_print.h"

#include <fmt/core.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

namespace tool {
namespace {

using Type = LoadOptionView::Type;
using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

std::string ValueText(const LoadOptionView& option) {
  if (option.type == Type::Boolean) return option.integer != 0 ? "on" : "off";
  if (option.type == Type::Float) return fmt::format("{}", option.number);
  const std::string* choice = option.Choice();
  if (choice) return fmt::format("{} \"{}\"", option.integer, *choice);
  return fmt::format("{}{}", option.integer, option.choices.empty() ? "" : " (none of its choices)");
}

void WriteText(Writer& writer, const std::string& text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void WriteValue(Writer& writer, const LoadOptionView& option) {
  if (option.type == Type::Boolean)
    writer.Bool(option.integer != 0);
  else if (option.type == Type::Float)
    writer.Double(option.number);
  else
    writer.Int(option.integer);
}

void WriteOption(Writer& writer, const LoadOptionView& option) {
  constexpr const char* kTypes[] = {"boolean", "integer", "float"};
  writer.StartObject();
  writer.Key("type");
  writer.String(kTypes[static_cast<int>(option.type)]);
  writer.Key("value");
  WriteValue(writer, option);
  writer.Key("enabled");
  writer.Bool(option.isEnabled);
  if (const std::string* choice = option.Choice()) {
    writer.Key("choice");
    WriteText(writer, *choice);
  }
  if (!option.choices.empty()) {
    writer.Key("choices");
    writer.StartArray();
    for (const auto& [value, text] : option.choices) {
      writer.StartObject();
      writer.Key("value");
      writer.Int(value);
      writer.Key("text");
      WriteText(writer, text);
      writer.EndObject();
    }
    writer.EndArray();
  }
  writer.EndObject();
}

}  // namespace

std::string LoadOptionsText(const std::vector<LoadOptionView>& options) {
  std::string text;
  for (const LoadOptionView& option : options) {
    text += fmt::format("{:<24} {}{}\n", option.name, ValueText(option), option.isEnabled ? "" : "  [disabled]");
    for (const auto& [value, choice] : option.choices)
      text += fmt::format("{:<24}   {} \"{}\"\n", "", value, choice);
  }
  return text;
}

std::string LoadOptionsJson(const std::vector<LoadOptionView>& options) {
  rapidjson::StringBuffer text;
  Writer writer(text);
  writer.SetIndent(' ', 2);
  writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
  writer.StartObject();
  for (const LoadOptionView& option : options) {
    writer.Key(option.name.c_str());
    WriteOption(writer, option);
  }
  writer.EndObject();
  text.Put('\n');
  return {text.GetString(), text.GetSize()};
}

}  // namespace tool
