// What a confined process can't do any more, each tried in a forked one.
#include "importer/sandbox.h"

#include "tests/support/temp_directory.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr importer::SandboxLimits kLimits = {std::uint64_t{256} << 20, 5};
constexpr int kSkipped = 200;

class Sandbox : public testing::Test {
 protected:
  Sandbox() {
    for (const char* folder : {"in", "in/below", "private", "elsewhere"}) fs::create_directory(Path(folder));
    for (const char* file : {"in/model", "in/below/part", "elsewhere/secret", "private/own"})
      std::ofstream(Path(file)) << "text";
    fs::create_symlink(Path("elsewhere/secret"), Path("in/link"));
    paths_ = {Path("in/model"), Path("private")};
  }

  std::string Path(const std::string& name) const { return (directory_.Path() / name).string(); }

  // How a process ended that did this, as a shell says it.
  static int Run(const std::function<int()>& action) {
    const pid_t process = fork();
    if (process == 0) _exit(action());
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  int RunConfined(const std::function<bool()>& action) const {
    return Run([&] {
      Confine(paths_, kLimits);
      return action() ? 1 : 0;
    });
  }

  test_support::TempDirectory directory_;
  importer::SandboxPaths paths_;
};

bool CanOpen(const std::string& file, int flags) {
  const int descriptor = open(file.c_str(), flags, 0600);
  if (descriptor >= 0) close(descriptor);
  return descriptor >= 0;
}

TEST_F(Sandbox, ReadsTheInputAndWritesThePrivateDirectory) {
  EXPECT_EQ(1, RunConfined([&] {
              return CanOpen(Path("in/model"), O_RDONLY) && CanOpen(Path("in/below/part"), O_RDONLY) &&
                     CanOpen(Path("private/new"), O_RDWR | O_CREAT) &&
                     CanOpen(Path("private/own"), O_WRONLY | O_TRUNC) &&
                     unlink(Path("private/own").c_str()) == 0 && !fs::is_empty(Path("in"));
            }));
  EXPECT_TRUE(fs::exists(Path("private/new")));
  // A link is the input itself here.
  paths_.input = Path("in/link");
  EXPECT_EQ(1, RunConfined([&] { return CanOpen(Path("in/link"), O_RDONLY); }));
}

TEST_F(Sandbox, NoOtherFileIsReached) {
  if (Run([&] { return importer::RestrictByLandlock(paths_) ? 1 : 0; }) == 0)
    GTEST_SKIP() << "THIS KERNEL HAS NO LANDLOCK: its guard of files is not tested";
  const std::string secret = Path("elsewhere/secret");
  const std::pair<const char*, std::function<bool()>> kTries[] = {
      {"read elsewhere", [&] { return CanOpen(secret, O_RDONLY); }},
      {"read a system file", [&] { return CanOpen("/etc/passwd", O_RDONLY); }},
      {"read by a link", [&] { return CanOpen(Path("in/link"), O_RDONLY); }},
      {"list a folder", [&] { return CanOpen(Path("elsewhere"), O_RDONLY | O_DIRECTORY); }},
      {"write elsewhere", [&] { return CanOpen(secret, O_WRONLY); }},
      {"write the input", [&] { return CanOpen(Path("in/model"), O_WRONLY); }},
      {"truncate the input", [&] { return truncate(Path("in/model").c_str(), 0) == 0; }},
      {"make a file", [&] { return CanOpen(Path("elsewhere/new"), O_WRONLY | O_CREAT); }},
      {"make a file beside the input", [&] { return CanOpen(Path("in/new"), O_WRONLY | O_CREAT); }},
      {"remove a file", [&] { return unlink(secret.c_str()) == 0; }},
      {"move a file out", [&] { return rename(Path("private/own").c_str(), Path("in/own").c_str()) == 0; }},
      {"make a link", [&] { return symlink(secret.c_str(), Path("private/l").c_str()) == 0; }},
      {"make another name", [&] { return link(secret.c_str(), Path("private/l").c_str()) == 0; }},
      {"make a folder", [&] { return mkdir(Path("private/f").c_str(), 0700) == 0; }},
      {"make a pipe", [&] { return mkfifo(Path("private/p").c_str(), 0600) == 0; }},
  };
  for (const auto& [name, action] : kTries) {
    EXPECT_EQ(1, Run([&tried = action] { return tried() ? 1 : 0; }))
        << name << ": can't be done without a sandbox either";
    for (const char* made : {"elsewhere/new", "in/new", "in/own", "private/l", "private/f", "private/p"})
      fs::remove(Path(made));
    for (const char* file : {"elsewhere/secret", "private/own", "in/model"}) std::ofstream(Path(file)) << "text";
    EXPECT_EQ(0, RunConfined(action)) << name;
  }
}

TEST_F(Sandbox, NoSystemCallBeyondFilesAndMemory) {
  if (Run([&] { return Confine(paths_, kLimits).callFilter ? 1 : 0; }) == 0)
    GTEST_SKIP() << "THIS KERNEL HAS NO FILTER OF SYSTEM CALLS: it is not tested";
  const pid_t parent = getpid();
  const std::pair<const char*, std::function<bool()>> kTries[] = {
      {"internet socket", [] { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
      {"local socket", [] { return socket(AF_UNIX, SOCK_DGRAM, 0) >= 0; }},
      {"socket pair",
       [] {
         int ends[2];
         return socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0;
       }},
      {"new process",
       [] {
         const pid_t process = fork();
         if (process == 0) _exit(0);
         return process > 0;
       }},
      {"debugger", [] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0; }},
      {"signal to another process", [=] { return kill(parent, 0) == 0; }},
      {"code in memory",
       [] {
         return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
       }},
      {"other limits",
       [] {
         const rlimit limit = {8, 8};
         return setrlimit(RLIMIT_NOFILE, &limit) == 0;
       }},
      {"other rights", [&] { return chmod(Path("private/own").c_str(), 0777) == 0; }},
  };
  for (const auto& [name, action] : kTries) {
    EXPECT_EQ(1, Run([&tried = action] { return tried() ? 1 : 0; }))
        << name << ": can't be done without a sandbox either";
    EXPECT_EQ(0, RunConfined(action)) << name;
  }
  EXPECT_EQ(0, RunConfined([] { return execl("/bin/true", "true", nullptr) != -1; })) << "another program";
  EXPECT_EQ(128 + SIGABRT, RunConfined([]() -> bool { std::abort(); }));
}

TEST_F(Sandbox, WithoutLandlockMountsAreReadOnly) {
  const auto action = [&] {
    if (!MountReadOnly(paths_)) return kSkipped;
    importer::DropPrivileges();
    return !CanOpen(Path("elsewhere/secret"), O_WRONLY) && !CanOpen(Path("in/new"), O_WRONLY | O_CREAT) &&
                   CanOpen(Path("in/model"), O_RDONLY) && CanOpen(Path("private/new"), O_WRONLY | O_CREAT)
               ? 1
               : 0;
  };
  const int result = Run(action);
  if (result == kSkipped) GTEST_SKIP() << "NO MOUNT NAMESPACE IS TO BE HAD HERE: it is not tested";
  EXPECT_EQ(result, 1);
  EXPECT_TRUE(fs::exists(Path("private/new")));
}

TEST_F(Sandbox, WithoutAFilterTheNetworkIsEmpty) {
  const int result = Run([] {
    if (!importer::EnterOwnNetwork()) return kSkipped;
    const int handle = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq loopback = {};
    loopback.ifr_name[0] = 'l', loopback.ifr_name[1] = 'o';
    return ioctl(handle, SIOCGIFFLAGS, &loopback) == 0 && (loopback.ifr_flags & IFF_UP) == 0 ? 1 : 0;
  });
  if (result == kSkipped) GTEST_SKIP() << "NO NETWORK NAMESPACE IS TO BE HAD HERE: it is not tested";
  EXPECT_EQ(result, 1);
}

TEST_F(Sandbox, NoFileIsInherited) {
  EXPECT_EQ(0, RunConfined([&] {
              for (int file = STDERR_FILENO + 1; file < 256; ++file)
                if (fcntl(file, F_GETFD) >= 0) return true;
              return false;
            }));
}

TEST_F(Sandbox, LimitsHold) {
#ifndef VORNEL_SANITIZED
  EXPECT_EQ(0, RunConfined([] { return std::malloc(kLimits.memory) != nullptr; }));
  EXPECT_EQ(1, RunConfined([] { return std::malloc(kLimits.memory / 2) != nullptr; }));
#endif
  EXPECT_EQ(128 + SIGXCPU, Run([&] {
              Confine(paths_, {kLimits.memory, 1});
              while (getpid() > 0) continue;
              return 0;
            }));
  EXPECT_EQ(128 + SIGXFSZ, Run([&] {
              Confine(paths_, kLimits);
              const int file = open(Path("private/big").c_str(), O_WRONLY | O_CREAT, 0600);
              return static_cast<int>(pwrite(file, "x", 1, static_cast<off_t>(kLimits.memory)));
            }));
  EXPECT_EQ(0, RunConfined([&] {
              int count = 0;
              while (open(Path("in/model").c_str(), O_RDONLY) >= 0) ++count;
              return count > 100;
            }));
}

}  // namespace
