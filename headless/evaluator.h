// World matrices of locators in each state of the scene.
#pragma once

#include "headless/channel_values.h"
#include "headless/transform_stack.h"
#include "host/matrix4.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace headless {

// The matrices that one channel read has asked for so far. Reused from read to read.
struct WorldCache {
  bool Knows(std::int32_t node) const { return stamps[At(node)] == stamp; }

  std::vector<Matrix4> matrices;      // by node
  std::vector<std::uint32_t> stamps;  // a matrix is known when its stamp is the current one
  std::uint32_t stamp = 0;
  std::optional<std::uint32_t> revision;  // of the channel values that the matrices come from
};

class Evaluator {
 public:
  // Both outlive the evaluator.
  Evaluator(const SceneIndex& index, const ChannelValues& values);

  // The world matrix of a locator. A cache serves one state from its taking to its giving back.
  const Matrix4& World(const ReadState& state, ItemIndex locator, WorldCache& cache) const;

  // An empty cache, and its way back when its read ends, which takes no memory.
  std::unique_ptr<WorldCache> TakeCache();
  void GiveBack(std::unique_ptr<WorldCache> cache);

 private:
  // What a node computes: the world matrix, as links make it, as a host recorded it, or most often from the own
  // local and the parent's world matrix alone. Local and Parent matrices are nodes only where links touch them.
  enum class Part : std::uint8_t { World, Recorded, Plain, Local, Parent };
  enum Input : std::size_t { kLocal, kParent, kWorld, kWpos, kWrot, kWscl, kInputCount };

  struct Node {
    ItemIndex item = -1;
    Part part = Part::World;
    std::array<std::int32_t, kInputCount> inputs = {-1, -1, -1, -1, -1, -1};  // nodes
  };
  // Linked inputs by node and input, with what the input is without the link.
  using DrivenInputs = std::map<std::pair<std::int32_t, Input>, std::int32_t>;
  using NodesByItem = std::vector<std::int32_t>;  // -1 for none

  void AddLocators();
  void AddMatrixLinks();
  void ForgetRecordedInputs();
  void FindPlainNodes();
  void CutCircles(const DrivenInputs& driven);
  std::int32_t PartNode(ItemIndex item, Part part, NodesByItem& known);
  bool IsRecorded(ItemIndex item) const;

  void Refresh(WorldCache& cache) const {
    if (cache.revision != values_.Revision()) Forget(cache);
  }
  void Forget(WorldCache& cache) const;
  void ComputeWithInputs(const ReadState& state, std::int32_t wanted, WorldCache& cache) const;
  Matrix4 Compute(const ReadState& state, const Node& node, const WorldCache& cache) const;
  Matrix4 ComputeWorld(const ReadState& state, const Node& node, const WorldCache& cache) const;

  const SceneIndex& index_;
  const ChannelValues& values_;
  TransformStack stack_;
  std::vector<Node> nodes_;
  NodesByItem worldNodes_;
  std::size_t cacheCount_ = 0;
  std::vector<std::unique_ptr<WorldCache>> freeCaches_;
  mutable std::vector<std::int32_t> pending_;  // scratch
};

}  // namespace headless
