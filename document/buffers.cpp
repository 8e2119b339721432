#include "document/buffers.h"

#include "document/json_values.h"

namespace {

constexpr std::array<const char*, 7> kAccessorTypes = {"SCALAR", "VEC2", "VEC3", "VEC4", "MAT2", "MAT3", "MAT4"};

void AddUnlessZero(JsonValue& object, rapidjson::Value::StringRefType key, std::uint32_t value,
                   JsonAllocator& allocator) {
  if (value != 0) object.AddMember(key, value, allocator);
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
                        std::uint32_t elements, JsonValue min = {}, JsonValue max = {}) {
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
  const std::uint32_t offset = GrowBuffer(document, 0, byteLength);
  const std::uint32_t view = AddBufferView(document, 0, byteLength, offset, 0, 0);
  return AddAccessor(document, view, type, layout.componentType, elements, 0, std::move(min), std::move(max));
}

}  // namespace

std::uint32_t AddBuffer(GltfDocument& document, std::uint32_t byteLength, const std::string& uri) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue buffer(rapidjson::kObjectType);
  buffer.AddMember("byteLength", byteLength, allocator);
  if (!uri.empty()) buffer.AddMember("uri", TextValue(uri, allocator), allocator);
  return AppendValue(document.json.buffers, std::move(buffer), allocator);
}

std::uint32_t AddBufferView(GltfDocument& document, std::uint32_t buffer, std::uint32_t byteLength,
                            std::uint32_t byteOffset, std::uint32_t byteStride, std::uint32_t target) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue view(rapidjson::kObjectType);
  view.AddMember("buffer", buffer, allocator);
  view.AddMember("byteLength", byteLength, allocator);
  AddUnlessZero(view, "byteOffset", byteOffset, allocator);
  AddUnlessZero(view, "byteStride", byteStride, allocator);
  AddUnlessZero(view, "target", target, allocator);
  return AppendValue(document.json.bufferViews, std::move(view), allocator);
}

std::uint32_t AddAccessor(GltfDocument& document, std::uint32_t bufferView, GltfAccessorType type,
                          GltfComponentType componentType, std::uint32_t count, std::uint32_t byteOffset,
                          JsonValue min, JsonValue max) {
  JsonAllocator& allocator = *document.allocator;
  const char* typeText = kAccessorTypes[static_cast<std::size_t>(type)];
  JsonValue accessor(rapidjson::kObjectType);
  accessor.AddMember("bufferView", bufferView, allocator);
  AddUnlessZero(accessor, "byteOffset", byteOffset, allocator);
  accessor.AddMember("type", rapidjson::StringRef(typeText), allocator);
  accessor.AddMember("componentType", static_cast<std::int32_t>(componentType), allocator);
  accessor.AddMember("count", count, allocator);
  if (min.IsArray() && !min.Empty()) accessor.AddMember("min", min, allocator);
  if (max.IsArray() && !max.Empty()) accessor.AddMember("max", max, allocator);
  return AppendValue(document.json.accessors, std::move(accessor), allocator);
}

std::uint32_t GrowBuffer(GltfDocument& document, std::uint32_t buffer, std::uint32_t byteCount) {
  JsonValue& byteLength = document.json.buffers[buffer]["byteLength"];
  const std::uint32_t before = byteLength.GetUint();
  byteLength.SetUint(before + byteCount);
  return before;
}

void AddDataBlock(GltfDocument& document, GltfDataBlock block) { document.dataBlocks.push_back(std::move(block)); }

std::uint32_t AddFloats(GltfDocument& document, std::vector<float> values, GltfAccessorType type,
                        std::uint32_t elements, JsonValue min, JsonValue max) {
  return AddValues(document, std::move(values), type, elements, std::move(min), std::move(max));
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
