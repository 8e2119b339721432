// A fresh directory beside the target that an export is written into, so that nothing half-written ever stands
// under the target's name. See tool/leftovers.h for what is in it.
#pragma once

#include "readers/interrupt.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tool {

// True for two files of the same bytes.
bool HaveSameBytes(const std::filesystem::path& one, const std::filesystem::path& other);

class Staging {
 public:
  // Clears what killed runs left in the directory of `target` and makes one there. Throws OutputError when the
  // target is a directory or nothing can be written there. Its contents are removed when it goes, and on an
  // interrupt. `stagedName` is the file's name in staging.
  Staging(const std::filesystem::path& target, std::string stagedName);
  explicit Staging(const std::filesystem::path& target) : Staging(target, target.filename().string()) {}
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;

  // Where to write.
  std::filesystem::path Directory() const { return std::filesystem::path(place_.directory) / "new"; }
  std::filesystem::path File() const { return Directory() / stagedName_; }
  // A line for each file of a killed run that was put back as it had been before it.
  const std::vector<std::string>& Notes() const { return notes_; }

  // Puts what was written to that directory so far on the disk. Throws std::filesystem::filesystem_error.
  void Flush() const;

  // Flushes every file of that directory and moves it beside the target, the target itself last, replacing what
  // stands there. A file beside the target that holds the very same bytes is left alone: it may be the source of
  // the copy. When a move fails the files moved before are put back as they were, and OutputError is thrown; should
  // that fail too, the old files stay in staging for the next run. Returns the files in place.
  std::vector<std::filesystem::path> MoveIntoPlace();

 private:
  // Takes the directory and all that is in it along, also out of a constructor that fails.
  struct Place {
    Place() = default;
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::string directory;  // empty before there is one
    int lock = -1;
    bool isNeeded = false;  // it holds old files, and stays
  };

  void MakeDirectory();

  std::filesystem::path target_;
  std::string stagedName_;
  std::vector<std::string> notes_;
  std::unique_ptr<readers::InterruptAction> removal_;
  Place place_;
};

}  // namespace tool
