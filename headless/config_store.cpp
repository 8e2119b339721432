#include "headless/config_store.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>

namespace headless {
namespace {

namespace fs = std::filesystem;
using rapidjson::SizeType;
using rapidjson::StringRef;
using rapidjson::Value;

constexpr std::size_t kLargestFile = std::size_t{1} << 22;
constexpr int kMaxDepth = 200;
constexpr unsigned kParseFlags =
    rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;

// Writing a tree goes as deep as the tree.
struct DepthCheck : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DepthCheck> {
  bool StartObject() { return ++depth <= kMaxDepth; }
  bool EndObject(SizeType) { return --depth >= 0; }
  bool StartArray() { return ++depth <= kMaxDepth; }
  bool EndArray(SizeType) { return --depth >= 0; }

  int depth = 0;
};

// The reason why the text isn't a JSON object; empty when it is one.
std::string FindFault(const std::string& text) {
  rapidjson::MemoryStream stream(text.data(), text.size());
  DepthCheck check;
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<kParseFlags>(stream, check);
  if (check.depth > kMaxDepth) return "nested deeper than " + std::to_string(kMaxDepth) + " levels";
  if (result.IsError())
    return rapidjson::GetParseError_En(result.Code()) + std::string(" (at byte ") +
           std::to_string(result.Offset()) + ")";
  if (stream.Tell() < text.size()) return "a zero byte (at byte " + std::to_string(stream.Tell()) + ")";
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return text[first] == '{' ? "" : "not an object";
}

std::string Dotted(ConfigStore::Path path) {
  std::string text;
  for (const std::string& name : path) text += (text.empty() ? "" : ".") + name;
  return text;
}

fs::path FreeNameBeside(const fs::path& file) {
  std::error_code none;
  for (int number = 1;; ++number) {
    fs::path name = file;
    name += number == 1 ? ".damaged" : ".damaged-" + std::to_string(number);
    if (!fs::exists(fs::symlink_status(name, none))) return name;
  }
}

}  // namespace

fs::path UserConfigFile() {
  const auto folder = [](const char* variable) {
    const char* value = std::getenv(variable);
    return fs::path(value ? value : "");
  };
  fs::path config = folder("XDG_CONFIG_HOME");
  // A relative one isn't valid and counts as unset.
  if (!config.is_absolute()) config = folder("HOME") / ".config";
  return config.is_absolute() ? config / "vornel" / "config.json" : fs::path();
}

struct ConfigStore::Tree {
  rapidjson::Document root;

  Tree() { root.SetObject(); }

  Value* Find(Path path) {
    Value* place = &root;
    for (const std::string& name : path) {
      const Value key(StringRef(name.data(), static_cast<SizeType>(name.size())));
      if (!place->IsObject() || !place->HasMember(key)) return nullptr;
      place = &(*place)[key];
    }
    return place;
  }

  // The value at the path, made when there is none.
  Value& Make(Path path) {
    if (Value* found = Find(path)) return *found;
    Value& parent = path.size() == 1 ? root : Make(path.first(path.size() - 1));
    if (!parent.IsObject()) parent.SetObject();
    const std::string& name = path.back();
    auto& allocator = root.GetAllocator();
    parent.AddMember(Value(name.data(), static_cast<SizeType>(name.size()), allocator), Value(), allocator);
    return (parent.MemberEnd() - 1)->value;
  }
};

ConfigStore::ConfigStore() : tree_(std::make_unique<Tree>()) {}

ConfigStore::ConfigStore(const fs::path& file) : ConfigStore() {
  file_ = file;
  std::error_code error;
  if (file_.empty() || fs::status(file_, error).type() == fs::file_type::not_found) return;
  const std::string text = ReadSmallFile(file_, kLargestFile);
  if (const std::string fault = FindFault(text); !fault.empty())
    KeepAside(fault);
  else
    tree_->root.Parse<kParseFlags>(text.data(), text.size());
}

ConfigStore::~ConfigStore() = default;

void ConfigStore::KeepAside(const std::string& reason) {
  const fs::path aside = FreeNameBeside(file_);
  std::error_code error;
  fs::rename(file_, aside, error);
  isDamagedFileInPlace_ = static_cast<bool>(error);
  warnings_.push_back(file_.string() + ": damaged: " + reason + "; " +
                      (error ? "it can't be kept aside (" + error.message() + "), so it stays"
                             : "it is kept as " + aside.string()) +
                      ", and the settings begin anew");
}

void ConfigStore::WarnOfType(Path path, const char* type) {
  std::string text = file_.string() + ": " + Dotted(path) + " is not " + type + "; it is skipped";
  if (std::find(warnings_.begin(), warnings_.end(), text) == warnings_.end()) warnings_.push_back(std::move(text));
}

bool ConfigStore::HasObject(Path path) {
  // The first value on the way that isn't an object is the one to tell of.
  for (std::size_t length = 1; length <= path.size(); ++length) {
    const Value* value = tree_->Find(path.first(length));
    if (!value) return false;
    if (value->IsObject()) continue;
    WarnOfType(path.first(length), "an object");
    return false;
  }
  return true;
}

std::optional<std::int32_t> ConfigStore::Integer(Path path, Integers kind) {
  const Value* value = tree_->Find(path);
  if (!value) return std::nullopt;
  if (value->IsInt()) return value->GetInt();
  if (kind == Integers::Booleans && value->IsBool()) return value->GetBool() ? 1 : 0;
  WarnOfType(path, kind == Integers::Booleans ? "a boolean" : "an integer of 32 bits");
  return std::nullopt;
}

std::optional<double> ConfigStore::Number(Path path) {
  const Value* value = tree_->Find(path);
  if (!value) return std::nullopt;
  if (value->IsNumber()) return value->GetDouble();
  WarnOfType(path, "a number");
  return std::nullopt;
}

void ConfigStore::MakeObject(Path path) {
  Value& value = tree_->Make(path);
  if (!value.IsObject()) value.SetObject();
}

void ConfigStore::SetInteger(Path path, std::int32_t value) { tree_->Make(path).SetInt(value); }

void ConfigStore::SetNumber(Path path, double value) { tree_->Make(path).SetDouble(value); }

void ConfigStore::Remove(Path path) {
  const std::string& name = path.back();
  Value* parent = path.size() == 1 ? &tree_->root : tree_->Find(path.first(path.size() - 1));
  // Every one, where a name stands twice.
  while (parent && parent->IsObject() &&
         parent->EraseMember(StringRef(name.data(), static_cast<SizeType>(name.size())))) {
  }
}

void ConfigStore::Save() const {
  if (file_.empty()) throw WriteError("the settings can't be stored: neither XDG_CONFIG_HOME nor HOME is set");
  if (isDamagedFileInPlace_)
    throw WriteError(file_.string() + ": can't be written: the damaged file could not be kept aside");
  rapidjson::StringBuffer text;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(text);
  writer.SetIndent(' ', 2);
  tree_->root.Accept(writer);
  text.Put('\n');
  std::error_code error;
  fs::create_directories(file_.parent_path(), error);
  if (error) throw WriteError(file_.string() + ": can't be written: " + error.message());
  WriteFileAtomically(file_, {text.GetString(), text.GetSize()});
}

}  // namespace headless
