#include "fuzz/fuzz_support.h"

#include "tests/support/temp_directory.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace fuzz {

void Require(bool holds, const std::string& law) {
  if (holds) return;
  std::fprintf(stderr, "broken law: %s\n", law.c_str());
  std::abort();
}

const std::filesystem::path& Folder() {
  static const test_support::TempDirectory directory;
  return directory.Path();
}

void WriteFile(const std::filesystem::path& file, std::string_view bytes) {
  std::ofstream stream(file, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  Require(static_cast<bool>(stream.flush()), file.string() + " can be written");
}

std::vector<std::string_view> Pieces(const std::uint8_t* data, std::size_t size, std::size_t count) {
  constexpr std::string_view kCut = "\n--- \n";
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  std::vector<std::string_view> pieces(count);
  for (std::size_t piece = 0; piece < count; ++piece) {
    const std::size_t cut = piece + 1 < count ? rest.find(kCut) : std::string_view::npos;
    pieces[piece] = rest.substr(0, cut);
    rest.remove_prefix(cut == std::string_view::npos ? rest.size() : cut + kCut.size());
  }
  return pieces;
}

void RequirePlace(const std::exception& error, const std::filesystem::path& file) {
  const std::string text = error.what();
  const std::string name = file.string() + ":";
  Require(text.starts_with(name) && text.size() > name.size() + 1, "an error names file and reason: " + text);
  Require(text.find('\n') == std::string::npos, "an error is one line: " + text);
}

}  // namespace fuzz
