// The state that the parts of the preloaded library share.
#pragma once

#include "tests/support/fault_plan.h"

#include <array>
#include <atomic>

namespace test_support {

struct FaultState {
  std::atomic<bool> active;
  FaultPlan plan;
  std::atomic<std::uint64_t> allocations, calls;
  FaultResult result;
  std::uint64_t history;                         // of who made the last 64 allocations
  std::array<std::uint64_t, kMostTraced> trace;  // by allocation, as far as there is room
};

// Shared with the process that forked this one; null while the program starts.
extern FaultState* faultState;

// Makes system calls on files come by. False where the kernel doesn't let a process watch its own calls.
bool WatchCalls();

}  // namespace test_support
