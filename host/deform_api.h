// What bends a mesh: deform groups and their deformers.
#pragma once

#include "host/mesh_api.h"
#include "host/scene_api.h"

// The weights of a deform group in one state of the channels.
struct IZyGroupDeformer : IZyObject {
  static constexpr std::uint32_t kId = 0x301;

  virtual std::uint32_t DeformerCount() = 0;
  virtual zyresult DeformerByIndex(std::uint32_t index, IZyObject*& deformer) = 0;
  // The influences on a point of the group's mesh at place `mesh`: `count` pairs of deformer index and
  // weight. Both arrays have room for as many entries as the mesh has points.
  virtual zyresult PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                                std::uint32_t& count) = 0;

 protected:
  ~IZyGroupDeformer() = default;
};

struct IZyDeformerService : IZyObject {
  static constexpr std::uint32_t kId = 0x302;

  virtual zyresult GroupDeformer(IZyItem* deformGroup, IZyChannelRead* read, IZyObject*& deformer) = 0;
  virtual zyresult MeshCount(IZyItem* deformGroup, std::uint32_t& count) = 0;
  virtual zyresult MeshByIndex(IZyItem* deformGroup, std::uint32_t index, IZyObject*& mesh) = 0;
  // The item whose motion drives the deformer: the joint of a skin.
  virtual zyresult DeformerDeformationItem(IZyItem* deformer, IZyObject*& item) = 0;

 protected:
  ~IZyDeformerService() = default;
};
