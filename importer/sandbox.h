// Confines the process that parses foreign files, before it opens any. A parser that a file takes over can then
// read the file's folder and fill a private directory, and nothing else.
//
// Each step gives false where the kernel lacks it or an administrator has turned it off; Confine falls back to the
// next best. docs/architecture.md says what is guaranteed where.
#pragma once

#include <cstdint>
#include <filesystem>

namespace importer {

struct SandboxPaths {
  std::filesystem::path input;      // can be read, as can all below its folder
  std::filesystem::path directory;  // can be read, and files can be made in it and below
};

struct SandboxLimits {
  std::uint64_t memory = 0;   // bytes of address space, and of each file that is written
  std::uint64_t seconds = 0;  // of processor time
};

enum class FileGuard {
  None,            // all that the user may do
  ReadOnlyMounts,  // writes as wanted, reads as the user may
  Landlock,        // reads and writes as wanted
};

struct Guards {
  FileGuard files = FileGuard::None;
  bool ownNetwork = false;  // in a network namespace that holds no interface
  bool callFilter = false;  // refuses all system calls but those for files and memory
};

// Takes all the steps below; there is one thread and no open file that is needed but the standard streams.
Guards Confine(const SandboxPaths& paths, const SandboxLimits& limits);

// No file handle is inherited, and the process ends with the one that started it. Nobody can debug it.
void CutTies();
// Also no core dump, no new process (of a user other than root) and few open files.
void SetLimits(const SandboxLimits& limits);
bool EnterOwnNetwork();
bool MountReadOnly(const SandboxPaths& paths);
bool RestrictByLandlock(const SandboxPaths& paths);
void DropPrivileges();
bool FilterSystemCalls();

}  // namespace importer
