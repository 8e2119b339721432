#include "tool/input_check.h"

#include "tool/output_error.h"

#include <system_error>

namespace tool {

namespace fs = std::filesystem;

void CheckInputStays(const fs::path& input, const std::vector<fs::path>& read,
                     const std::vector<fs::path>& written) {
  std::vector<fs::path> sources = read;
  sources.push_back(input);
  for (const fs::path& target : written)
    for (const fs::path& source : sources) {
      std::error_code none;
      if (fs::equivalent(target, source, none))
        throw OutputError(target.string() + ": would be written over, but the scene is read from it");
    }
}

}  // namespace tool
