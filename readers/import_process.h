// Runs the program that reads foreign files, and outlives whatever becomes of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace readers {

struct ImportCall {
  std::filesystem::path program;
  std::vector<std::string> arguments;  // without the program's name
  std::filesystem::path directory;     // what it fills
  std::uint64_t largestSize = 0;       // of all files there, bytes
  std::chrono::seconds timeout{0};     // by the clock on the wall
};

// Waits until the program has ended or a limit is passed; then the program is killed, with every process it
// started that stays in its group. It gets a clean environment, no input and no open files. The reason why it
// failed, one line: its own last line of errors, the signal, or the limit; none when it ended with 0.
std::optional<std::string> RunImporter(const ImportCall& call);

// The text without control characters, and cut when it is long.
std::string PlainLine(std::string text);

}  // namespace readers
