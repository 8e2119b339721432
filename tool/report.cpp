#include "tool/report.h"

#include "tool/screen.h"

#include <map>
#include <string_view>
#include <utility>

namespace tool {
namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

std::string Line(MessageKind kind, std::string_view text) {
  return (kind == MessageKind::Error ? "vornel: error: " : "vornel: warning: ") + std::string(text);
}

}  // namespace

struct Report::Told {
  std::vector<MessageGroup> groups;
  std::map<std::pair<MessageKind, std::string>, std::size_t> places;
};

Report::Report(Verbosity verbosity) : verbosity_(verbosity), told_(std::make_shared<Told>()) {}

const std::vector<MessageGroup>& Report::Messages() const { return told_->groups; }

void Report::Tell(MessageKind kind, const std::string& text) const {
  const auto entry = told_->places.find({kind, text});
  const bool isNew = entry == told_->places.end();
  if (isNew) {
    // In this order, so that no place is beyond the groups where there is no memory for one of both.
    told_->groups.push_back({kind, text});
    told_->places.emplace(std::pair(kind, text), told_->groups.size() - 1);
  } else {
    ++told_->groups[entry->second].count;
  }
  const bool wanted = kind == MessageKind::Error || verbosity_ != Verbosity::Quiet;
  if (wanted && (isNew || verbosity_ == Verbosity::Verbose)) PrintErrorLine(Line(kind, text));
}

void Report::Error(const std::string& text) const { Tell(MessageKind::Error, text); }

void Report::Warning(const std::string& text) const { Tell(MessageKind::Warning, text); }

void Report::Note(const std::string& text) const {
  if (verbosity_ != Verbosity::Quiet) PrintErrorLine(text);
}

void Report::LogMessage(const headless::LogLine& line) const {
  using Kind = headless::LogLine::Kind;
  switch (line.kind) {
    case Kind::Setup:
    case Kind::Info:
      // The blanks in front show the nesting; some texts end in a line end of their own.
      if (verbosity_ == Verbosity::Verbose)
        PrintErrorLine(std::string_view(line.text).substr(0, line.text.find_last_not_of('\n') + 1));
      break;
    case Kind::Warning:
      Warning(std::string(Trimmed(line.text)));
      break;
    case Kind::WarningDialog:
      Note(Line(MessageKind::Warning, Trimmed(line.text)));
      break;
    case Kind::Error:
    case Kind::ErrorDialog:
      Error(std::string(Trimmed(line.text)));
      break;
  }
}

}  // namespace tool
