// The host's log as JSON lines.
#pragma once

#include "headless/host.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace tool {

// "setup", "info", "warning", "error", "warningDialog" or "errorDialog".
const char* KindName(headless::LogLine::Kind kind);

// Writes an object a message, {"kind":...,"text":...}, in order. A text that isn't UTF-8 is taken for
// Latin-1.
class LogFile {
 public:
  // Throws OutputError when the file can't be made.
  explicit LogFile(const std::filesystem::path& file);
  ~LogFile();
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  void Write(const headless::LogLine& line);
  // Throws OutputError when anything could not be written.
  void Close();

 private:
  std::filesystem::path file_;
  std::FILE* stream_ = nullptr;
};

}  // namespace tool
