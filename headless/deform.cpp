#include "headless/deform.h"

#include "host/fourcc.h"

#include <algorithm>
#include <optional>

namespace headless {

namespace {

const MeshMapData* FindWeightMap(const MeshData& mesh, const std::string& name) {
  const auto map = std::find_if(mesh.maps.begin(), mesh.maps.end(), [&](const MeshMapData& candidate) {
    return candidate.type == kMapWeight && candidate.name == name;
  });
  return map == mesh.maps.end() ? nullptr : &*map;
}

std::optional<float> WeightAt(const MeshMapData& map, std::uint32_t point) {
  if (point >= map.pointValues.size() || map.pointValues[point] == kNone) return std::nullopt;
  const std::size_t place = std::size_t{map.pointValues[point]} * map.dimension;
  return place < map.values.size() ? std::optional(map.values[place]) : std::nullopt;
}

// Point by point, each with its weights in the order of the group's deformers.
RecordedInfluences GatherWeightMaps(const HostState& host, const DeformGroupData& group, const MeshData& mesh) {
  std::vector<std::pair<std::uint32_t, const MeshMapData*>> maps;
  for (std::uint32_t place = 0; place < group.deformers.size(); ++place) {
    const ItemIndex deformer = group.deformers[place];
    const bool named = host.index.HasItem(deformer) && !host.Data(deformer).extras->weightMap.empty();
    if (const MeshMapData* map = named ? FindWeightMap(mesh, host.Data(deformer).extras->weightMap) : nullptr)
      maps.emplace_back(place, map);
  }
  std::vector<std::uint32_t> starts = {0}, deformers;
  std::vector<float> weights;
  for (std::uint32_t point = 0; point < mesh.PointCount(); ++point) {
    for (const auto& [deformer, map] : maps)
      if (const std::optional<float> weight = WeightAt(*map, point)) {
        deformers.push_back(deformer);
        weights.push_back(*weight);
      }
    starts.push_back(static_cast<std::uint32_t>(weights.size()));
  }
  return {std::move(starts), std::move(deformers), std::move(weights)};
}

}  // namespace

const MeshInfluences* InfluenceStore::Of(ItemIndex group, std::uint32_t mesh) {
  const DeformGroupData& data = *host_.Data(group).deformGroup;
  if (mesh >= data.meshes.size() || !host_.index.HasItem(data.meshes[mesh])) return nullptr;
  const MeshData* points = host_.Data(data.meshes[mesh]).mesh.get();
  if (!points) return nullptr;
  const auto [entry, isNew] = known_.try_emplace({group, mesh});
  MeshInfluences& known = entry->second;
  if (!isNew) return &known;
  const bool recorded = mesh < data.influences.size() && data.influences[mesh];
  known.influences = recorded ? *data.influences[mesh] : GatherWeightMaps(host_, data, *points);
  known.pointCount = points->PointCount();
  for (std::uint32_t point = 0; point < points->pointIds.size(); ++point)
    known.pointsById.emplace(points->pointIds[point], point);
  return &known;
}

std::uint32_t GroupDeformer::DeformerCount() { return static_cast<std::uint32_t>(Data().deformers.size()); }

zyresult GroupDeformer::DeformerByIndex(std::uint32_t index, IZyObject*& deformer) {
  return index < Data().deformers.size() ? host_.Give(Data().deformers[index], deformer) : ZYe_FAILED;
}

zyresult GroupDeformer::PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                                     std::uint32_t& count) {
  const MeshInfluences* known = deformers && weights ? store_.Of(group_, mesh) : nullptr;
  if (!known) return ZYe_FAILED;
  std::uint64_t place = point - 1;
  if (!known->pointsById.empty()) {
    const auto found = known->pointsById.find(point);
    place = found == known->pointsById.end() ? known->pointCount : found->second;
  }
  const RecordedInfluences& all = known->influences;
  if (place >= known->pointCount || place + 1 >= all.starts.size()) return ZYe_FAILED;
  const std::size_t first = all.starts[place];
  // The arrays have room for as many influences as the mesh has points.
  const std::size_t last = std::min<std::size_t>(
      {all.starts[place + 1], all.deformers.size(), all.weights.size(), first + known->pointCount});
  count = 0;
  for (std::size_t influence = first; influence < last; ++influence, ++count) {
    deformers[count] = all.deformers[influence];
    weights[count] = all.weights[influence];
  }
  return ZYe_OK;
}

const DeformGroupData* DeformerService::GroupOf(IZyItem* item) const {
  if (!item) return nullptr;
  const auto& group = host_.Data(HostState::IndexOf(item)).deformGroup;
  return group ? &*group : nullptr;
}

zyresult DeformerService::GroupDeformer(IZyItem* deformGroup, IZyChannelRead* read, IZyObject*& deformer) {
  const DeformGroupData* group = GroupOf(deformGroup);
  if (!group || !group->hasDeformer || !read) return ZYe_FAILED;
  deformer = new headless::GroupDeformer(host_, store_, HostState::IndexOf(deformGroup));
  return ZYe_OK;
}

zyresult DeformerService::MeshCount(IZyItem* deformGroup, std::uint32_t& count) {
  const DeformGroupData* group = GroupOf(deformGroup);
  if (!group) return ZYe_FAILED;
  count = static_cast<std::uint32_t>(group->meshes.size());
  return ZYe_OK;
}

zyresult DeformerService::MeshByIndex(IZyItem* deformGroup, std::uint32_t index, IZyObject*& mesh) {
  const DeformGroupData* group = GroupOf(deformGroup);
  return group && index < group->meshes.size() ? host_.Give(group->meshes[index], mesh) : ZYe_FAILED;
}

zyresult DeformerService::DeformerDeformationItem(IZyItem* deformer, IZyObject*& item) {
  if (!deformer) return ZYe_FAILED;
  return host_.Give(host_.Data(HostState::IndexOf(deformer)).deformationItem, item);
}

}  // namespace headless
