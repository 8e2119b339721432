// What stops a command: one table from faults to exit codes and messages.
#pragma once

#include "tool/exit_codes.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tool {

struct Failure {
  ExitCode exitCode;
  std::string text;  // one line
};

// Of the exception that is being handled: unreadable input, a module that can't be had, output that can't be
// written, a failing system, no memory. `file` is named where the fault names none. Others are thrown on.
Failure CurrentFailure(const std::filesystem::path& file);

// What went wrong in `run`, none when it went through.
template <class Function>
std::optional<Failure> FailureOf(const std::filesystem::path& file, Function run) {
  try {
    run();
    return std::nullopt;
  } catch (...) {
    return CurrentFailure(file);
  }
}

// From now on a reader of the output that goes away, or a limit on file sizes, fails the write and not the
// command.
void IgnoreWriteSignals();

}  // namespace tool
