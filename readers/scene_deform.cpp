// Deform groups of scene files.
#include "readers/scene_fields.h"
#include "readers/scene_lists.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace readers {
namespace {

using headless::DeformGroupData;
using headless::RecordedInfluences;

struct InfluenceLimits {
  std::size_t points = 0;     // of the mesh
  std::size_t deformers = 0;  // of the group
};

// A list of [deformer, weight] pairs per point.
RecordedInfluences ReadPairs(const Json& value) {
  std::vector<std::uint32_t> starts = {0}, deformers;
  std::vector<float> weights;
  starts.reserve(ListSize(value) + 1);
  deformers.reserve(CountNumbers(value) / 2);
  weights.reserve(CountNumbers(value) / 2);
  ForEachEntry(value, [&](const Json& point) {
    ForEachEntry(ReadList(point), [&](const Json& pair) {
      const std::int32_t deformer = ReadInteger(ReadList(pair, 2)[0]);
      if (deformer < 0) Fail(pair[0], "expected the place of a deformer in the group");
      deformers.push_back(static_cast<std::uint32_t>(deformer));
      weights.push_back(ReadFloat(pair[1]));
    });
    starts.push_back(static_cast<std::uint32_t>(deformers.size()));
  });
  return {std::move(starts), std::move(deformers), std::move(weights)};
}

// A point may not have more influences than its mesh has points: callers make room for as many.
void CheckInfluences(const RecordedInfluences& influences, const InfluenceLimits& limits, const Json& value) {
  const auto& starts = influences.starts;
  if (starts.size() != limits.points + 1) {
    Fail(value, fmt::format("influences of {} points for a mesh of {}", starts.empty() ? 0 : starts.size() - 1,
                            limits.points));
  }
  if (influences.deformers.size() != influences.weights.size() || starts[0] != 0 ||
      starts[limits.points] != influences.weights.size()) {
    Fail(value, fmt::format("{} deformers and {} weights for {} influences", influences.deformers.size(),
                            influences.weights.size(), starts[limits.points]));
  }
  for (std::size_t point = 0; point < limits.points; ++point) {
    if (starts[point + 1] < starts[point]) Fail(value, fmt::format("start {} is below the one before", point + 1));
    const std::uint32_t count = starts[point + 1] - starts[point];
    if (count > limits.points) {
      Fail(value, fmt::format("point {} has {} influences in a mesh of {} points", point, count, limits.points));
    }
  }
  const auto wrong = std::find_if(influences.deformers.begin(), influences.deformers.end(),
                                  [&](std::uint32_t deformer) { return deformer >= limits.deformers; });
  if (wrong != influences.deformers.end()) {
    Fail(value, fmt::format("influence {}: deformer {} of {}", wrong - influences.deformers.begin(), *wrong,
                            limits.deformers));
  }
  if (!AllFinite({influences.weights.data(), influences.weights.size()}))
    Fail(value, "holds a weight that is not finite");
}

RecordedInfluences ReadInfluences(const Json& value, BinaryFiles& files) {
  if (value.IsArray()) return ReadPairs(value);
  return {ReadArray<std::uint32_t>(Require(value, "starts"), files),
          ReadArray<std::uint32_t>(Require(value, "deformers"), files),
          ReadArray<float>(Require(value, "weights"), files)};
}

}  // namespace

DeformGroupData ReadDeformGroup(const SceneParts& parts, const Json& value) {
  DeformGroupData group;
  if (const Json* meshes = Find(value, "meshes")) group.meshes = parts.items.FindAll(*meshes);
  if (const Json* deformers = Find(value, "deformers")) group.deformers = parts.items.FindAll(*deformers);
  if (const Json* deformer = Find(value, "deformer")) group.hasDeformer = ReadBool(*deformer);
  group.influences.resize(group.meshes.size());
  const Json* influences = Find(value, "influences");
  if (!influences) return group;
  ReadList(*influences, static_cast<rapidjson::SizeType>(group.meshes.size()));
  for (rapidjson::SizeType i = 0; i < influences->Size(); ++i) {
    const Json& entry = (*influences)[i];
    if (entry.IsNull()) continue;
    const auto& mesh = parts.scene.items[static_cast<std::size_t>(group.meshes[i])].mesh;
    group.influences[i] = ReadInfluences(entry, parts.files);
    CheckInfluences(*group.influences[i], {mesh ? mesh->PointCount() : 0u, group.deformers.size()}, entry);
  }
  return group;
}

}  // namespace readers
