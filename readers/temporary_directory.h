// A fresh directory that goes with its object, and when an interrupt ends the program.
#pragma once

#include "readers/interrupt.h"

#include <filesystem>
#include <optional>

namespace readers {

class TemporaryDirectory {
 public:
  // Makes it in `parent`, for this user alone. Throws std::system_error.
  explicit TemporaryDirectory(const std::filesystem::path& parent);
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }  // absolute

 private:
  std::filesystem::path path_;
  std::optional<InterruptAction> removal_;
};

}  // namespace readers
