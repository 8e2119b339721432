#include "importer/sandbox.h"

#include <linux/capability.h>
#include <linux/landlock.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define VORNEL_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VORNEL_ADDRESS_SANITIZER
#endif
#endif

namespace importer {
namespace {

namespace fs = std::filesystem;

constexpr rlim_t kOpenFiles = 64;

void Limit(int resource, rlim_t soft, rlim_t hard) {
  rlimit old = {};
  getrlimit(static_cast<__rlimit_resource_t>(resource), &old);
  // One that is lower already stays: it can't be raised, and the call would fail as a whole.
  const rlimit limit = {std::min(soft, old.rlim_max), std::min(hard, old.rlim_max)};
  setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

// Landlock's record as kernels of today know it; an older one takes it when what it doesn't know is zero.
struct LandlockRules {
  std::uint64_t files;    // kinds of access that are refused unless a rule allows them
  std::uint64_t network;  // since version 4
  std::uint64_t scopes;   // since version 6
};

constexpr std::uint64_t kBindAndConnect = 3;
constexpr std::uint64_t kSocketsAndSignals = 3;
constexpr std::uint64_t kTruncate = 1 << 14;

// All kinds of access that a version of Landlock knows.
LandlockRules AllAccess(long version) {
  static constexpr std::pair<long, int> kBits[] = {{5, 16}, {3, 15}, {2, 14}, {1, 13}};
  LandlockRules rules = {};
  for (const auto& [since, bits] : kBits) {
    if (version < since) continue;
    rules.files = (std::uint64_t{1} << bits) - 1;
    break;
  }
  if (version >= 4) rules.network = kBindAndConnect;
  if (version >= 6) rules.scopes = kSocketsAndSignals;
  return rules;
}

bool AllowBelow(int rules, const fs::path& path, std::uint64_t access) {
  const int place = open(path.c_str(), O_PATH | O_CLOEXEC);
  if (place < 0) return false;
  landlock_path_beneath_attr rule = {};
  rule.allowed_access = access;
  rule.parent_fd = place;
  const long failed = syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
  close(place);
  return failed == 0;
}

// The system calls of memory, files, time and the process's own end. A file can be opened only where the guard of
// files lets it be.
constexpr const char* kAllowedCalls[] = {
    "access",      "brk",         "clock_getres", "clock_gettime",  "close",        "exit",
    "exit_group",  "faccessat",   "faccessat2",   "fadvise64",      "fcntl",        "fstat",
    "fstatfs",     "fsync",       "ftruncate",    "futex",          "getcwd",       "getdents64",
    "getpid",      "getrandom",   "getrusage",    "gettid",         "gettimeofday", "getuid",
    "lseek",       "lstat",       "madvise",      "mkdir",          "mkdirat",      "mremap",
    "munmap",      "newfstatat",  "open",         "openat",         "pread64",      "pwrite64",
    "read",        "readlink",    "readlinkat",   "readv",          "rename",       "renameat",
    "renameat2",   "rseq",        "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sched_getaffinity",
    "sched_yield", "sigaltstack", "stat",         "statfs",         "statx",        "sysinfo",
    "time",        "uname",       "unlink",       "unlinkat",       "write",        "writev",
};

// False when the filter can't hold the rule. A call that this kind of machine doesn't have is no fault.
template <class... Conditions>
bool Allow(scmp_filter_ctx filter, const char* name, Conditions... conditions) {
  const int call = seccomp_syscall_resolve_name(name);
  return call < 0 || seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...) == 0;
}

bool AllowCalls(scmp_filter_ctx filter) {
  for (const char* name : kAllowedCalls)
    if (!Allow(filter, name)) return false;
  // No memory becomes code.
  const scmp_arg_cmp notCode = {2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0};
  for (const char* name : {"mmap", "mprotect"})
    if (!Allow(filter, name, notCode)) return false;
#ifdef VORNEL_ADDRESS_SANITIZER  // it looks through a pipe whether memory can be read
  if (!Allow(filter, "pipe") || !Allow(filter, "pipe2")) return false;
#endif
  // abort() sends the process a signal; limits may be asked for and not set.
  const scmp_arg_cmp toItself = {0, SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid()), 0};
  const scmp_arg_cmp noNewLimit = {2, SCMP_CMP_EQ, 0, 0};
  return Allow(filter, "tgkill", toItself) && Allow(filter, "prlimit64", noNewLimit);
}

}  // namespace

void CutTies() {
  if (close_range(STDERR_FILENO + 1, ~0u, 0) != 0) {
    const long count = sysconf(_SC_OPEN_MAX);
    for (int file = STDERR_FILENO + 1; file < count; ++file) close(file);
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  prctl(PR_SET_DUMPABLE, 0);
}

void SetLimits(const SandboxLimits& limits) {
  // The command may have lowered its own.
  Limit(RLIMIT_DATA, RLIM_INFINITY, RLIM_INFINITY);
#ifndef VORNEL_ADDRESS_SANITIZER  // it maps terabytes that it never touches
  Limit(RLIMIT_AS, limits.memory, limits.memory);
#endif
  Limit(RLIMIT_CPU, limits.seconds, limits.seconds + 1);
  Limit(RLIMIT_FSIZE, limits.memory, limits.memory);
  Limit(RLIMIT_CORE, 0, 0);
  Limit(RLIMIT_NOFILE, kOpenFiles, kOpenFiles);
  Limit(RLIMIT_NPROC, 0, 0);
}

bool EnterOwnNetwork() {
  // Root needs no user namespace, in which it would lose the right to read other users' files.
  constexpr int kSpaces = CLONE_NEWNET | CLONE_NEWIPC;
  return unshare(kSpaces) == 0 || unshare(CLONE_NEWUSER | kSpaces) == 0;
}

bool MountReadOnly(const SandboxPaths& paths) {
  if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  const char* directory = paths.directory.c_str();
  if (mount(directory, directory, nullptr, MS_BIND, nullptr) != 0) return false;
  struct mount_attr readOnly = {};
  readOnly.attr_set = MOUNT_ATTR_RDONLY;
  struct mount_attr writable = {};
  writable.attr_clr = MOUNT_ATTR_RDONLY;
  return syscall(SYS_mount_setattr, AT_FDCWD, "/", AT_RECURSIVE, &readOnly, sizeof readOnly) == 0 &&
         syscall(SYS_mount_setattr, AT_FDCWD, directory, 0, &writable, sizeof writable) == 0;
}

bool RestrictByLandlock(const SandboxPaths& paths) {
  const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return false;
  const LandlockRules all = AllAccess(version);
  const auto rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &all, sizeof all, 0));
  if (rules < 0) return false;
  constexpr std::uint64_t kRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
  const std::uint64_t write =
      (LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE | kTruncate) &
      all.files;
  const fs::path folder = paths.input.has_parent_path() ? paths.input.parent_path() : ".";
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  // The input by itself too: it may be a link that leads out of its folder.
  const bool restricted =
      AllowBelow(rules, folder, kRead) && AllowBelow(rules, paths.input, LANDLOCK_ACCESS_FS_READ_FILE) &&
      AllowBelow(rules, paths.directory, kRead | write) && syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  close(rules);
  return restricted;
}

void DropPrivileges() {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  // Root goes on reading files that aren't its own, as it does in the command.
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
  __user_cap_data_struct held[_LINUX_CAPABILITY_U32S_3] = {};
  if (syscall(SYS_capget, &header, held) != 0) return;
  data[0].effective = data[0].permitted = held[0].permitted & (1u << CAP_DAC_READ_SEARCH);
  syscall(SYS_capset, &header, data);
}

bool FilterSystemCalls() {
  // As from a kernel that lacks the call: libraries then fall back to others.
  const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(seccomp_init(SCMP_ACT_ERRNO(ENOSYS)),
                                                                seccomp_release);
  return filter && AllowCalls(filter.get()) && seccomp_load(filter.get()) == 0;
}

Guards Confine(const SandboxPaths& paths, const SandboxLimits& limits) {
  Guards guards;
  CutTies();
  guards.ownNetwork = EnterOwnNetwork();
  if (RestrictByLandlock(paths))
    guards.files = FileGuard::Landlock;
  else if (MountReadOnly(paths))
    guards.files = FileGuard::ReadOnlyMounts;
  DropPrivileges();
  SetLimits(limits);
  guards.callFilter = FilterSystemCalls();
  return guards;
}

}  // namespace importer
