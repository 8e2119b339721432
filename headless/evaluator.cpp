#include "headless/evaluator.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace headless {

namespace {

// The matrix as a host recorded it.
Matrix4 Replay(const RecordedWorld& recorded, const ReadState& state) {
  const auto& keys = recorded.keys;
  if (keys.empty()) return *recorded.bind;
  if (state.layer == Layer::Setup) return recorded.bind ? *recorded.bind : keys.front().matrix;
  const auto next = std::upper_bound(keys.begin(), keys.end(), state.time,
                                     [](double time, const RecordedWorld::Key& key) { return time < key.time; });
  if (next == keys.begin()) return keys.front().matrix;
  const RecordedWorld::Key& from = *(next - 1);
  if (!recorded.linear || next == keys.end() || from.time == state.time) return from.matrix;
  const double share = (state.time - from.time) / (next->time - from.time);
  Matrix4 matrix;
  for (std::size_t place = 0; place < 16; ++place)
    matrix.m[place] = from.matrix.m[place] + (next->matrix.m[place] - from.matrix.m[place]) * share;
  return matrix;
}

double RowLength(const Matrix4& matrix, std::size_t row) {
  return std::sqrt(matrix(row, 0) * matrix(row, 0) + matrix(row, 1) * matrix(row, 1) +
                   matrix(row, 2) * matrix(row, 2));
}

// The axes of one matrix with the lengths of another's.
void CombineAxes(const Matrix4& directions, const Matrix4& lengths, Matrix4& out) {
  for (std::size_t row = 0; row < 3; ++row) {
    const double own = RowLength(directions, row);
    if (own == 0.0) continue;
    const double factor = RowLength(lengths, row) / own;
    for (std::size_t column = 0; column < 3; ++column) out(row, column) = directions(row, column) * factor;
  }
}

}  // namespace

Evaluator::Evaluator(const SceneIndex& index, const ChannelValues& values)
    : index_(index), values_(values), stack_(index, values), worldNodes_(index.ItemCount(), -1) {
  AddLocators();
  AddMatrixLinks();
  FindPlainNodes();
}

bool Evaluator::IsRecorded(ItemIndex item) const {
  const auto& world = index_.Scene().items[At(item)].world;
  return world && (world->bind || !world->keys.empty());
}

void Evaluator::AddLocators() {
  for (std::size_t place = 0; place < index_.ItemCount(); ++place) {
    const auto item = static_cast<ItemIndex>(place);
    if (!index_.IsLocator(item)) continue;
    worldNodes_[place] = static_cast<std::int32_t>(nodes_.size());
    nodes_.push_back({item});
  }
  for (Node& node : nodes_) {
    ItemIndex parent = index_.Parent(node.item);
    while (parent >= 0 && worldNodes_[At(parent)] < 0) parent = index_.Parent(parent);
    if (parent >= 0) node.inputs[kParent] = worldNodes_[At(parent)];
  }
}

// The node of a locator's local or parent matrix, which its world then passes through.
std::int32_t Evaluator::PartNode(ItemIndex item, Part part, NodesByItem& known) {
  if (known.empty()) known.assign(index_.ItemCount(), -1);
  std::int32_t& place = known[At(item)];
  if (place >= 0) return place;
  place = static_cast<std::int32_t>(nodes_.size());
  std::int32_t& worldInput = nodes_[At(worldNodes_[At(item)])].inputs[part == Part::Local ? kLocal : kParent];
  Node node{item, part};
  node.inputs[part == Part::Local ? kLocal : kParent] = std::exchange(worldInput, place);
  nodes_.push_back(node);
  return place;
}

void Evaluator::AddMatrixLinks() {
  NodesByItem localNodes, parentNodes;
  DrivenInputs driven;
  const auto nodeOf = [&](ItemIndex item, MatrixChannel channel) {
    if (channel == MatrixChannel::Local) return PartNode(item, Part::Local, localNodes);
    if (channel == MatrixChannel::Parent) return PartNode(item, Part::Parent, parentNodes);
    return worldNodes_[At(item)];
  };
  for (const ChannelLink& link : index_.Scene().channelLinks) {
    if (!index_.HasChannel(link.from) || !index_.HasChannel(link.to)) continue;
    const auto from = index_.MatrixOf(link.from), to = index_.MatrixOf(link.to);
    if (!from || !to || IsRecorded(link.to.item)) continue;
    const std::int32_t source = nodeOf(link.from.item, *from);
    const std::int32_t target = nodeOf(link.to.item, *to);
    constexpr Input inputs[] = {kWpos, kWrot, kWscl, kWorld, kLocal, kParent};  // by MatrixChannel
    const Input input = inputs[static_cast<std::size_t>(*to)];
    std::int32_t& current = nodes_[At(target)].inputs[input];
    driven.emplace(std::pair(target, input), current);
    current = source;
  }
  ForgetRecordedInputs();
  CutCircles(driven);
}

void Evaluator::ForgetRecordedInputs() {
  for (Node& node : nodes_)
    if (node.part == Part::World && IsRecorded(node.item)) {
      node.part = Part::Recorded;
      node.inputs.fill(-1);
    }
}

void Evaluator::FindPlainNodes() {
  for (Node& node : nodes_) {
    auto others = node.inputs;
    others[kParent] = -1;
    const bool hasOthers =
        std::any_of(others.begin(), others.end(), [](std::int32_t input) { return input >= 0; });
    if (node.part == Part::World && !hasOthers) node.part = Part::Plain;
  }
}

// A link whose source depends on its own target isn't followed: the target keeps its own matrix.
void Evaluator::CutCircles(const DrivenInputs& driven) {
  if (driven.empty()) return;
  std::vector<Link> links;
  for (std::size_t node = 0; node < nodes_.size(); ++node)
    for (const std::int32_t input : nodes_[node].inputs)
      if (input >= 0) links.emplace_back(static_cast<std::int32_t>(node), input);
  // What stands in for a cut link counts as well, so that it can't close a new circle.
  for (const auto& [target, fallback] : driven)
    if (fallback >= 0) links.emplace_back(target.first, fallback);
  const auto components = StrongComponents(LinkTable(nodes_.size(), links, LinkEnd::From));
  for (const auto& [target, fallback] : driven) {
    std::int32_t& input = nodes_[At(target.first)].inputs[target.second];
    if (components[At(target.first)] == components[At(input)]) input = fallback;
  }
}

void Evaluator::Forget(WorldCache& cache) const {
  cache.revision = values_.Revision();
  if (cache.stamps.size() != nodes_.size() || ++cache.stamp == 0) {
    cache.matrices.resize(nodes_.size());
    cache.stamps.assign(nodes_.size(), 0);
    cache.stamp = 1;
  }
}

const Matrix4& Evaluator::World(const ReadState& state, ItemIndex locator, WorldCache& cache) const {
  Refresh(cache);
  const std::int32_t wanted = worldNodes_[At(locator)];
  if (!cache.Knows(wanted)) ComputeWithInputs(state, wanted, cache);
  return cache.matrices[At(wanted)];
}

void Evaluator::ComputeWithInputs(const ReadState& state, std::int32_t wanted, WorldCache& cache) const {
  pending_.assign(1, wanted);
  while (!pending_.empty()) {
    const std::int32_t place = pending_.back();
    const Node& node = nodes_[At(place)];
    const std::size_t before = pending_.size();
    for (const std::int32_t input : node.inputs)
      if (input >= 0 && !cache.Knows(input)) pending_.push_back(input);
    if (pending_.size() != before) continue;
    pending_.pop_back();
    if (cache.Knows(place)) continue;
    cache.matrices[At(place)] = Compute(state, node, cache);
    cache.stamps[At(place)] = cache.stamp;
  }
}

Matrix4 Evaluator::Compute(const ReadState& state, const Node& node, const WorldCache& cache) const {
  const std::int32_t local = node.inputs[kLocal], parent = node.inputs[kParent];
  switch (node.part) {
    case Part::Plain:
      if (parent >= 0) return stack_.LocalMatrix(state, node.item) * cache.matrices[At(parent)];
      return stack_.LocalMatrix(state, node.item);
    case Part::Recorded:
      return Replay(*index_.Scene().items[At(node.item)].world, state);
    case Part::Local:
      return local < 0 ? stack_.LocalMatrix(state, node.item) : cache.matrices[At(local)];
    case Part::Parent:
      return parent < 0 ? Matrix4() : cache.matrices[At(parent)];
    case Part::World:
      break;
  }
  return ComputeWorld(state, node, cache);
}

Matrix4 Evaluator::ComputeWorld(const ReadState& state, const Node& node, const WorldCache& cache) const {
  const auto input = [&](Input place) -> const Matrix4* {
    return node.inputs[place] < 0 ? nullptr : &cache.matrices[At(node.inputs[place])];
  };
  if (const Matrix4* world = input(kWorld); world && !input(kWpos) && !input(kWrot) && !input(kWscl))
    return *world;
  Matrix4 world = input(kWorld) ? *input(kWorld) : Matrix4();
  if (!input(kWorld)) {
    world = input(kLocal) ? *input(kLocal) : stack_.LocalMatrix(state, node.item);
    if (const Matrix4* parent = input(kParent)) world = world * *parent;
  }
  if (!input(kWpos) && !input(kWrot) && !input(kWscl)) return world;
  const Matrix4 own = world;
  if (const Matrix4* source = input(kWrot)) CombineAxes(*source, own, world);
  if (const Matrix4* source = input(kWscl)) CombineAxes(Matrix4(world), *source, world);
  if (const Matrix4* source = input(kWpos))
    for (std::size_t axis = 0; axis < 3; ++axis) world(3, axis) = (*source)(3, axis);
  return world;
}

std::unique_ptr<WorldCache> Evaluator::TakeCache() {
  if (freeCaches_.empty()) {
    freeCaches_.reserve(++cacheCount_);  // there shall be room for it when it comes back
    return std::make_unique<WorldCache>();
  }
  std::unique_ptr<WorldCache> cache = std::move(freeCaches_.back());
  freeCaches_.pop_back();
  return cache;
}

void Evaluator::GiveBack(std::unique_ptr<WorldCache> cache) {
  if (!cache) return;
  cache->revision.reset();
  freeCaches_.push_back(std::move(cache));
}

}  // namespace headless
