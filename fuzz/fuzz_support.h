// What the harnesses share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// The entry of libFuzzer: 0 for input that may enter the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// Ends the program as a finding when the law is broken.
void Require(bool holds, const std::string& law);

// A folder of this process below $TMPDIR, empty at first; it goes with the process.
const std::filesystem::path& Folder();

void WriteFile(const std::filesystem::path& file, std::string_view bytes);

// The input as texts: cut at each line "--- ", which goes. As many as asked for; what is missing is empty, and
// what is behind the last cut belongs to the last one.
std::vector<std::string_view> Pieces(const std::uint8_t* data, std::size_t size, std::size_t count);

// An error is one line that begins with the file, and says more than that.
void RequirePlace(const std::exception& error, const std::filesystem::path& file);

}  // namespace fuzz
