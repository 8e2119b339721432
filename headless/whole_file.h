// Small files, read and written as a whole.
#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace headless {

// what() is one line with the file and the reason.
class ReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
class WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The bytes of a file. Throws ReadError, also when there are more than `limit`.
std::string ReadSmallFile(const std::filesystem::path& file, std::size_t limit);

// Puts the bytes under the name in one step, so that the file is the old one or the new one, whole, whatever
// happens. A link is followed, the permissions of an old file stay, and what isn't a regular file is refused.
// Throws WriteError; the old file stands then.
void WriteFileAtomically(const std::filesystem::path& file, std::string_view bytes);

}  // namespace headless
