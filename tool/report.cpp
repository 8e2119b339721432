#include "tool/report.h"

#include <fmt/core.h>

#include <string_view>

namespace tool {
namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

}  // namespace

void Report::Error(const std::string& text) const { fmt::print(stderr, "vornel: error: {}\n", text); }

void Report::Warning(const std::string& text) const {
  if (verbosity_ != Verbosity::Quiet) fmt::print(stderr, "vornel: warning: {}\n", text);
}

void Report::Note(const std::string& text) const {
  if (verbosity_ != Verbosity::Quiet) fmt::print(stderr, "{}\n", text);
}

void Report::LogMessage(const headless::LogLine& line) const {
  using Kind = headless::LogLine::Kind;
  switch (line.kind) {
    case Kind::Setup:
    case Kind::Info:
      // The blanks in front show the nesting; some texts end in a line end of their own.
      if (verbosity_ == Verbosity::Verbose)
        fmt::print(stderr, "{}\n", std::string_view(line.text).substr(0, line.text.find_last_not_of('\n') + 1));
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
