// How an export went.
#pragma once

#include "tool/exit_codes.h"
#include "tool/not_carried.h"
#include "tool/report.h"
#include "tool/stages.h"
#include "tool/written_counts.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tool {

struct WrittenFile {
  std::filesystem::path path;
  std::uintmax_t bytes = 0;
};

struct ExportOutcome {
  ExitCode exitCode = kDone;
  std::string error;                     // empty for none
  std::vector<WrittenFile> files;        // in place; the output last
  std::optional<WrittenCounts> written;  // none when the export failed
  std::vector<std::filesystem::path> sources;  // looked at for the scene, whether they were there or not
  std::vector<NotCarried> notCarried;    // each once
  std::vector<MessageGroup> messages;
  std::map<std::string, std::int32_t> userValues;  // in force, those that were set
  Stages::Numbers seconds{};
  double secondsInAll = 0;
  std::uint64_t peakMemory = 0;  // bytes
};

// Items that share what, why and help.
struct NotCarriedGroup {
  NotCarried shared;               // without an item
  std::vector<std::string> items;  // their names, none for what isn't one item's matter
};
std::vector<NotCarriedGroup> GroupNotCarried(const std::vector<NotCarried>& notCarried);

}  // namespace tool
