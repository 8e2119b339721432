// An upper bound of the memory that this process takes, and what is said when there is no more.
#pragma once

#include "tool/exit_codes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace tool {

// Adds --max-memory, in MiB. The parsing fills `bytes`, which must outlive the command.
void AddMemoryOption(CLI::App& command, std::optional<std::uint64_t>& bytes);

// From now on this process can't get more memory than that, mapped files and its first stack not counted; nor can
// a process that it starts, unless that raises its limit again. Does nothing without a number, and in builds with
// an address sanitizer, which maps terabytes.
void LimitMemory(const std::optional<std::uint64_t>& bytes);

// True when an allocation has failed since LimitMemory, also where whoever lacked it went on without a word.
bool MemoryLimitReached();

// How a command ends that lacks memory, and why.
struct MemoryFailure {
  ExitCode exitCode;
  std::string reason;
};
MemoryFailure OutOfMemory(ExitCode withoutLimit);

}  // namespace tool
