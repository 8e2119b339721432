#include "tests/support/command_runner.h"

#include "tests/support/glb_reader.h"

#include <sys/wait.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace test_support {

std::vector<std::string> CommandRun::ErrorLines() const {
  std::vector<std::string> lines;
  std::istringstream stream(errors);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

RunningCommand::RunningCommand(std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const int descriptors[] = {STDOUT_FILENO, STDERR_FILENO};
  for (const int descriptor : descriptors) {
    const std::string file = (directory_.Path() / std::to_string(descriptor)).string();
    posix_spawn_file_actions_addopen(&actions, descriptor, file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }
  const int failure = posix_spawnp(&process_, pointers[0], &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::runtime_error("can't start " + arguments[0]);
}

RunningCommand::~RunningCommand() {
  if (process_ == 0) return;
  Signal(SIGKILL);
  Wait();
}

void RunningCommand::Signal(int number) const { kill(process_, number); }

CommandRun RunningCommand::Wait() {
  CommandRun run;
  int status = 0;
  waitpid(std::exchange(process_, 0), &status, 0);
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.output = ReadWholeFile(directory_.Path() / std::to_string(STDOUT_FILENO));
  run.errors = ReadWholeFile(directory_.Path() / std::to_string(STDERR_FILENO));
  return run;
}

CommandRun RunCommand(std::vector<std::string> arguments) { return RunningCommand(std::move(arguments)).Wait(); }

}  // namespace test_support
