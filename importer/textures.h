// Textures that a file holds within itself.
#pragma once

#include <assimp/scene.h>

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace importer {

// Writes the textures that materials ask for, each once, under names that are safe in any directory.
class EmbeddedTextures {
 public:
  EmbeddedTextures(const aiScene& source, std::filesystem::path directory);

  // The image path of what a material calls its texture: that of a written file, or the name itself with slashes.
  // Nothing for a texture that can't be written; throws ImportError when the directory can't take it.
  std::optional<std::string> PathOf(const std::string& name);

  const std::vector<std::string>& Files() const { return files_; }

 private:
  std::optional<unsigned> Find(const std::string& name) const;
  std::optional<std::string> Write(unsigned index);

  const aiScene& source_;
  std::filesystem::path directory_;
  bool namesAreUris_;
  std::map<unsigned, std::optional<std::string>> written_;
  std::set<std::string> taken_;  // in lower case
  std::vector<std::string> files_;
};

}  // namespace importer
