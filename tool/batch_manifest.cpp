#include "tool/batch_manifest.h"

#include "tool/batch_options.h"
#include "tool/written_document.h"

#include <fmt/core.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <filesystem>
#include <istream>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace tool {
namespace {

namespace fs = std::filesystem;
using Json = rapidjson::Value;

constexpr std::size_t kMostFaults = 20;

std::string TextOf(const Json& string) { return {string.GetString(), string.GetStringLength()}; }

std::string JsonText(const Json& value) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  value.Accept(writer);
  return {text.GetString(), text.GetSize()};
}

// Throws LineFault.
std::string PathIn(const Json& object, const char* key) {
  const auto member = object.FindMember(key);
  if (member == object.MemberEnd()) throw LineFault(fmt::format("{}: is missing", key));
  if (!member->value.IsString() || member->value.GetStringLength() == 0)
    throw LineFault(fmt::format("{}: is not a path in quotes", key));
  std::string path = TextOf(member->value);
  if (path.find('\0') != std::string::npos) throw LineFault(fmt::format("{}: holds a zero byte", key));
  return path;
}

// Throws LineFault.
void CheckKeys(const Json& object) {
  std::set<std::string> seen;
  for (const auto& member : object.GetObject()) {
    const std::string key = TextOf(member.name);
    if (key != "input" && key != "output" && key != "options")
      throw LineFault(key + ": is none of input, output and options");
    if (!seen.insert(key).second) throw LineFault(key + ": is there twice");
  }
}

class ManifestReader {
 public:
  explicit ManifestReader(std::string name) : name_(std::move(name)) {}

  Manifest Read(std::istream& stream);

 private:
  void ReadLine(BatchLine& line);
  void Claim(const fs::path& file, const char* key, std::size_t number);
  void Note(std::size_t number, const std::string& fault);

  std::string name_;
  OptionParser options_;
  std::map<fs::path, std::size_t> writers_;  // the lines by the files that they write
  std::size_t faultCount_ = 0;
  std::string faults_;
};

Manifest ManifestReader::Read(std::istream& stream) {
  Manifest manifest;
  for (std::string text; std::getline(stream, text);) {
    ++manifest.lineCount;
    if (text.find_first_not_of(" \t\r") == std::string::npos) continue;
    BatchLine line;
    line.number = manifest.lineCount;
    line.text = std::move(text);
    try {
      ReadLine(line);
    } catch (const LineFault& fault) {
      Note(line.number, fault.what());
    }
    manifest.lines.push_back(std::move(line));
  }
  if (stream.bad()) throw ManifestError(name_ + ": can't be read");
  if (faultCount_ > kMostFaults) faults_ += fmt::format("\n{}: {} more faults", name_, faultCount_ - kMostFaults);
  if (faultCount_ > 0) throw ManifestError(faults_);
  return manifest;
}

void ManifestReader::Note(std::size_t number, const std::string& fault) {
  if (++faultCount_ > kMostFaults) return;
  faults_ += fmt::format("{}{}:{}: {}", faults_.empty() ? "" : "\n", name_, number, fault);
}

void ManifestReader::ReadLine(BatchLine& line) {
  rapidjson::Document json;
  json.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(line.text.data(),
                                                                                     line.text.size());
  if (json.HasParseError())
    throw LineFault(fmt::format("not JSON, column {}: {}", json.GetErrorOffset() + 1,
                                rapidjson::GetParseError_En(json.GetParseError())));
  if (!json.IsObject()) throw LineFault("is not an object");
  CheckKeys(json);
  line.input = PathIn(json, "input");
  line.output = PathIn(json, "output");
  const Json none(rapidjson::kObjectType);
  const Json& options = json.HasMember("options") ? json["options"] : none;
  line.arguments = options_.Parse(line.input, line.output, options);
  line.options = JsonText(options);

  Claim(line.output, "output", line.number);
  if (KindOf(line.arguments.output) == OutputKind::Gltf)
    Claim(fs::path(line.output).replace_extension(".bin"), "output", line.number);
  for (const fs::path& file : SideFiles(line.arguments)) Claim(file, "options", line.number);
}

void ManifestReader::Claim(const fs::path& file, const char* key, std::size_t number) {
  std::error_code error;
  if (fs::is_character_file(file, error)) return;  // any number of lines may write to /dev/null
  const fs::path whole = fs::absolute(file).lexically_normal();
  // The file itself is replaced, not what it is a link to.
  const fs::path parent = fs::weakly_canonical(whole.parent_path(), error);
  const auto [entry, isNew] =
      writers_.try_emplace((error ? whole.parent_path() : parent) / whole.filename(), number);
  if (!isNew && entry->second != number)
    throw LineFault(fmt::format("{}: {} is written by line {} too", key, file.string(), entry->second));
}

}  // namespace

Manifest ReadManifest(std::istream& stream, const std::string& name) { return ManifestReader(name).Read(stream); }

}  // namespace tool
