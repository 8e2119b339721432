// System calls on files, one of which fails when told so. A seccomp filter makes those that come from the C
// library a signal, so that what happens inside of it is met too: what fclose() writes, what opendir() opens.
#include "tests/support/fault_state.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <link.h>
#include <ucontext.h>
#include <unistd.h>
#include <vector>

namespace test_support {
namespace {

using Arguments = std::array<long, 6>;

enum class Names { Descriptor, Path, PathAt };  // how the first arguments say which file

struct Call {
  long number;
  const char* name;
  Names names;
  int place;        // of the argument that says which file
  int lengthPlace;  // of the argument that says how many bytes, -1 for none
};

constexpr Call kCalls[] = {
    {SYS_open, "open", Names::Path, 0, -1},           {SYS_openat, "open", Names::PathAt, 0, -1},
    {SYS_read, "read", Names::Descriptor, 0, 2},      {SYS_pread64, "read", Names::Descriptor, 0, 2},
    {SYS_readv, "read", Names::Descriptor, 0, -1},    {SYS_getdents64, "read", Names::Descriptor, 0, -1},
    {SYS_write, "write", Names::Descriptor, 0, 2},    {SYS_pwrite64, "write", Names::Descriptor, 0, 2},
    {SYS_writev, "write", Names::Descriptor, 0, -1},  {SYS_copy_file_range, "write", Names::Descriptor, 2, 4},
    {SYS_sendfile, "write", Names::Descriptor, 0, 3}, {SYS_lseek, "seek", Names::Descriptor, 0, -1},
    {SYS_fsync, "fsync", Names::Descriptor, 0, -1},   {SYS_ftruncate, "truncate", Names::Descriptor, 0, -1},
    {SYS_flock, "flock", Names::Descriptor, 0, -1},   {SYS_close, "close", Names::Descriptor, 0, -1},
    {SYS_mmap, "mmap", Names::Descriptor, 4, -1},     {SYS_stat, "stat", Names::Path, 0, -1},
    {SYS_lstat, "stat", Names::Path, 0, -1},          {SYS_fstat, "stat", Names::Descriptor, 0, -1},
    {SYS_newfstatat, "stat", Names::PathAt, 0, -1},   {SYS_statx, "stat", Names::PathAt, 0, -1},
    {SYS_rename, "rename", Names::Path, 1, -1},       {SYS_renameat, "rename", Names::PathAt, 2, -1},
    {SYS_renameat2, "rename", Names::PathAt, 2, -1},  {SYS_link, "link", Names::Path, 1, -1},
    {SYS_linkat, "link", Names::PathAt, 2, -1},       {SYS_mkdir, "mkdir", Names::Path, 0, -1},
    {SYS_mkdirat, "mkdir", Names::PathAt, 0, -1},     {SYS_rmdir, "rmdir", Names::Path, 0, -1},
    {SYS_unlink, "unlink", Names::Path, 0, -1},       {SYS_unlinkat, "unlink", Names::PathAt, 0, -1},
};

// Files of the system are none of an export's.
constexpr const char* kOthers[] = {"/proc/", "/sys/", "/dev/null", "/dev/pts/",  "/etc/",
                                   "/usr/",  "/lib",  "pipe:",     "anon_inode:"};

long Perform(long number, const Arguments& arguments) {
  long result;
  register long fourth asm("r10") = arguments[3];
  register long fifth asm("r8") = arguments[4];
  register long sixth asm("r9") = arguments[5];
  asm volatile("syscall"
               : "=a"(result)
               : "a"(number), "D"(arguments[0]), "S"(arguments[1]), "d"(arguments[2]), "r"(fourth), "r"(fifth),
                 "r"(sixth)
               : "rcx", "r11", "memory");
  return result;
}

const char* PathArgument(long argument) { return reinterpret_cast<const char*>(argument); }  // NOLINT

// Writes the file's path where there is room for it, cut when it is long. Only what a signal handler may do.
void FindPath(const Call& call, const Arguments& arguments, char* path, std::size_t size) {
  const auto at = static_cast<std::size_t>(call.place);
  const char* name = "";
  if (call.names == Names::Path) name = PathArgument(arguments[at]);
  if (call.names == Names::PathAt) name = PathArgument(arguments[at + 1]);
  if (!name) name = "";
  std::size_t used = 0;
  if (call.names != Names::Path && *name != '/') {
    char link[32] = "/proc/self/fd/";
    auto descriptor = static_cast<int>(arguments[at]);
    if (descriptor == AT_FDCWD) {
      std::strcpy(link, "/proc/self/cwd");
    } else {
      char digits[12];
      std::size_t count = 0;
      for (; count == 0 || descriptor > 0; descriptor /= 10)
        digits[count++] = static_cast<char>('0' + descriptor % 10);
      char* end = link + std::strlen(link);
      while (count > 0) *end++ = digits[--count];
      *end = '\0';
    }
    const long length = Perform(
        SYS_readlink, {reinterpret_cast<long>(link), reinterpret_cast<long>(path), static_cast<long>(size) - 1});
    used = length > 0 ? static_cast<std::size_t>(length) : 0;
    if (used > 0 && *name != '\0' && used + 1 < size) path[used++] = '/';
  }
  for (; *name != '\0' && used + 1 < size; ++name) path[used++] = *name;
  path[used] = '\0';
}

bool IsCounted(const Call& call, const Arguments& arguments, const char* path) {
  if (call.names == Names::Descriptor) {
    const long descriptor = static_cast<int>(arguments[static_cast<std::size_t>(call.place)]);
    if (descriptor < 0 || (descriptor <= STDERR_FILENO && call.number != SYS_mmap)) return false;
  }
  for (const char* other : kOthers)
    if (std::strncmp(path, other, std::strlen(other)) == 0) return false;
  return true;
}

// False when the call has no half.
bool Halve(const Call& call, Arguments& arguments, iovec& piece) {
  if (call.lengthPlace >= 0) {
    long& length = arguments[static_cast<std::size_t>(call.lengthPlace)];
    if (length < 2) return false;
    length /= 2;
    return true;
  }
  if (call.number != SYS_writev && call.number != SYS_readv) return false;
  piece = *reinterpret_cast<const iovec*>(arguments[1]);  // NOLINT: the kernel's form
  if (piece.iov_len < 2) return false;
  piece.iov_len /= 2;
  arguments[1] = reinterpret_cast<long>(&piece);
  arguments[2] = 1;
  return true;
}

// What the call gives where it is the one to fail; else it is to be made with the arguments.
bool Fail(const Call& call, Arguments& arguments, iovec& piece, long& result) {
  FaultState* const state = faultState;
  if (!state || !state->active) return false;
  FaultResult& told = state->result;
  char path[sizeof told.path];
  FindPath(call, arguments, path, sizeof path);
  if (!IsCounted(call, arguments, path)) return false;
  const FaultPlan& plan = state->plan;
  const bool isPlace = ++state->calls == plan.place;
  const bool lasts =
      plan.kind == FaultKind::LastingCall && told.hit == 1 && std::strcmp(told.call, call.name) == 0;
  if (!isPlace && !lasts) return false;
  if (plan.kind == FaultKind::ShortCall && !Halve(call, arguments, piece)) return false;
  if (plan.kind == FaultKind::Allocation || plan.kind == FaultKind::Exhaustion) return false;
  if (isPlace) {
    told.hit = 1;
    std::strcpy(told.call, call.name);
    std::memcpy(told.path, path, sizeof path);
  }
  if (plan.kind == FaultKind::ShortCall) return false;
  if (plan.kind == FaultKind::Kill) Perform(SYS_kill, {Perform(SYS_getpid, {}), SIGKILL});
  if (call.number == SYS_close) Perform(call.number, arguments);  // a close that fails has closed all the same
  result = -plan.error;
  return true;
}

void OnCall(int, siginfo_t*, void* context) {
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const long number = registers[REG_RAX];
  Arguments arguments = {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                         registers[REG_R10], registers[REG_R8],  registers[REG_R9]};
  iovec piece{};
  long result = 0;
  bool failed = false;
  for (const Call& call : kCalls)
    if (call.number == number) failed = Fail(call, arguments, piece, result);
  registers[REG_RAX] = failed ? result : Perform(number, arguments);
}

struct Range {
  std::uint64_t begin = 0, end = 0;
};

// Where the C library's code lies.
int FindCode(dl_phdr_info* object, std::size_t, void* found) {
  if (!object->dlpi_name || !std::strstr(object->dlpi_name, "/libc.so.")) return 0;
  for (int place = 0; place < object->dlpi_phnum; ++place) {
    const ElfW(Phdr)& part = object->dlpi_phdr[place];
    if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0) continue;
    const std::uint64_t begin = object->dlpi_addr + part.p_vaddr;
    *static_cast<Range*>(found) = {begin, begin + part.p_memsz};
  }
  return 1;
}

sock_filter Statement(unsigned code, std::uint64_t value) {
  return {static_cast<std::uint16_t>(code), 0, 0, static_cast<std::uint32_t>(value)};
}

sock_filter Jump(unsigned code, std::uint64_t value, std::size_t ifTrue, std::size_t ifFalse) {
  return {static_cast<std::uint16_t>(BPF_JMP | BPF_K | code), static_cast<std::uint8_t>(ifTrue),
          static_cast<std::uint8_t>(ifFalse), static_cast<std::uint32_t>(value)};
}

}  // namespace

bool WatchCalls() {
  Range code;
  dl_iterate_phdr(FindCode, &code);
  // The filter compares halves of an address.
  if (code.begin >> 32 != code.end >> 32 || code.end == 0) return false;
  constexpr std::size_t kCount = std::size(kCalls);
  const unsigned load = BPF_LD | BPF_W | BPF_ABS;
  const std::size_t address = offsetof(seccomp_data, instruction_pointer);
  std::vector<sock_filter> filter = {
      Statement(load, offsetof(seccomp_data, arch)),
      Jump(BPF_JEQ, AUDIT_ARCH_X86_64, 0, kCount + 6),
      Statement(load, address + 4),
      Jump(BPF_JEQ, code.begin >> 32, 0, kCount + 4),
      Statement(load, address),
      Jump(BPF_JGE, code.begin & 0xFFFFFFFFu, 0, kCount + 2),
      Jump(BPF_JGE, code.end & 0xFFFFFFFFu, kCount + 1, 0),
      Statement(load, offsetof(seccomp_data, nr)),
  };
  for (std::size_t place = 0; place < kCount; ++place)
    filter.push_back(Jump(BPF_JEQ, static_cast<std::uint64_t>(kCalls[place].number), kCount - place, 0));
  filter.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  filter.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRAP));

  struct sigaction action = {};
  action.sa_sigaction = OnCall;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  return sigaction(SIGSYS, &action, nullptr) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace test_support
