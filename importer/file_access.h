// The files that Assimp may read: the input and what lies below its folder.
#pragma once

#include <assimp/IOSystem.hpp>

#include <filesystem>
#include <vector>

namespace importer {

class FolderAccess : public Assimp::IOSystem {
 public:
  // Each file besides the input that is opened is entered in `opened`, which must outlive this.
  FolderAccess(const std::filesystem::path& file, std::vector<std::filesystem::path>& opened);

  bool Exists(const char* name) const override;
  char getOsSeparator() const override { return '/'; }
  // Null for a file outside the folder, one that isn't there, and for every mode but reading.
  Assimp::IOStream* Open(const char* name, const char* mode) override;
  void Close(Assimp::IOStream* stream) override;

 private:
  // Empty for a file outside the folder.
  std::filesystem::path Resolve(const char* name) const;

  std::filesystem::path file_;
  std::filesystem::path folder_;  // absolute, without symbolic links
  std::vector<std::filesystem::path>& opened_;
};

}  // namespace importer
