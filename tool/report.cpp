#include "tool/report.h"

#include <fmt/core.h>

#include <cstdio>
#include <string_view>

namespace tool {
namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

// Not fmt::print, which throws: an error stream that takes nothing must not cost the export.
void PrintLine(const char* front, std::string_view text) {
  const std::string line = fmt::format("{}{}\n", front, text);
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void Report::Error(const std::string& text) const { PrintLine("vornel: error: ", text); }

void Report::Warning(const std::string& text) const {
  if (verbosity_ != Verbosity::Quiet) PrintLine("vornel: warning: ", text);
}

void Report::Note(const std::string& text) const {
  if (verbosity_ != Verbosity::Quiet) PrintLine("", text);
}

void Report::LogMessage(const headless::LogLine& line) const {
  using Kind = headless::LogLine::Kind;
  switch (line.kind) {
    case Kind::Setup:
    case Kind::Info:
      // The blanks in front show the nesting; some texts end in a line end of their own.
      if (verbosity_ == Verbosity::Verbose)
        PrintLine("", std::string_view(line.text).substr(0, line.text.find_last_not_of('\n') + 1));
      break;
    case Kind::Warning:
    case Kind::WarningDialog:
      Warning(std::string(Trimmed(line.text)));
      break;
    case Kind::Error:
    case Kind::ErrorDialog:
      Error(std::string(Trimmed(line.text)));
      break;
  }
}

}  // namespace tool
