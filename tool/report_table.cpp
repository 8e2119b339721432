#include "tool/report_table.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace tool {
namespace {

constexpr std::size_t kColumns = 4;
constexpr std::size_t kMostNames = 6;
constexpr double kMegabyte = 1e6;

void AddCounts(const ExportOutcome& outcome, std::vector<std::string>& lines) {
  std::string line;
  std::size_t column = 0;
  for (const CountField& field : kCountFields) {
    if (field.count == &WrittenCounts::bytes) continue;
    line += fmt::format("  {:<10}{:>9}", field.name, *outcome.written.*field.count);
    if (++column % kColumns != 0) continue;
    lines.push_back(line);
    line.clear();
  }
  if (!line.empty()) lines.push_back(line);
  lines.push_back(fmt::format("  {} bytes in {:.2f} s, at most {:.0f} MB of memory", outcome.written->bytes,
                              outcome.secondsInAll, static_cast<double>(outcome.peakMemory) / kMegabyte));
}

std::string NameList(const std::vector<std::string>& names) {
  std::string list;
  const std::size_t shown = names.size() > kMostNames ? kMostNames - 1 : names.size();
  for (std::size_t place = 0; place < shown; ++place)
    list += fmt::format("{}\"{}\"", place == 0 ? "" : ", ", names[place]);
  if (shown < names.size()) list += fmt::format(" and {} more", names.size() - shown);
  return list;
}

void AddNotCarried(const ExportOutcome& outcome, std::vector<std::string>& lines) {
  bool isFirst = true;
  for (const NotCarriedGroup& group : GroupNotCarried(outcome.notCarried)) {
    if (group.items.empty()) continue;  // a warning that was told, and told all
    if (isFirst) lines.push_back("not carried over");
    isFirst = false;
    const std::string help = group.shared.help.empty() ? "" : fmt::format(" (helps: {})", group.shared.help);
    lines.push_back(
        fmt::format("  {} {}: {}{}", group.shared.what, NameList(group.items), group.shared.why, help));
  }
}

void AddRepeated(const ExportOutcome& outcome, std::vector<std::string>& lines) {
  const std::vector<MessageGroup>& messages = outcome.messages;
  if (std::none_of(messages.begin(), messages.end(), [](const MessageGroup& group) { return group.count > 1; }))
    return;
  lines.push_back("came more than once");
  for (const MessageGroup& group : messages)
    if (group.count > 1)
      lines.push_back(fmt::format("  {} times {}: {}", group.count,
                                  group.kind == MessageKind::Error ? "error" : "warning", group.text));
}

}  // namespace

std::vector<std::string> ReportTable(const ExportOutcome& outcome) {
  std::vector<std::string> lines;
  if (outcome.written) AddCounts(outcome, lines);
  AddNotCarried(outcome, lines);
  AddRepeated(outcome, lines);
  return lines;
}

}  // namespace tool
