// Wrapper of a group deformer. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/deform_api.h"
#include "host/user_scene.h"

class CZyUser_GroupDeformer : public CountedRef<IZyGroupDeformer> {
 public:
  std::uint32_t DeformerCount() const { return Raw() ? Raw()->DeformerCount() : 0; }
  zyresult DeformerByIndex(std::uint32_t index, CZyUser_Item& deformer) const {
    return CallFor(deformer, &IZyGroupDeformer::DeformerByIndex, index);
  }
  zyresult PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                        std::uint32_t& count) const {
    return Call(&IZyGroupDeformer::PointWeights, mesh, point, deformers, weights, count);
  }
};
