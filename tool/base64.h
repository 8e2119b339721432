// Base64 with padding, without line breaks. No library of Debian 12 gives just that.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tool {

std::string EncodeBase64(std::span<const char> bytes);

// None when the text isn't base64. The padding may be missing.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace tool
