#include "tool/report_file.h"

#include "readers/text_utf8.h"
#include "tool/output_error.h"
#include "tool/staging.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr int kVersion = 1;
constexpr int kDecimals = 6;  // of seconds

class JsonReport {
 public:
  explicit JsonReport(rapidjson::StringBuffer& text) : writer_(text) {
    writer_.SetIndent(' ', 2);
    writer_.SetMaxDecimalPlaces(kDecimals);
  }

  void Write(const ExportArguments& arguments, const ExportOutcome& outcome) {
    writer_.StartObject();
    Number("report", kVersion);
    Text("vornel", VORNEL_VERSION);
    Text("result", outcome.exitCode == kDone ? "done" : outcome.exitCode == kWarnings ? "warnings" : "failed");
    Number("exitCode", static_cast<std::uint64_t>(outcome.exitCode));
    if (!outcome.error.empty()) Text("error", outcome.error);
    Text("input", arguments.input.string());
    Text("output", arguments.output.string());
    WriteFiles(outcome);
    WriteCounts(outcome);
    WriteNotCarried(outcome);
    WriteMessages(outcome);
    WriteUserValues(outcome);
    WriteCosts(outcome);
    writer_.EndObject();
  }

 private:
  void Key(const std::string& key) { writer_.Key(key.data(), static_cast<rapidjson::SizeType>(key.size())); }
  // Paths and names may be bytes from before UTF-8.
  void String(const std::string& value) {
    const std::string text = readers::ToUtf8(value);
    writer_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }
  void Text(const char* key, const std::string& value) {
    Key(key);
    String(value);
  }
  void Number(const char* key, std::uint64_t value) {
    Key(key);
    writer_.Uint64(value);
  }

  void WriteFiles(const ExportOutcome& outcome) {
    Key("files");
    writer_.StartArray();
    for (const WrittenFile& file : outcome.files) {
      writer_.StartObject();
      Text("path", file.path.string());
      Number("bytes", file.bytes);
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  void WriteCounts(const ExportOutcome& outcome) {
    if (!outcome.written) return;
    Key("written");
    writer_.StartObject();
    for (const CountField& field : kCountFields) Number(field.name, *outcome.written.*field.count);
    writer_.EndObject();
  }

  void WriteNotCarried(const ExportOutcome& outcome) {
    Key("notCarriedOver");
    writer_.StartArray();
    for (const NotCarriedGroup& group : GroupNotCarried(outcome.notCarried)) {
      writer_.StartObject();
      Text("what", group.shared.what);
      Text("why", group.shared.why);
      if (!group.shared.help.empty()) Text("help", group.shared.help);
      Key("items");
      writer_.StartArray();
      for (const std::string& item : group.items) String(item);
      writer_.EndArray();
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  void WriteMessages(const ExportOutcome& outcome) {
    Key("messages");
    writer_.StartArray();
    for (const MessageGroup& message : outcome.messages) {
      writer_.StartObject();
      Text("kind", message.kind == MessageKind::Error ? "error" : "warning");
      Text("text", message.text);
      Number("count", message.count);
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  void WriteUserValues(const ExportOutcome& outcome) {
    Key("userValues");
    writer_.StartObject();
    for (const auto& [name, value] : outcome.userValues) {
      Key(readers::ToUtf8(name));
      writer_.Int(value);
    }
    writer_.EndObject();
  }

  void WriteCosts(const ExportOutcome& outcome) {
    Key("stages");
    writer_.StartArray();
    for (std::size_t stage = 0; stage < kStageCount; ++stage) {
      if (outcome.seconds[stage] <= 0) continue;
      writer_.StartObject();
      Text("name", kStageNames[stage]);
      Key("seconds");
      writer_.Double(outcome.seconds[stage]);
      writer_.EndObject();
    }
    writer_.EndArray();
    Key("seconds");
    writer_.Double(outcome.secondsInAll);
    Number("peakMemoryBytes", outcome.peakMemory);
  }

  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
};

void WriteWhole(const fs::path& file, const fs::path& shown, const std::string& text) {
  std::FILE* const stream = std::fopen(file.c_str(), "wb");
  const bool written = stream && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  const int error = errno;
  const bool closed = stream && std::fclose(stream) == 0;
  if (!written || !closed)
    throw OutputError(shown.string() + ": can't write the report: " + std::strerror(written ? errno : error));
}

}  // namespace

std::string ReportJson(const ExportArguments& arguments, const ExportOutcome& outcome) {
  rapidjson::StringBuffer text;
  JsonReport(text).Write(arguments, outcome);
  text.Put('\n');
  return {text.GetString(), text.GetSize()};
}

ReportFile::ReportFile(const fs::path& file) : file_(file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  // A link leads to the report, as /dev/stdout does.
  if (fs::exists(status)) file_ = fs::canonical(file);
  if (!fs::exists(status) || fs::is_regular_file(status) || fs::is_directory(status))
    staging_ = std::make_unique<Staging>(file_);
}

ReportFile::~ReportFile() = default;

void ReportFile::Write(const std::string& json) {
  WriteWhole(staging_ ? staging_->File() : file_, file_, json);
  if (staging_) staging_->MoveIntoPlace();
  staging_.reset();
}

}  // namespace tool
