// Keeps a command from writing over its own input.
#pragma once

#include <filesystem>
#include <vector>

namespace tool {

// Throws OutputError when one of the files to be written is one that the scene is read from: `input`, or one of
// `read`. Paths that name no file are passed over.
void CheckInputStays(const std::filesystem::path& input, const std::vector<std::filesystem::path>& read,
                     const std::vector<std::filesystem::path>& written);

}  // namespace tool
