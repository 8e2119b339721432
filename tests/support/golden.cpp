#include "tests/support/golden.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace test_support {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kGlbHeader = 20;  // up to the text
constexpr std::size_t kShownText = 60;  // on both sides of the difference
constexpr std::size_t kShownBytes = 8;

std::size_t TextEnd(const std::string& name, std::string_view file) {
  if (!name.ends_with(".glb")) return name.ends_with(".bin") ? 0 : file.size();
  if (file.size() < kGlbHeader) return 0;
  std::size_t length = 0;
  for (std::size_t byte = 4; byte-- > 0;) length = length << 8 | static_cast<unsigned char>(file[12 + byte]);
  return std::min(kGlbHeader + length, file.size());
}

std::string Excerpt(std::string_view file, std::size_t at, std::size_t textBegin, std::size_t textEnd) {
  if (at >= file.size()) return "the end of the file";
  if (at >= textBegin && at < textEnd) {
    const std::size_t begin = std::max(textBegin, at - std::min(at, kShownText));
    const std::size_t end = std::min(textEnd, at + kShownText);
    return std::string(file.substr(begin, at - begin)) + " >>> " + std::string(file.substr(at, end - at));
  }
  std::string bytes;
  for (const char byte : file.substr(at, kShownBytes)) {
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X ", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    bytes += hex;
  }
  return bytes;
}

bool UpdatesGoldens() {
  const char* update = std::getenv("VORNEL_UPDATE_GOLDENS");
  return update && std::string_view(update) == "1";
}

}  // namespace

std::optional<std::string> FindDifference(const std::string& name, std::string_view expected,
                                          std::string_view actual) {
  if (expected == actual) return std::nullopt;
  const auto [at, other] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const auto place = static_cast<std::size_t>(at - expected.begin());
  const std::size_t textBegin = name.ends_with(".glb") ? kGlbHeader : 0;
  const auto side = [&](std::string_view file) { return Excerpt(file, place, textBegin, TextEnd(name, file)); };
  return name + " differs at byte " + std::to_string(place) + " (" + std::to_string(expected.size()) +
         " bytes expected, " + std::to_string(actual.size()) + " written)\n  expected: " + side(expected) +
         "\n  written:  " + side(actual);
}

std::optional<std::string> CompareWithGolden(const fs::path& golden, std::string_view actual) {
  if (UpdatesGoldens()) {
    std::ofstream stream(golden, std::ios::binary);
    stream.write(actual.data(), static_cast<std::streamsize>(actual.size()));
    return stream.flush() ? std::nullopt : std::optional(golden.string() + " can't be written");
  }
  std::ifstream stream(golden, std::ios::binary);
  if (!stream) return golden.string() + " is missing; VORNEL_UPDATE_GOLDENS=1 writes it";
  const std::string expected{std::istreambuf_iterator<char>(stream), {}};
  return FindDifference(golden.filename().string(), expected, actual);
}

}  // namespace test_support
