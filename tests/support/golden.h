// Whole expected files. With VORNEL_UPDATE_GOLDENS=1 in the environment they are rewritten instead of compared.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace test_support {

// Where two files differ first: the byte, and what stands there in both (text in JSON, else bytes). Nothing when
// they are equal. The name decides how a file is read: .glb, or text.
std::optional<std::string> FindDifference(const std::string& name, std::string_view expected,
                                          std::string_view actual);

// Compares with the file, or rewrites it. The difference, with the file's name.
std::optional<std::string> CompareWithGolden(const std::filesystem::path& golden, std::string_view actual);

}  // namespace test_support
