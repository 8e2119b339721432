#include "tool/batch_children.h"

#include "tool/batch_task.h"
#include "tool/screen.h"

#include <fmt/core.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kErrorPrefix[] = "vornel: error: ";
constexpr auto kPatience = std::chrono::seconds(10);  // for a process to clean up after itself
constexpr auto kLookEvery = std::chrono::milliseconds(5);

[[noreturn]] void Fail(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

// A file in memory.
class Buffer {
 public:
  Buffer() : descriptor_(memfd_create("vornel", MFD_CLOEXEC)) {
    if (descriptor_ < 0) Fail(errno, "no memory for a process");
  }
  ~Buffer() { close(descriptor_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  int Descriptor() const { return descriptor_; }
  void Fill(const std::string& text) const {
    for (std::size_t done = 0; done < text.size();) {
      const ssize_t count = write(descriptor_, text.data() + done, text.size() - done);
      if (count < 0 && errno != EINTR) Fail(errno, "no memory for a process");
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    lseek(descriptor_, 0, SEEK_SET);
  }
  std::string Text() const {
    std::string text;
    std::array<char, 4096> block;
    lseek(descriptor_, 0, SEEK_SET);
    for (ssize_t count; (count = read(descriptor_, block.data(), block.size())) > 0;)
      text.append(block.data(), static_cast<std::size_t>(count));
    return text;
  }

 private:
  int descriptor_;
};

struct Streams {
  Buffer input, output, errors;
};

// The line goes in by the input stream, so that it doesn't matter when the manifest changes meanwhile. Throws
// std::system_error.
pid_t Start(const Streams& streams, const std::optional<std::uint64_t>& maxMemory) {
  std::vector<std::string> texts = {"vornel", "batch", "-", "--task=1", "--force", "--quiet", "--summary", "-"};
  if (maxMemory) texts.push_back(fmt::format("--max-memory={}", *maxMemory >> 20));
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, streams.input.Descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, streams.output.Descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, streams.errors.Descriptor(), STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t process = 0;
  // Also when the file of that name was replaced meanwhile.
  const int error = posix_spawn(&process, "/proc/self/exe", &files, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) Fail(error, "can't start a process");
  return process;
}

bool HasEnded(pid_t process) {
  siginfo_t info = {};
  return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         info.si_pid == process;
}

ChildOutcome OutcomeOf(const BatchLine& line, const Streams& streams, int status) {
  ChildOutcome outcome{ResultOf(line), {}};
  BatchResult& result = outcome.result;
  const std::optional<BatchResult> told = ParseResult(streams.output.Text());
  if (told && WIFEXITED(status) && WEXITSTATUS(status) == told->exitCode) {
    result.status = told->status;
    result.exitCode = told->exitCode;
    result.error = told->error;
  } else {
    result.status = BatchStatus::Failed;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.error =
        line.output + (WIFEXITED(status) ? fmt::format(": the export ended with {}", result.exitCode)
                                         : fmt::format(": signal {} ended the export", WTERMSIG(status)));
  }
  std::istringstream stream(streams.errors.Text());
  for (std::string text; std::getline(stream, text);)
    if (text != PlainText(kErrorPrefix + result.error)) outcome.messages.push_back(text);
  return outcome;
}

}  // namespace

BatchChildren::BatchChildren() : onSignal_([this] { EndAll(); }) {}

// It keeps the lock: nothing may start or be reaped until the program ends.
void BatchChildren::EndAll() {
  mutex_.lock();
  for (const pid_t process : running_) kill(process, SIGTERM);
  const auto limit = Clock::now() + kPatience;
  for (const pid_t process : running_) {
    while (!HasEnded(process) && Clock::now() < limit) std::this_thread::sleep_for(kLookEvery);
    if (!HasEnded(process)) kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
}

ChildOutcome BatchChildren::Export(const BatchLine& line) {
  const Streams streams;
  streams.input.Fill(line.text + "\n");
  pid_t process = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    process = Start(streams, line.arguments.maxMemory);
    running_.insert(process);
  }
  siginfo_t info = {};
  while (waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) continue;
  int status = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    running_.erase(process);
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
  }
  return OutcomeOf(line, streams, status);
}

}  // namespace tool
