// Runs the built command as a program of its own.
#pragma once

#include "tests/support/temp_directory.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace test_support {

struct CommandRun {
  int exitCode = -1;  // as a shell says it: 128 + N when signal N ended it
  std::string output;
  std::string errors;

  std::vector<std::string> ErrorLines() const;
};

// A started program; its first argument is searched for in PATH. It is waited for when it goes.
class RunningCommand {
 public:
  explicit RunningCommand(std::vector<std::string> arguments);
  ~RunningCommand();
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;

  void Signal(int number) const;
  // To be called once.
  CommandRun Wait();

 private:
  TempDirectory directory_;  // of what it prints
  pid_t process_ = 0;
};

CommandRun RunCommand(std::vector<std::string> arguments);

}  // namespace test_support
