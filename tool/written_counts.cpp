#include "tool/written_counts.h"

namespace tool {
namespace {

struct ArrayCount {
  OutputArray array;
  std::uint64_t WrittenCounts::*count;
};
constexpr ArrayCount kArrays[] = {
    {OutputArray::Nodes, &WrittenCounts::nodes},         {OutputArray::Meshes, &WrittenCounts::meshes},
    {OutputArray::Materials, &WrittenCounts::materials}, {OutputArray::Textures, &WrittenCounts::textures},
    {OutputArray::Images, &WrittenCounts::images},       {OutputArray::Cameras, &WrittenCounts::cameras},
    {OutputArray::Skins, &WrittenCounts::skins},         {OutputArray::Animations, &WrittenCounts::clips}};

}  // namespace

WrittenCounts CountWritten(const WrittenDocument& document) {
  const OutputOutline& outline = document.outline;
  WrittenCounts counts;
  for (const auto& [array, count] : kArrays) counts.*count = outline.SizeOf(array);
  counts.primitives = outline.primitives;
  for (const std::uint64_t accessor : outline.indices) counts.triangles += outline.CountOf(accessor) / 3;
  for (const std::uint64_t accessor : outline.positions) counts.vertices += outline.CountOf(accessor);
  for (const std::uint64_t accessor : outline.inputs) counts.samples += outline.CountOf(accessor);
  return counts;
}

}  // namespace tool
