#include "tool/memory_watch.h"

#include "tool/exit_codes.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <unistd.h>

namespace tool {
namespace {

std::atomic<bool> g_ranOut = false;

void NoteAndThrow() {
  g_ranOut = true;
  throw std::bad_alloc();
}

[[noreturn]] void EndForLackOfMemory() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    TellOutOfMemory();
    _exit(kOutput);
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

void TellOutOfMemory() {
  constexpr std::string_view kText = "vornel: error: out of memory\n";
  if (write(STDERR_FILENO, kText.data(), kText.size()) < 0) return;
}

}  // namespace tool
