// Reads the text of a material library (MTL).
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace readers {

// Of polygons and materials that name none.
constexpr std::string_view kDefaultMaterial = "Default";

enum class MtlMapKind { BaseColor, Dissolve, Metallic, Roughness, Emissive, Normal, Bump, Count };
constexpr std::size_t kMtlMapKinds = static_cast<std::size_t>(MtlMapKind::Count);

struct MtlMap {
  std::string file;  // as written, with slashes between directories
  // A texture coordinate t looks up the image at t * scale + offset, from the image's lower left corner.
  std::array<double, 2> offset = {0, 0};
  std::array<double, 2> scale = {1, 1};
  bool clamped = false;   // -clamp on: no repetition
  double bumpFactor = 1;  // -bm
};

using MtlColor = std::array<double, 3>;

// What a material states; absent where it says nothing.
struct MtlMaterial {
  std::string name;
  std::optional<MtlColor> diffuse;     // Kd
  std::optional<MtlColor> specular;    // Ks
  std::optional<MtlColor> emissive;    // Ke
  std::optional<double> dissolve;      // d: 1 is opaque
  std::optional<double> transparency;  // Tr: 1 is invisible
  std::optional<double> shininess;     // Ns
  std::optional<double> roughness;     // Pr
  std::optional<double> metallic;      // Pm
  std::array<std::optional<MtlMap>, kMtlMapKinds> maps;

  const std::optional<MtlMap>& Map(MtlMapKind kind) const { return maps[static_cast<std::size_t>(kind)]; }
};

struct MtlFile {
  std::vector<MtlMaterial> materials;  // of a name the first
  // Statements and options that nothing takes up, with their counts, in order of first sight.
  std::vector<std::pair<std::string, std::size_t>> skipped;
  // Statements passed over because a value can't be read.
  std::size_t badStatements = 0;
  std::size_t firstBadLine = 0;
  std::string firstBadReason;
};

// Never fails: what can't be read is passed over and told in the result.
MtlFile ParseMtl(std::string_view text);

// Adds to the counts of MtlFile::skipped.
void CountSkipped(MtlFile& file, std::string_view what);

}  // namespace readers
