// The processes of a batch, one a line, each of which runs this very program.
#pragma once

#include "readers/interrupt.h"
#include "tool/batch_manifest.h"
#include "tool/batch_result.h"

#include <sys/types.h>

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace tool {

struct ChildOutcome {
  BatchResult result;
  std::vector<std::string> messages;  // lines of its error stream but for the error of the result
};

// A signal that ends this program ends them first. May be used by several threads.
class BatchChildren {
 public:
  BatchChildren();

  // Exports a line, whether it is done already or not, and waits for that. Throws std::system_error when the
  // process can't be started.
  ChildOutcome Export(const BatchLine& line);

 private:
  void EndAll();

  std::mutex mutex_;
  std::set<pid_t> running_;  // not reaped yet
  readers::InterruptAction onSignal_;
};

}  // namespace tool
