// The user's stored settings: one JSON object, in memory or with a file behind it.
//
// A domain is a member of the root; below it a plain entry is a member with a value, and a keyed entry is an
// object with a member a key. What nobody declared stays as it is.
#pragma once

#include "headless/whole_file.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace headless {

// vornel/config.json in $XDG_CONFIG_HOME, or in .config of $HOME. Empty when neither names a folder.
std::filesystem::path UserConfigFile();

class ConfigStore {
 public:
  using Path = std::span<const std::string>;  // names from the root on, at least one

  // In memory alone.
  ConfigStore();
  // Reads the file; one that isn't there is an empty store. A file that isn't a JSON object is moved to another
  // name beside it, with a warning, and the store is empty. Throws ReadError when the file can't be read at all.
  explicit ConfigStore(const std::filesystem::path& file);
  ~ConfigStore();
  ConfigStore(const ConfigStore&) = delete;
  ConfigStore& operator=(const ConfigStore&) = delete;

  // Whether an object is stored there. Anything else on the way is warned of, once.
  bool HasObject(Path path);
  enum class Integers { Any, Booleans };  // as booleans, true and false are 1 and 0
  // None when nothing is stored there, or nothing of the type: that is warned of, once.
  std::optional<std::int32_t> Integer(Path path, Integers kind);
  std::optional<double> Number(Path path);

  // Each makes the objects on the way, in place of what else may stand there.
  void MakeObject(Path path);
  void SetInteger(Path path, std::int32_t value);
  void SetNumber(Path path, double value);  // finite
  void Remove(Path path);

  // Writes the file. Throws WriteError; the old file stands then.
  void Save() const;

  // One line each, with the file and the place.
  const std::vector<std::string>& Warnings() const { return warnings_; }

 private:
  struct Tree;

  void KeepAside(const std::string& reason);
  void WarnOfType(Path path, const char* type);

  std::filesystem::path file_;
  std::unique_ptr<Tree> tree_;
  std::vector<std::string> warnings_;
  bool isDamagedFileInPlace_ = false;  // it could not be moved, so it must not be written over
};

}  // namespace headless
