#include "tests/support/fault_server.h"

#include "tests/support/glb_reader.h"

#include <sys/personality.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace test_support {
namespace {

// The ends of both pipes in the command.
constexpr int kPlans = 100, kResults = 101;

std::string Variable(const char* name, const std::string& more) {
  const char* const value = std::getenv(name);
  return std::string(name) + '=' + (value ? std::string(value) + ':' : "") + more;
}

// Of two variables of one name the first counts.
std::vector<std::string> Environment(const std::string& library, std::vector<std::string> variables) {
  std::string more[] = {
      "LD_PRELOAD=" + library,
      "VORNEL_FAULT_PIPES=" + std::to_string(kPlans) + ' ' + std::to_string(kResults),
      Variable("ASAN_OPTIONS", "verify_asan_link_order=0:exitcode=99"),
      Variable("LSAN_OPTIONS", "exitcode=99:print_suppressions=0:suppressions=" VORNEL_SOURCE_DIR
                               "/tests/support/leaks_without_memory.txt"),
      Variable("UBSAN_OPTIONS", "exitcode=99"),
  };
  std::move(std::begin(more), std::end(more), std::back_inserter(variables));
  for (char** variable = environ; *variable; ++variable) variables.push_back(*variable);
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::vector<std::string> FaultRun::Complaints() const {
  std::vector<std::string> lines;
  std::istringstream stream(errors);
  for (std::string line; std::getline(stream, line);)
    if (line.starts_with("vornel: ")) lines.push_back(line);
  return lines;
}

FaultServer::FaultServer(const std::string& library, std::vector<std::string> arguments,
                         std::vector<std::string> variables) {
  int plans[2], results[2];
  errors_ = open((directory_.Path() / "errors").c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (errors_ < 0 || pipe2(plans, O_CLOEXEC) != 0 || pipe2(results, O_CLOEXEC) != 0)
    throw std::runtime_error("no pipes");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, plans[0], kPlans);
  posix_spawn_file_actions_adddup2(&actions, results[1], kResults);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_adddup2(&actions, errors_, stream);
  std::vector<std::string> environment = Environment(library, std::move(variables));
  personality(ADDR_NO_RANDOMIZE);  // of what is started from now on
  const int failure = posix_spawn(&process_, arguments[0].c_str(), &actions, nullptr, Pointers(arguments).data(),
                                  Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  close(plans[0]);
  close(results[1]);
  plans_ = plans[1];
  results_ = results[0];
  if (failure != 0) throw std::runtime_error("can't start " + arguments[0]);
  watchesCalls_ = ReadResult().hit != 0;
}

FaultServer::~FaultServer() {
  close(plans_);
  close(results_);
  close(errors_);
  waitpid(process_, nullptr, 0);
}

void FaultServer::Receive(void* bytes, std::size_t count) const {
  for (char* to = static_cast<char*>(bytes); count > 0;) {
    const ssize_t received = read(results_, to, count);
    if (received <= 0)
      throw std::runtime_error("the command gave no result: " + ReadWholeFile(directory_.Path() / "errors"));
    to += received;
    count -= static_cast<std::size_t>(received);
  }
}

FaultResult FaultServer::ReadResult() const {
  FaultResult result;
  Receive(&result, sizeof result);
  return result;
}

FaultRun FaultServer::Run(const FaultPlan& plan) {
  FaultRun run;
  if (ftruncate(errors_, 0) != 0 || write(plans_, &plan, sizeof plan) != static_cast<ssize_t>(sizeof plan))
    throw std::runtime_error("the command can't be told its plan");
  run.result = ReadResult();
  if (plan.kind == FaultKind::Trace) {
    run.trace.resize(std::min<std::size_t>(run.result.allocations, kMostTraced));
    Receive(run.trace.data(), run.trace.size() * sizeof run.trace[0]);
  }
  const int status = run.result.status;
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.errors = ReadWholeFile(directory_.Path() / "errors");
  return run;
}

}  // namespace test_support
