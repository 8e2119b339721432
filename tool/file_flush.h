// Puts files on the disk.
#pragma once

#include <filesystem>

namespace tool {

// Waits until a file's bytes, or the names in a directory, are on the disk. Throws
// std::filesystem::filesystem_error. Does nothing where the file system can't flush.
void FlushToDisk(const std::filesystem::path& fileOrDirectory);

}  // namespace tool
