// How the command ends.
#pragma once

namespace tool {

enum ExitCode : int {
  kDone = 0,
  kWarnings = 1,
  kUsage = 2,
  kInput = 3,
  kOutput = 4,
  kSomeFailed = 5,
  kMemory = 6
};

}  // namespace tool
