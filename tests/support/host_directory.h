// A temporary directory whose files have paths in the host's form.
#pragma once

#include "tests/support/temp_directory.h"

#include <algorithm>
#include <fstream>

namespace test_support {

class HostDirectory : public TempDirectory {
 public:
  std::filesystem::path operator/(const std::string& name) const { return Path() / name; }

  // The path of a file in the directory, with backslashes.
  std::string HostPath(const std::string& name) const {
    std::string path = (Path() / name).string();
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
  }

  // Writes a file, with its directories, and returns its host path.
  std::string WriteFile(const std::string& name, const std::string& contents) const {
    std::filesystem::create_directories((Path() / name).parent_path());
    std::ofstream(Path() / name, std::ios::binary) << contents;
    return HostPath(name);
  }
};

}  // namespace test_support
