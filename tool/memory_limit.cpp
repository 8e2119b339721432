#include "tool/memory_limit.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::uint64_t kLeastMemory = 64;  // MiB
constexpr std::uint64_t kMostMemory = std::uint64_t{1} << 24;

std::uint64_t g_limit = 0;  // bytes; 0 for none
std::atomic<bool> g_ranOut = false;

void NoteAndThrow() {
  g_ranOut = true;
  throw std::bad_alloc();
}

[[noreturn]] void EndForLackOfMemory() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    _exit(TellOutOfMemory());
  } catch (...) {
  }
  std::abort();
}

}  // namespace

void WatchMemory() noexcept {
  std::set_new_handler(NoteAndThrow);
  std::set_terminate(EndForLackOfMemory);
}

bool MemoryRanOut() { return g_ranOut; }

void AddMemoryOption(CLI::App& command, std::optional<std::uint64_t>& bytes) {
  command
      .add_option_function<std::uint64_t>(
          "--max-memory", [&bytes](std::uint64_t count) { bytes = count << 20; },
          "most memory that the command itself may take; it ends with 6 when that isn't enough")
      ->type_name("MIB")
      ->check(CLI::Range(kLeastMemory, kMostMemory).description(""));
}

void LimitMemory(const std::optional<std::uint64_t>& bytes) {
  if (!bytes) return;
  g_limit = *bytes;
#ifndef VORNEL_SANITIZED
  rlimit limit = {};
  getrlimit(RLIMIT_DATA, &limit);
  limit.rlim_cur = std::min<rlim_t>(*bytes, limit.rlim_max);
  setrlimit(RLIMIT_DATA, &limit);
#endif
}

MemoryFailure OutOfMemory(ExitCode withoutLimit) {
  if (g_limit == 0) return {withoutLimit, "out of memory"};
  return {kMemory, fmt::format("takes more memory than its limit of {} MiB (--max-memory)", g_limit >> 20)};
}

ExitCode TellOutOfMemory() {
  constexpr std::string_view kText = "vornel: error: out of memory\n";
  constexpr std::string_view kLimitText = "vornel: error: takes more memory than its limit (--max-memory)\n";
  const std::string_view text = g_limit == 0 ? kText : kLimitText;
  const bool isTold = write(STDERR_FILENO, text.data(), text.size()) >= 0;
  static_cast<void>(isTold);  // nobody is left to be told of that
  return g_limit == 0 ? kOutput : kMemory;
}

}  // namespace tool
