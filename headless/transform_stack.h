// The local matrices of locators: products of their transform items.
#pragma once

#include "headless/channel_values.h"
#include "headless/matrix_columns.h"

#include <array>
#include <string_view>
#include <vector>

namespace headless {

class TransformStack {
 public:
  // Both outlive the stack.
  TransformStack(const SceneIndex& index, const ChannelValues& values);

  Matrix4 LocalMatrix(const ReadState& state, ItemIndex locator) const;

 private:
  enum class Kind : std::uint8_t { Identity, Translation, Rotation, Scale, Matrix };
  enum class Direction : std::uint8_t { Forward, Inverse };

  struct Transform {
    Kind kind = Kind::Identity;
    ItemIndex item = -1;
    // Places of the channels x, y, z and of the rotation order; -1 for none.
    std::array<std::int32_t, 3> channels = {-1, -1, -1};
    std::int32_t order = -1;
    ItemIndex inverseOf = -1;
  };

  // Codes of the item types that transform.
  struct TransformTypes {
    std::array<std::uint32_t, 3> vectors;  // translation, rotation, scale
    std::array<std::uint32_t, 2> matrices;
  };

  Transform Describe(ItemIndex item, const TransformTypes& types) const;
  std::int32_t PlaceOf(ItemIndex item, std::string_view channel) const;
  void CutInverseCircles();
  void AddStacks();
  // Each applies the transform after what the matrix does already.
  void Append(const ReadState& state, const Transform& transform, MatrixColumns& matrix) const;
  void AppendInverse(const ReadState& state, const Transform& transform, MatrixColumns& matrix) const;
  double Number(const ReadState& state, std::int32_t place, double fallback) const;
  std::array<double, 3> Vector(const ReadState& state, const Transform& transform, double fallback) const;

  const SceneIndex& index_;
  const ChannelValues& values_;
  LinkTable stacks_;                           // per locator: places of its transforms, innermost first
  std::vector<Transform> transforms_;          // of all transform items
  std::vector<std::int32_t> transformByItem_;  // -1 for other items
};

}  // namespace headless
