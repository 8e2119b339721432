// What becomes of the command when it finds no memory, and an upper bound of what it takes.
#pragma once

#include "tool/exit_codes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace tool {

// From now on a lack of memory that nobody handles ends the command with a message, also in a thread or a
// destructor; and MemoryRanOut() knows of every one. Throws nothing.
void WatchMemory() noexcept;

// Whether operator new found none since then, also where whoever lacked it went on without a word.
bool MemoryRanOut();

// Adds --max-memory, in MiB. The parsing fills `bytes`, which must outlive the command.
void AddMemoryOption(CLI::App& command, std::optional<std::uint64_t>& bytes);

// From now on this process can't get more memory than that, mapped files and its first stack not counted; nor can
// a process that it starts, unless that raises its limit again. Does nothing without a number, and in builds with
// an address sanitizer, which maps terabytes.
void LimitMemory(const std::optional<std::uint64_t>& bytes);

// How a command ends that lacks memory, and why.
struct MemoryFailure {
  ExitCode exitCode;
  std::string reason;
};
MemoryFailure OutOfMemory(ExitCode withoutLimit);

// The same for a command that has no word of its own: on the error stream, without memory. Returns the exit code.
ExitCode TellOutOfMemory();

}  // namespace tool
