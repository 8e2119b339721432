#include "tool/batch_options.h"

#include <CLI/CLI.hpp>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace tool {
namespace {

using Json = rapidjson::Value;

constexpr char kPairs[] = "NAME=VALUE";  // the type of options that take such

std::string TextOf(const Json& string) { return {string.GetString(), string.GetStringLength()}; }

// Of a string or a number. Throws LineFault.
std::string ValueText(const std::string& key, const Json& value) {
  if (value.IsString()) {
    std::string text = TextOf(value);
    if (text.empty()) throw LineFault(key + ": is empty");
    if (text.find('\0') != std::string::npos) throw LineFault(key + ": holds a zero byte");
    return text;
  }
  if (!value.IsNumber()) throw LineFault(key + ": takes a string or a number");
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  value.Accept(writer);
  return {text.GetString(), text.GetSize()};
}

class ArgumentList {
 public:
  ArgumentList(const CLI::App& command, std::vector<std::string>& arguments)
      : command_(command), arguments_(arguments) {}

  // Throws LineFault.
  void Add(const std::string& key, const Json& value) {
    const CLI::Option& option = OptionOf(key);
    if (option.get_expected_max() == 0) return AddFlag(key, value);
    if (value.IsObject() && option.get_type_name() == kPairs) {
      for (const auto& member : value.GetObject())
        Append(key, TextOf(member.name) + "=" + ValueText(key, member.value));
    } else if (value.IsArray() && option.get_expected_max() > 1) {
      for (const Json& element : value.GetArray()) Append(key, ValueText(key, element));
    } else {
      Append(key, ValueText(key, value));
    }
  }

 private:
  const CLI::Option& OptionOf(const std::string& key) const {
    for (const CLI::Option* option : command_.get_options()) {
      const std::vector<std::string>& names = option->get_lnames();
      if (option == command_.get_help_ptr() || option->get_required()) continue;
      if (std::find(names.begin(), names.end(), key) != names.end()) return *option;
    }
    throw LineFault(key + ": no option is called so");
  }
  void AddFlag(const std::string& key, const Json& value) {
    if (!value.IsBool()) throw LineFault(key + ": takes true or false");
    if (value.GetBool()) arguments_.push_back("--" + key);
  }
  void Append(const std::string& key, const std::string& value) { arguments_.push_back("--" + key + "=" + value); }

  const CLI::App& command_;
  std::vector<std::string>& arguments_;
};

}  // namespace

struct OptionParser::Command {
  Command() { AddExportArguments(app, arguments); }

  ExportArguments arguments;
  CLI::App app;
};

OptionParser::OptionParser() : command_(std::make_unique<Command>()) {}

OptionParser::~OptionParser() = default;

ExportArguments OptionParser::Parse(const std::string& input, const std::string& output, const Json& options) {
  if (!options.IsObject()) throw LineFault("options: is not an object");
  std::vector<std::string> texts = {"--output=" + output};
  ArgumentList list(command_->app, texts);
  std::set<std::string> seen;
  for (const auto& member : options.GetObject()) {
    const std::string key = TextOf(member.name);
    if (!seen.insert(key).second) throw LineFault(key + ": is there twice");
    list.Add(key, member.value);
  }
  texts.insert(texts.end(), {"--", input});
  std::reverse(texts.begin(), texts.end());  // the parser takes them from the end
  command_->arguments = {};
  try {
    command_->app.parse(std::move(texts));
  } catch (const CLI::ParseError& error) {
    const std::string fault = error.what();
    throw LineFault(fault.starts_with("--") ? fault.substr(2) : fault);
  }
  return command_->arguments;
}

}  // namespace tool
