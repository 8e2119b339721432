// What a command is to fail at, and what came of it. Both go through pipes between the test and the process that
// runs the command (see fault_server.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace test_support {

enum class FaultKind : std::int32_t {
  Allocation,   // the place's allocation of memory gives none
  Exhaustion,   // nor does any later one
  Call,         // the place's system call on a file gives `error`
  LastingCall,  // and so does each later one of its name
  ShortCall,    // it reads or writes half of what it shall
  Kill,         // SIGKILL comes before it
  Trace,        // nothing; as many numbers as there were allocations come behind the result
};

constexpr std::size_t kMostTraced = 1 << 16;  // allocations of a trace

struct FaultPlan {
  FaultKind kind = FaultKind::Allocation;
  std::int32_t error = 0;   // an errno
  std::uint64_t place = 0;  // from 1; 0 for a run without a fault, which counts
};

struct FaultResult {
  std::int32_t status = 0;  // as of waitpid()
  std::int32_t hit = 0;     // whether the fault took place
  std::uint64_t allocations = 0, calls = 0;
  char call[16] = {};   // which call failed, such as "fsync"
  char path[512] = {};  // of the file, also for calls on descriptors; the new name when a file was to be renamed
};

}  // namespace test_support
