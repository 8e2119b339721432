// Data blocks, buffer views and accessors of a document's one buffer. All of it runs while WriteDocument
// runs. A view's offset is the sum of the blocks before it, so each block that takes room in the buffer
// grows it by just its byteLength.
#pragma once

#include "document/document.h"

// Accessor types: "SCALAR", "VEC2", "VEC3", "VEC4", "MAT2", "MAT3", "MAT4".
enum class GltfAccessorType : std::int32_t { Scalar = 0, Vec2, Vec3, Vec4, Mat2, Mat3, Mat4 };

enum class GltfComponentType : std::int32_t { U16 = 5123, U32 = 5125, F32 = 5126 };

// Zero bytes that fill a length up to a multiple of four.
constexpr std::uint32_t PaddingOf(std::uint32_t length) { return -length & 3u; }

// Each returns the index of the new element in its array. Empty min and max are left out.
std::uint32_t AddBufferView(GltfDocument& document, std::uint32_t buffer, std::uint32_t byteLength,
                            std::uint32_t byteOffset, std::uint32_t byteStride, std::uint32_t target);
std::uint32_t AddAccessor(GltfDocument& document, std::uint32_t bufferView, GltfAccessorType type,
                          GltfComponentType componentType, std::uint32_t count, std::uint32_t byteOffset,
                          std::span<const double> min, std::span<const double> max);

// Adds to the buffer's byteLength and returns the length before.
std::uint32_t GrowBuffer(GltfDocument& document, std::uint32_t byteCount);

void AddDataBlock(GltfDocument& document, GltfDataBlock block);

// Block, view and accessor of one data item. `elements` is the accessor's count. Returns the accessor's index.
std::uint32_t AddFloats(GltfDocument& document, std::vector<float> values, GltfAccessorType type,
                        std::uint32_t elements, std::span<const double> min = {},
                        std::span<const double> max = {});
std::uint32_t AddShorts(GltfDocument& document, std::vector<std::uint16_t> values, GltfAccessorType type,
                        std::uint32_t elements);
// An index list; u32 with document.indices32, else each index cut to its low 16 bits. Padded to 4 bytes.
std::uint32_t AddIndices(GltfDocument& document, std::vector<std::uint32_t> indices);
