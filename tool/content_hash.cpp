#include "tool/content_hash.h"

#include <fmt/core.h>

#include <cstdio>
#include <memory>
#include <system_error>
#include <vector>
#include <xxhash.h>

namespace tool {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

}  // namespace

std::optional<std::string> HashContent(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return std::nullopt;  // a pipe would never end
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"), std::fclose);
  if (!stream) return std::nullopt;
  const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(XXH3_createState(), XXH3_freeState);
  if (!state || XXH3_128bits_reset(state.get()) == XXH_ERROR) return std::nullopt;
  std::vector<char> block(kBlock);
  for (std::size_t count; (count = std::fread(block.data(), 1, block.size(), stream.get())) > 0;)
    XXH3_128bits_update(state.get(), block.data(), count);
  if (std::ferror(stream.get())) return std::nullopt;
  const XXH128_hash_t hash = XXH3_128bits_digest(state.get());
  return fmt::format("{:016x}{:016x}", hash.high64, hash.low64);
}

}  // namespace tool
