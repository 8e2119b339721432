// Runs in place of the program's start: waits for plans, and starts the program anew for each, in a copy of this
// process, which costs much less than loading it again.
#include "tests/support/fault_state.h"

#include <sys/mman.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <unistd.h>

namespace test_support {

FaultState* faultState = nullptr;

namespace {

constexpr unsigned kLongestRun = 60;  // seconds

bool ReadPlan(int from, FaultPlan& plan) {
  return read(from, &plan, sizeof plan) == static_cast<ssize_t>(sizeof plan);
}

void Tell(int to, FaultResult result) {
  if (write(to, &result, sizeof result) != static_cast<ssize_t>(sizeof result)) _exit(1);
}

// Returns in the copies.
__attribute__((constructor)) void Serve() {
  const char* const pipes = std::getenv("VORNEL_FAULT_PIPES");
  int from = -1, to = -1;
  if (!pipes || std::sscanf(pipes, "%d %d", &from, &to) != 2) return;
  unsetenv("VORNEL_FAULT_PIPES");
  unsetenv("LD_PRELOAD");
  void* const shared =
      mmap(nullptr, sizeof(FaultState), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) _exit(1);  // NOLINT: the system's own cast
  FaultState* const state = new (shared) FaultState{};
  FaultResult ready;
  ready.hit = WatchCalls();
  Tell(to, ready);
  faultState = state;
  for (FaultPlan plan; ReadPlan(from, plan);) {
    state->plan = plan;
    state->allocations = 0;
    state->calls = 0;
    state->result = {};
    const pid_t process = fork();
    if (process == 0) {
      close(from);
      close(to);
      alarm(kLongestRun);
      state->active = true;
      return;
    }
    waitpid(process, &state->result.status, 0);
    state->active = false;
    state->result.allocations = state->allocations;
    state->result.calls = state->calls;
    Tell(to, state->result);
  }
  _exit(0);
}

}  // namespace
}  // namespace test_support
