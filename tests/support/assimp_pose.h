// Poses models as Assimp reads them, on a road of its own: pivots folded by Assimp, matrices and keys by its
// maths.
#pragma once

#include "tests/support/posed_file.h"

#include <assimp/scene.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Assimp {
class Importer;
}

namespace test_support {

class AssimpModel {
 public:
  explicit AssimpModel(const std::filesystem::path& file);
  ~AssimpModel();

  const aiScene& Scene() const;
  // Every `stride`-th vertex of a face of three corners or more that no more than four bones move, in metres. At
  // rest for an empty animation.
  std::vector<Point> Pose(const std::string& animation, double seconds, std::size_t stride) const;

 private:
  std::vector<std::filesystem::path> opened_;  // not looked at; outlives the reader
  std::unique_ptr<Assimp::Importer> reader_;
};

}  // namespace test_support
