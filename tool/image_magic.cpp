#include "tool/image_magic.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <new>
#include <string_view>

namespace tool {
namespace {

using namespace std::string_view_literals;

// A question mark stands for any byte.
constexpr std::string_view kBeginnings[] = {
    "\x89PNG\r\n\x1A\n"sv,         // PNG
    "\xFF\xD8\xFF"sv,              // JPEG
    "GIF87a"sv,                    // GIF
    "GIF89a"sv,                    // GIF
    "BM????\0\0\0\0"sv,            // BMP
    "RIFF????WEBP"sv,              // WebP
    "II*\0"sv,                     // TIFF, low byte first
    "MM\0*"sv,                     // TIFF, high byte first
    "DDS \x7C\0\0\0"sv,            // DDS
    "\xABKTX 20\xBB\r\n\x1A\n"sv,  // KTX2
    "#?RADIANCE"sv,                // HDR
    "#?RGBE"sv,                    // HDR
    "\x76\x2F\x31\x01"sv,          // EXR
    "8BPS"sv,                      // PSD
};
constexpr std::size_t kLongest = 12;

bool BeginsWith(std::string_view bytes, std::string_view beginning) {
  return bytes.size() >= beginning.size() &&
         std::equal(beginning.begin(), beginning.end(), bytes.begin(),
                    [](char wanted, char byte) { return wanted == '?' || wanted == byte; });
}

}  // namespace

bool BeginsLikeImage(const std::filesystem::path& file) {
  std::array<char, kLongest> buffer;
  std::ifstream stream(file, std::ios::binary);
  if (!stream && errno == ENOMEM) throw std::bad_alloc();  // which says nothing about the file
  stream.read(buffer.data(), buffer.size());
  const std::string_view bytes(buffer.data(), static_cast<std::size_t>(stream.gcount()));
  return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                     [bytes](std::string_view beginning) { return BeginsWith(bytes, beginning); });
}

}  // namespace tool
