// How the lines of a batch went.
#pragma once

#include "tool/exit_codes.h"

#include <cstddef>
#include <optional>
#include <string>

namespace tool {

enum class BatchStatus { Done, Skipped, Failed };

struct BatchResult {
  std::size_t line = 0;  // in the manifest, from 1
  std::string input, output;
  BatchStatus status = BatchStatus::Done;
  int exitCode = kDone;  // of the export; 128 + N when signal N ended it
  std::string error;     // one line; empty for none
  double seconds = 0;
};

// An object in one line without its end.
std::string ResultJson(const BatchResult& result);
// None for what isn't such a line.
std::optional<BatchResult> ParseResult(const std::string& json);

}  // namespace tool
