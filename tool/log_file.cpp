#include "tool/log_file.h"

#include "readers/text_utf8.h"
#include "tool/output_error.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cerrno>
#include <cstring>

namespace tool {

const char* KindName(headless::LogLine::Kind kind) {
  using Kind = headless::LogLine::Kind;
  switch (kind) {
    case Kind::Setup:
      return "setup";
    case Kind::Info:
      return "info";
    case Kind::Warning:
      return "warning";
    case Kind::Error:
      return "error";
    case Kind::WarningDialog:
      return "warningDialog";
    case Kind::ErrorDialog:
      return "errorDialog";
  }
  return "info";
}

LogFile::LogFile(const std::filesystem::path& file) : file_(file), stream_(std::fopen(file.c_str(), "wb")) {
  if (!stream_) throw OutputError(file_.string() + ": can't write the log: " + std::strerror(errno));
}

LogFile::~LogFile() {
  if (stream_) std::fclose(stream_);
}

void LogFile::Write(const headless::LogLine& line) {
  const std::string message = readers::ToUtf8(line.text);  // one that was cut may end inside a character
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  writer.StartObject();
  writer.Key("kind");
  writer.String(KindName(line.kind));
  writer.Key("text");
  writer.String(message.data(), static_cast<rapidjson::SizeType>(message.size()));
  writer.EndObject();
  text.Put('\n');
  std::fwrite(text.GetString(), 1, text.GetSize(), stream_);
}

void LogFile::Close() {
  const bool failed = std::ferror(stream_) != 0;
  const bool closed = std::fclose(stream_) == 0;
  stream_ = nullptr;
  if (failed || !closed) throw OutputError(file_.string() + ": can't write the log: " + std::strerror(errno));
}

}  // namespace tool
