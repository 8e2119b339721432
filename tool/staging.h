// A fresh directory beside the target that an export is written into, so that nothing half-written ever stands
// under the target's name.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

// True for two files of the same bytes.
bool HaveSameBytes(const std::filesystem::path& one, const std::filesystem::path& other);

class Staging {
 public:
  // Makes the directory in that of `target`. Throws OutputError when the target is a directory or nothing can be
  // written there. Its contents are removed when it goes, and on SIGINT, SIGTERM and SIGHUP.
  explicit Staging(const std::filesystem::path& target);
  ~Staging();
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;

  // Where to write.
  std::filesystem::path Directory() const { return directory_ / "new"; }

  // Moves every file of that directory beside the target, the target itself last, replacing what stands there. A
  // file beside the target that holds the very same bytes is left alone: it may be the source of the copy. When a
  // move fails the files moved before are put back as they were, and OutputError is thrown. Returns the files in
  // place.
  std::vector<std::filesystem::path> MoveIntoPlace() const;

 private:
  std::filesystem::path target_;
  std::filesystem::path directory_;  // holds new/ and old/, whose files can't be in each other's way
};

}  // namespace tool
