#include "tool/batch_record.h"

#include "readers/program_files.h"
#include "tool/content_hash.h"
#include "tool/output_error.h"
#include "tool/staging.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <set>
#include <tuple>

namespace tool {
namespace {

namespace fs = std::filesystem;
using Json = rapidjson::Value;

constexpr int kVersion = 1;

std::string TextOf(const Json& string) { return {string.GetString(), string.GetStringLength()}; }

fs::path DirectoryOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

// From the manifest's directory on when it lies below that, so that a folder with scenes, manifest and outputs can
// be moved.
std::string SourceName(const fs::path& file) {
  const fs::path name = fs::proximate(fs::absolute(file));
  return name.begin() != name.end() && *name.begin() == ".." ? fs::absolute(file).lexically_normal().string()
                                                             : name.string();
}

// The hash of a program, which doesn't change while this one runs; empty when it isn't there.
std::string ProgramHash(const fs::path& program) {
  static std::mutex mutex;
  static std::map<fs::path, std::string> hashes;
  const std::lock_guard<std::mutex> lock(mutex);
  const auto [entry, isNew] = hashes.try_emplace(program);
  if (isNew) entry->second = HashContent(program).value_or("");
  return entry->second;
}

struct Program {
  const char* name;
  fs::path file;
};

// Whatever turns the input into the output.
std::vector<Program> ProgramsOf(const ExportArguments& arguments) {
  return {{"command", "/proc/self/exe"},
          {"importer", readers::ImporterFile()},
          {"module", arguments.module.empty() ? readers::ModuleFile() : arguments.module}};
}

class RecordText {
 public:
  explicit RecordText(rapidjson::StringBuffer& text) : writer_(text) { writer_.SetIndent(' ', 1); }

  void Write(const BatchLine& line, const ExportOutcome& outcome) {
    writer_.StartObject();
    writer_.Key("record");
    writer_.Int(kVersion);
    Text("version", VORNEL_VERSION);
    writer_.Key("programs");
    writer_.StartObject();
    for (const Program& program : ProgramsOf(line.arguments)) Text(program.name, ProgramHash(program.file));
    writer_.EndObject();
    Text("input", line.input);
    writer_.Key("options");
    writer_.RawValue(line.options.data(), line.options.size(), rapidjson::kObjectType);
    std::set<std::string> read;
    for (const fs::path& file : outcome.sources) read.insert(SourceName(file));
    writer_.Key("read");
    writer_.StartArray();
    for (const std::string& file : read) File(file, file);
    writer_.EndArray();
    WriteOutputs(line, outcome);
    writer_.EndObject();
  }

 private:
  void Text(const char* key, const std::string& value) {
    writer_.Key(key);
    writer_.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
  }
  void File(const std::string& name, const fs::path& file) {
    writer_.StartObject();
    Text("file", name);
    writer_.Key("hash");
    const std::optional<std::string> hash = HashContent(file);
    if (hash)
      writer_.String(hash->c_str());
    else
      writer_.Null();
    writer_.EndObject();
  }
  void WriteOutputs(const BatchLine& line, const ExportOutcome& outcome) {
    std::vector<fs::path> written = SideFiles(line.arguments);
    for (const WrittenFile& file : outcome.files) written.push_back(file.path);
    const fs::path directory = DirectoryOf(line.output);
    writer_.Key("written");
    writer_.StartArray();
    std::error_code error;
    for (const fs::path& file : written)
      if (fs::is_regular_file(file, error)) File(fs::proximate(file, directory).string(), file);
    writer_.EndArray();
  }

  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
};

bool IsText(const Json& object, const char* key, const std::string& text) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsString() && TextOf(member->value) == text;
}

// The first of the files that isn't as it was; the files' names start in `directory`. "" for a broken list.
std::optional<std::string> ChangedFile(const Json& record, const char* key, const fs::path& directory) {
  const auto list = record.FindMember(key);
  if (list == record.MemberEnd() || !list->value.IsArray()) return "";
  for (const Json& entry : list->value.GetArray()) {
    if (!entry.IsObject() || !entry.HasMember("file") || !entry["file"].IsString() || !entry.HasMember("hash"))
      return "";
    const fs::path file = directory / TextOf(entry["file"]);
    const std::optional<std::string> hash = HashContent(file);
    if (hash ? !IsText(entry, "hash", *hash) : !entry["hash"].IsNull()) return file.lexically_normal().string();
  }
  return std::nullopt;
}

bool HasSamePrograms(const Json& record, const BatchLine& line) {
  const auto programs = record.FindMember("programs");
  if (programs == record.MemberEnd() || !programs->value.IsObject()) return false;
  const std::vector<Program> now = ProgramsOf(line.arguments);
  return IsText(record, "version", VORNEL_VERSION) &&
         std::all_of(now.begin(), now.end(), [&](const Program& program) {
           return IsText(programs->value, program.name, ProgramHash(program.file));
         });
}

bool HasSameOptions(const Json& record, const BatchLine& line) {
  rapidjson::Document options;
  options.Parse<rapidjson::kParseIterativeFlag>(line.options.data(), line.options.size());
  const Json& now = options;  // a document compared with a value would compare itself for ever in C++20
  return record.HasMember("options") && record["options"] == now;
}

using FileTime = std::pair<std::int64_t, std::int64_t>;

// When the file's content or name changed last; the earliest time for none.
FileTime ChangeTime(const fs::path& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) return {};
  return {status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

}  // namespace

fs::path RecordFile(const fs::path& output) {
  return fs::path(output).replace_filename("." + output.filename().string() + ".vornel");
}

std::optional<std::string> WhyToExport(const BatchLine& line) {
  std::error_code error;
  if (!fs::is_regular_file(line.output, error)) return "there is no output";
  std::ifstream stream(RecordFile(line.output), std::ios::binary);
  if (!stream) return "there is no record of it";
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  rapidjson::Document record;
  record.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
  if (record.HasParseError() || !record.IsObject() || !record.HasMember("record") || !record["record"].IsInt() ||
      record["record"].GetInt() != kVersion)
    return "its record can't be read";
  if (!HasSamePrograms(record, line)) return "another vornel made it";
  if (!IsText(record, "input", line.input) || !HasSameOptions(record, line)) return "its line changed";
  for (const auto& [key, directory] :
       {std::pair("read", fs::path("")), std::pair("written", DirectoryOf(line.output))})
    if (const std::optional<std::string> file = ChangedFile(record, key, directory))
      return file->empty() ? "its record can't be read" : *file + " changed";
  return std::nullopt;
}

RecordWriter::RecordWriter(const BatchLine& line)
    : line_(line), staging_(std::make_unique<Staging>(RecordFile(line.output))) {}

RecordWriter::~RecordWriter() = default;

void RecordWriter::Write(const ExportOutcome& outcome) {
  rapidjson::StringBuffer text;
  RecordText(text).Write(line_, outcome);
  // By the clock of the file system, which the staging directory was made by.
  const FileTime begin = ChangeTime(staging_->Directory());
  for (const fs::path& file : outcome.sources)
    if (ChangeTime(file) > begin) return;
  std::ofstream stream(staging_->File(), std::ios::binary);
  stream.write(text.GetString(), static_cast<std::streamsize>(text.GetSize()));
  stream.close();
  if (!stream) throw OutputError(RecordFile(line_.output).string() + ": can't be written");
  staging_->MoveIntoPlace();
}

}  // namespace tool
