#include "readers/import_process.h"

#include "readers/interrupt.h"
#include "readers/text_utf8.h"

#include <fmt/core.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace readers {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookEvery{50};
constexpr std::size_t kErrorsKept = 8192;
constexpr std::size_t kLongestLine = 400;
constexpr std::uint64_t kSizeOfNoFile = 4096;  // what an empty file takes, so that their number is bounded too

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  int Descriptor() const { return descriptor_; }
  void Close() {
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
  }

 private:
  int descriptor_;
};

// Starts the program with `errors` as its error stream. Throws std::system_error.
pid_t Start(const ImportCall& call, int errors) {
  std::vector<std::string> texts = {call.program.string()};
  texts.insert(texts.end(), call.arguments.begin(), call.arguments.end());
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  std::string settings[] = {"PATH=/usr/bin:/bin", "LC_ALL=C"};
  char* const environment[] = {settings[0].data(), settings[1].data(), nullptr};

  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&files, errors, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  pid_t process = 0;
  const int error = posix_spawn(&process, arguments[0], &files, &attributes, arguments.data(), environment);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) throw std::system_error(error, std::generic_category());
  return process;
}

// A started program, ended and reaped when it goes at the latest, or when a signal ends this one.
class Process {
 public:
  explicit Process(pid_t number)
      : number_(number), watch_(static_cast<int>(syscall(SYS_pidfd_open, number, 0))), killing_([number] {
          kill(-number, SIGKILL);
          // Until then it could write into what is removed next.
          siginfo_t info = {};
          waitid(P_PID, static_cast<id_t>(number), &info, WEXITED | WNOWAIT);
        }) {}
  ~Process() { End(); }

  // Becomes readable when the program has ended; -1 where the system has no such thing.
  int WatchDescriptor() const { return watch_.Descriptor(); }
  bool HasEnded() const {
    siginfo_t info = {};
    return waitid(P_PID, static_cast<id_t>(number_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == number_;
  }
  // Kills what still runs. Returns how the program ended.
  int End() {
    if (!killing_) return status_;
    kill(-number_, SIGKILL);
    killing_.reset();  // another process may get the number once this one is reaped
    while (waitpid(number_, &status_, 0) < 0 && errno == EINTR) continue;
    return status_;
  }

 private:
  pid_t number_;
  File watch_;
  std::optional<InterruptAction> killing_;
  int status_ = 0;
};

std::uint64_t SizeOf(const fs::path& directory) {
  std::uint64_t size = 0;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;
    if (entry->symlink_status(gone).type() == fs::file_type::regular) {
      const std::uintmax_t bytes = entry->file_size(gone);
      if (!gone) size += bytes;
    }
    size += kSizeOfNoFile;
  }
  return size;
}

// The end of what the program prints as errors.
class ErrorText {
 public:
  explicit ErrorText(int descriptor) : file_(descriptor) { fcntl(descriptor, F_SETFL, O_NONBLOCK); }

  // Waits for more, for the end of the program or a while. Reads one block at most, so that time is looked at.
  void Wait(const Process& process) {
    pollfd entries[] = {{file_.Descriptor(), POLLIN, 0}, {process.WatchDescriptor(), POLLIN, 0}};
    poll(entries, std::size(entries), static_cast<int>(kLookEvery.count()));
    Read();
  }
  void Read() {
    char block[65536];
    const ssize_t count = file_.Descriptor() < 0 ? 0 : read(file_.Descriptor(), block, sizeof block);
    if (count > 0) text_.append(block, static_cast<std::size_t>(count));
    if (text_.size() > kErrorsKept) text_.erase(0, text_.size() - kErrorsKept);
    if (count == 0) file_.Close();
  }
  std::string LastLine() const {
    const std::size_t last = text_.find_last_not_of("\r\n \t");
    if (last == std::string::npos) return {};
    const std::size_t before = text_.find_last_of("\r\n", last);
    return text_.substr(before + 1, last - before);
  }

 private:
  File file_;
  std::string text_;
};

std::string TimeReason(const ImportCall& call) {
  return fmt::format("reading took longer than its limit of {} s", call.timeout.count());
}

std::string SizeReason(const ImportCall& call) {
  return fmt::format("what was read takes more than its limit of {} MiB", call.largestSize >> 20);
}

// Waits for the end, and says which limit was passed before it came.
std::optional<std::string> WaitForEnd(const ImportCall& call, const Process& process, ErrorText& errors) {
  const Clock::time_point deadline = Clock::now() + call.timeout;
  Clock::time_point lookAt = Clock::now();
  while (!process.HasEnded()) {
    errors.Wait(process);
    const Clock::time_point now = Clock::now();
    if (now >= deadline) return TimeReason(call);
    if (now < lookAt) continue;
    if (SizeOf(call.directory) > call.largestSize) return SizeReason(call);
    lookAt = now + kLookEvery;
  }
  errors.Read();
  if (SizeOf(call.directory) > call.largestSize) return SizeReason(call);
  return std::nullopt;
}

std::optional<std::string> ReasonOf(const ImportCall& call, int status, const ErrorText& errors) {
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    if (number == SIGXCPU) return TimeReason(call);
    if (number == SIGXFSZ) return SizeReason(call);
    const char* const name = sigabbrev_np(number);
    return fmt::format("the importer crashed (SIG{})", name ? name : std::to_string(number));
  }
  if (WEXITSTATUS(status) == 0) return std::nullopt;
  const std::string line = PlainLine(errors.LastLine());
  return line.empty() ? fmt::format("the importer failed with exit code {}", WEXITSTATUS(status)) : line;
}

}  // namespace

std::optional<std::string> RunImporter(const ImportCall& call) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::strerror(errno);
  ErrorText errors(ends[0]);
  File writingEnd(ends[1]);
  std::optional<Process> process;
  try {
    process.emplace(Start(call, writingEnd.Descriptor()));
  } catch (const std::system_error& error) {
    return fmt::format("can't run {}: {}", call.program.string(), error.code().message());
  }
  writingEnd.Close();
  const std::optional<std::string> passedLimit = WaitForEnd(call, *process, errors);
  const int status = process->End();
  return passedLimit ? passedLimit : ReasonOf(call, status, errors);
}

std::string PlainLine(std::string text) {
  text = WithoutControls(std::move(text));
  if (text.size() <= kLongestLine) return text;
  std::size_t end = kLongestLine;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;  // not within a character
  return text.substr(0, end) + "...";
}

}  // namespace readers
