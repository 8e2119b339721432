// Runs the lines of a manifest, several at a time.
#pragma once

#include "tool/batch_manifest.h"
#include "tool/batch_result.h"
#include "tool/batch_task.h"
#include "tool/progress.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tool {

enum class OnFailure { GoOn, Stop };

struct BatchPlan {
  std::string name;      // of the manifest, for messages
  std::size_t jobs = 1;  // processes at a time
  Redo redo = Redo::WhenChanged;
  OnFailure onFailure = OnFailure::GoOn;  // lines that run already are finished in either case
  ProgressStyle progress = ProgressStyle::None;
  std::function<void(const BatchResult&)> finished;  // told of each line, by one thread at a time
};

// Each line that isn't done already is exported by a process of its own, in the order of the manifest as far as
// they don't run at the same time. Messages go to the error stream as lines finish. Returns the results in the
// order in which they came; with OnFailure::Stop not of all lines.
std::vector<BatchResult> RunLines(const std::vector<BatchLine>& lines, const BatchPlan& plan);

}  // namespace tool
