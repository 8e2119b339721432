// Runs in place of the program's start: waits for plans, and starts the program anew for each, in a copy of this
// process, which costs much less than loading it again.
#include "tests/support/fault_state.h"

#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
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

void Send(int to, const void* bytes, std::size_t count) {
  for (const char* from = static_cast<const char*>(bytes); count > 0;) {
    const ssize_t sent = write(to, from, count);
    if (sent <= 0) _exit(1);
    from += sent;
    count -= static_cast<std::size_t>(sent);
  }
}

void Tell(int to, FaultResult result) { Send(to, &result, sizeof result); }

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
    state->history = 0;
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
    const std::size_t traced = std::min<std::size_t>(state->allocations, kMostTraced);
    if (plan.kind == FaultKind::Trace) Send(to, state->trace.data(), traced * sizeof(std::uint64_t));
  }
  _exit(0);
}

}  // namespace
}  // namespace test_support
