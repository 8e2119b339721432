// Staging directories that killed runs left.
//
//   .vornel-XXXXXX/
//     lock      locked as long as the run lives
//     new/      the files of the export
//     old/      what stood in their places, by number of the move
//     journal   the moves of several files, from just before the first one to just after the last one
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

inline constexpr char kStagingPrefix[] = ".vornel-";

// A file that goes from new/ to beside the staging directory.
struct JournalMove {
  std::string name;
  std::uint64_t inode = 0;  // of the new file; together with its size and time it tells it from other files
  std::uint64_t size = 0;
  std::int64_t changed = 0;  // nanoseconds
  bool hasOld = false;
};

// What is in a directory, in no order. Throws std::filesystem::filesystem_error. (A directory_iterator ends the
// program when it finds no memory.)
std::vector<std::filesystem::path> ListFolder(const std::filesystem::path& folder);

// Notes the moves of a staging directory, in their order, on the disk. Throws std::filesystem::filesystem_error.
void WriteJournal(const std::filesystem::path& directory, std::vector<JournalMove> moves);

// Makes and locks the lock of a new staging directory; -1 when that failed or another run took the directory for a
// leftover meanwhile. The lock ends with the process, however that ends.
int LockStaging(const std::filesystem::path& directory);

// Removes a staging directory, its lock last: without it the directory could not be told from that of a living
// run. What can't be removed stays.
void RemoveStaging(const char* directory) noexcept;

// Removes the staging directories in `parent` whose runs are gone. A run that was killed while it moved several
// files is undone. Returns the files that were put back so; what can't be removed stays.
std::vector<std::filesystem::path> ClearLeftovers(const std::filesystem::path& parent);

}  // namespace tool
