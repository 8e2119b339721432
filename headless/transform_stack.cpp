#include "headless/transform_stack.h"

#include <string_view>

namespace headless {

namespace {

// By vector kind.
constexpr std::string_view kVectorChannels[][3] = {
    {"pos.X", "pos.Y", "pos.Z"}, {"rot.X", "rot.Y", "rot.Z"}, {"scl.X", "scl.Y", "scl.Z"}};

// Axes of a rotation by its order channel; the first is the one that a point meets first.
constexpr std::size_t kRotationOrders[][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};

}  // namespace

TransformStack::TransformStack(const SceneIndex& index, const ChannelValues& values)
    : index_(index), values_(values), transformByItem_(index.ItemCount(), -1) {
  const SceneData& scene = index.Scene();
  const ItemTypes& types = index.Types();
  const TransformTypes codes = {{types.Code("translation"), types.Code("rotation"), types.Code("scale")},
                                {types.Code("transform"), types.Code("shear")}};
  for (std::size_t place = 0; place < scene.items.size(); ++place) {
    const Transform transform = Describe(static_cast<ItemIndex>(place), codes);
    if (transform.kind == Kind::Identity && transform.inverseOf < 0) continue;
    transformByItem_[place] = static_cast<std::int32_t>(transforms_.size());
    transforms_.push_back(transform);
  }
  CutInverseCircles();
  AddStacks();
}

TransformStack::Transform TransformStack::Describe(ItemIndex item, const TransformTypes& types) const {
  const ItemData& data = index_.Scene().items[At(item)];
  Transform transform;
  transform.item = item;
  constexpr Kind kinds[] = {Kind::Translation, Kind::Rotation, Kind::Scale};
  for (std::size_t place = 0; place < std::size(kinds); ++place) {
    if (!index_.IsOfType(item, types.vectors[place])) continue;
    transform.kind = kinds[place];
    for (std::size_t axis = 0; axis < 3; ++axis)
      transform.channels[axis] = PlaceOf(item, kVectorChannels[place][axis]);
    if (transform.kind == Kind::Rotation) transform.order = PlaceOf(item, "order");
    return transform;
  }
  if (!index_.IsOfType(item, types.matrices[0]) && !index_.IsOfType(item, types.matrices[1])) return transform;
  if (data.matrix) transform.kind = Kind::Matrix;
  if (index_.HasItem(data.inverseOf)) transform.inverseOf = data.inverseOf;
  return transform;
}

std::int32_t TransformStack::PlaceOf(ItemIndex item, std::string_view channel) const {
  const std::int32_t number = FindChannel(index_.Scene().items[At(item)], channel);
  return number < 0 ? -1 : static_cast<std::int32_t>(index_.ChannelPlace({item, number}));
}

double TransformStack::Number(const ReadState& state, std::int32_t place, double fallback) const {
  return place < 0 ? fallback : values_.NumberAt(state, At(place)).value_or(fallback);
}

void TransformStack::CutInverseCircles() {
  std::vector<Link> links;
  for (const Transform& transform : transforms_)
    if (transform.inverseOf >= 0) links.emplace_back(transform.item, transform.inverseOf);
  if (links.empty()) return;
  const auto components = StrongComponents(LinkTable(index_.ItemCount(), links, LinkEnd::From));
  for (Transform& transform : transforms_)
    if (transform.inverseOf >= 0 && components[At(transform.item)] == components[At(transform.inverseOf)])
      transform.inverseOf = -1;
}

void TransformStack::AddStacks() {
  const auto graph = index_.Scene().graphs.find("xfrmCore");
  if (graph == index_.Scene().graphs.end()) return;
  std::vector<Link> steps;
  for (auto link = graph->second.rbegin(); link != graph->second.rend(); ++link)
    if (index_.HasItem(link->first)) steps.emplace_back(link->second, transformByItem_[At(link->first)]);
  stacks_ = LinkTable(index_.ItemCount(), steps, LinkEnd::From);
}

std::array<double, 3> TransformStack::Vector(const ReadState& state, const Transform& transform,
                                             double fallback) const {
  std::array<double, 3> vector;
  for (std::size_t axis = 0; axis < 3; ++axis) vector[axis] = Number(state, transform.channels[axis], fallback);
  return vector;
}

void TransformStack::Append(const ReadState& state, const Transform& transform, MatrixColumns& matrix) const {
  switch (transform.kind) {
    case Kind::Identity:
      return;
    case Kind::Translation:
      matrix.Translate(Vector(state, transform, 0));
      return;
    case Kind::Rotation: {
      const auto angles = Vector(state, transform, 0);
      const double order = Number(state, transform.order, 0);
      const bool known = order >= 0 && order < static_cast<double>(std::size(kRotationOrders));
      for (const std::size_t axis : kRotationOrders[known ? static_cast<std::size_t>(order) : 0])
        matrix.Rotate(axis, angles[axis]);
      return;
    }
    case Kind::Scale:
      matrix.Scale(Vector(state, transform, 1));
      return;
    case Kind::Matrix:
      matrix.Multiply(*index_.Scene().items[At(transform.item)].matrix);
  }
}

void TransformStack::AppendInverse(const ReadState& state, const Transform& transform,
                                   MatrixColumns& matrix) const {
  Direction direction = Direction::Forward;
  const Transform* source = &transform;
  while (source && source->inverseOf >= 0) {
    direction = direction == Direction::Forward ? Direction::Inverse : Direction::Forward;
    const std::int32_t place = transformByItem_[At(source->inverseOf)];
    source = place < 0 ? nullptr : &transforms_[At(place)];
  }
  if (!source) return;
  MatrixColumns own;
  Append(state, *source, own);
  matrix.Multiply(direction == Direction::Inverse ? Inverse(own.ToMatrix()) : own.ToMatrix());
}

Matrix4 TransformStack::LocalMatrix(const ReadState& state, ItemIndex locator) const {
  MatrixColumns matrix;
  for (const std::int32_t place : stacks_.Of(locator)) {
    const Transform& transform = transforms_[At(place)];
    if (transform.inverseOf >= 0)
      AppendInverse(state, transform, matrix);
    else
      Append(state, transform, matrix);
  }
  return matrix.ToMatrix();
}

}  // namespace headless
