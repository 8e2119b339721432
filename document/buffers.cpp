#include "document/buffers.h"

#include <array>

namespace {

constexpr std::array<const char*, 7> kAccessorTypes = {"SCALAR", "VEC2", "VEC3", "VEC4", "MAT2", "MAT3", "MAT4"};

void AddUnlessZero(JsonText& text, const char* key, std::uint32_t value) {
  if (value != 0) text.Member(key, value);
}

struct ValueLayout {
  GltfDataKind kind;
  GltfComponentType componentType;
};

constexpr ValueLayout LayoutOf(std::uint16_t) { return {GltfDataKind::U16, GltfComponentType::U16}; }
constexpr ValueLayout LayoutOf(std::uint32_t) { return {GltfDataKind::U32, GltfComponentType::U32}; }
constexpr ValueLayout LayoutOf(float) { return {GltfDataKind::F32, GltfComponentType::F32}; }

// Block, view and accessor of values in their final layout. Only an index list can need padding: all other
// items are multiples of four bytes.
template <class Value>
std::uint32_t AddValues(GltfDocument& document, std::vector<Value> values, GltfAccessorType type,
                        std::uint32_t elements, std::span<const double> min = {},
                        std::span<const double> max = {}) {
  constexpr ValueLayout layout = LayoutOf(Value{});
  GltfDataBlock block;
  block.count = static_cast<std::uint32_t>(values.size());
  const std::uint32_t length = block.count * static_cast<std::uint32_t>(sizeof(Value));
  block.padding = PaddingOf(length);
  block.byteLength = length + block.padding;
  block.kind = layout.kind;
  block.data = std::move(values);

  const std::uint32_t byteLength = block.byteLength;
  AddDataBlock(document, std::move(block));
  const std::uint32_t offset = GrowBuffer(document, byteLength);
  const std::uint32_t view = AddBufferView(document, 0, byteLength, offset, 0, 0);
  return AddAccessor(document, view, type, layout.componentType, elements, 0, min, max);
}

}  // namespace

std::uint32_t AddBufferView(GltfDocument& document, std::uint32_t buffer, std::uint32_t byteLength,
                            std::uint32_t byteOffset, std::uint32_t byteStride, std::uint32_t target) {
  JsonText& text = document.json->bufferViews.Append();
  text.StartObject();
  text.Member("buffer", buffer);
  text.Member("byteLength", byteLength);
  AddUnlessZero(text, "byteOffset", byteOffset);
  AddUnlessZero(text, "byteStride", byteStride);
  AddUnlessZero(text, "target", target);
  text.EndObject();
  return document.json->bufferViews.Size() - 1;
}

std::uint32_t AddAccessor(GltfDocument& document, std::uint32_t bufferView, GltfAccessorType type,
                          GltfComponentType componentType, std::uint32_t count, std::uint32_t byteOffset,
                          std::span<const double> min, std::span<const double> max) {
  JsonText& text = document.json->accessors.Append();
  text.StartObject();
  text.Member("bufferView", bufferView);
  AddUnlessZero(text, "byteOffset", byteOffset);
  text.Member("type", kAccessorTypes[static_cast<std::size_t>(type)]);
  text.Member("componentType", static_cast<std::int32_t>(componentType));
  text.Member("count", count);
  if (!min.empty()) text.Member("min", min);
  if (!max.empty()) text.Member("max", max);
  text.EndObject();
  return document.json->accessors.Size() - 1;
}

std::uint32_t GrowBuffer(GltfDocument& document, std::uint32_t byteCount) {
  const std::uint32_t before = document.json->buffer.byteLength;
  document.json->buffer.byteLength += byteCount;
  return before;
}

void AddDataBlock(GltfDocument& document, GltfDataBlock block) { document.dataBlocks.push_back(std::move(block)); }

std::uint32_t AddFloats(GltfDocument& document, std::vector<float> values, GltfAccessorType type,
                        std::uint32_t elements, std::span<const double> min, std::span<const double> max) {
  return AddValues(document, std::move(values), type, elements, min, max);
}

std::uint32_t AddShorts(GltfDocument& document, std::vector<std::uint16_t> values, GltfAccessorType type,
                        std::uint32_t elements) {
  return AddValues(document, std::move(values), type, elements);
}

std::uint32_t AddIndices(GltfDocument& document, std::vector<std::uint32_t> indices) {
  const auto count = static_cast<std::uint32_t>(indices.size());
  if (document.indices32 != 0) return AddValues(document, std::move(indices), GltfAccessorType::Scalar, count);
  std::vector<std::uint16_t> low(indices.size());
  for (std::size_t i = 0; i < indices.size(); ++i) low[i] = static_cast<std::uint16_t>(indices[i]);
  return AddValues(document, std::move(low), GltfAccessorType::Scalar, count);
}
