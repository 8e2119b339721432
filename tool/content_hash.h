// Tells whether a file still holds what it held.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tool {

// The 128-bit XXH3 hash of a regular file's bytes, as 32 hexadecimal digits; none for a file that isn't there,
// can't be read or isn't regular. It finds changes; it isn't made to withstand someone who looks for two files of
// one hash.
std::optional<std::string> HashContent(const std::filesystem::path& file);

}  // namespace tool
