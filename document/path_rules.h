// Paths in the host's form: only the backslash separates directories, and the last "." of the whole path
// starts the extension, also when it stands in a directory's name.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

// The path before its last ".", the whole path when it has none.
std::string CutExtension(const std::string& path);
// What follows the last ".", the whole path when it has none.
std::string ExtensionOf(const std::string& path);
// What follows the last backslash, the whole path when it has none.
std::string FileNameOf(const std::string& path);

// The path as the operating system takes it. All files of an export are opened under this name.
std::filesystem::path SystemPath(const std::string& path);

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

// Opens a file by its host path, in binary. Null when that fails; throws std::bad_alloc.
FilePtr OpenForReading(const std::string& path);
FilePtr OpenForWriting(const std::string& path);
