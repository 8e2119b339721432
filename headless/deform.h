// What bends meshes, as the host hands it out.
#pragma once

#include "headless/host_object.h"
#include "headless/host_state.h"
#include "headless/permanent_object.h"
#include "host/deform_api.h"

#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace headless {

// The influences on each point of one mesh of a group.
struct MeshInfluences {
  RecordedInfluences influences;
  // Places of points by id; empty when id i + 1 is point i.
  std::unordered_map<std::uint64_t, std::uint32_t> pointsById;
  std::uint32_t pointCount = 0;
};

// Influences of all groups, each worked out once.
class InfluenceStore {
 public:
  explicit InfluenceStore(HostState& host) : host_(host) {}

  // Null when the group's mesh isn't there.
  const MeshInfluences* Of(ItemIndex group, std::uint32_t mesh);

 private:
  HostState& host_;
  std::map<std::pair<ItemIndex, std::uint32_t>, MeshInfluences> known_;
};

class GroupDeformer final : public HostObject<IZyGroupDeformer> {
 public:
  GroupDeformer(HostState& host, InfluenceStore& store, ItemIndex group)
      : HostObject(host.live), host_(host), store_(store), group_(group) {}

  std::uint32_t DeformerCount() override;
  zyresult DeformerByIndex(std::uint32_t index, IZyObject*& deformer) override;
  zyresult PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                        std::uint32_t& count) override;

 private:
  const DeformGroupData& Data() const { return *host_.Data(group_).deformGroup; }

  HostState& host_;
  InfluenceStore& store_;
  ItemIndex group_;
};

class DeformerService final : public PermanentObject<IZyDeformerService> {
 public:
  explicit DeformerService(HostState& host) : host_(host), store_(host) {}

  zyresult GroupDeformer(IZyItem* deformGroup, IZyChannelRead* read, IZyObject*& deformer) override;
  zyresult MeshCount(IZyItem* deformGroup, std::uint32_t& count) override;
  zyresult MeshByIndex(IZyItem* deformGroup, std::uint32_t index, IZyObject*& mesh) override;
  zyresult DeformerDeformationItem(IZyItem* deformer, IZyObject*& item) override;

 private:
  // Null when the item is none or no deform group.
  const DeformGroupData* GroupOf(IZyItem* item) const;

  HostState& host_;
  InfluenceStore store_;
};

}  // namespace headless
