#include "tool/written_counts.h"

namespace tool {
namespace {

using Json = rapidjson::Value;

struct ArrayCount {
  const char* array;
  std::uint64_t WrittenCounts::*count;
};
constexpr ArrayCount kArrays[] = {{"nodes", &WrittenCounts::nodes},         {"meshes", &WrittenCounts::meshes},
                                  {"materials", &WrittenCounts::materials}, {"textures", &WrittenCounts::textures},
                                  {"images", &WrittenCounts::images},       {"cameras", &WrittenCounts::cameras},
                                  {"skins", &WrittenCounts::skins},         {"animations", &WrittenCounts::clips}};

// The count of an accessor that an object names.
std::uint64_t CountOf(const Json& root, const Json& object, const char* key) {
  if (!object.HasMember(key)) return 0;
  const auto accessors = ArrayOf(root, "accessors");
  const std::uint64_t index = NumberOf(object, key);
  return index < accessors.Size() ? NumberOf(accessors[static_cast<rapidjson::SizeType>(index)], "count") : 0;
}

void CountPrimitives(const Json& root, const Json& mesh, WrittenCounts& counts) {
  for (const Json& primitive : ArrayOf(mesh, "primitives")) {
    ++counts.primitives;
    counts.triangles += CountOf(root, primitive, "indices") / 3;
    const auto attributes = primitive.FindMember("attributes");
    if (attributes != primitive.MemberEnd()) counts.vertices += CountOf(root, attributes->value, "POSITION");
  }
}

}  // namespace

WrittenCounts CountWritten(const WrittenDocument& document) {
  const Json& root = document.root;
  WrittenCounts counts;
  for (const auto& [array, count] : kArrays) counts.*count = ArrayOf(root, array).Size();
  for (const Json& mesh : ArrayOf(root, "meshes")) CountPrimitives(root, mesh, counts);
  for (const Json& animation : ArrayOf(root, "animations"))
    for (const Json& sampler : ArrayOf(animation, "samplers")) counts.samples += CountOf(root, sampler, "input");
  return counts;
}

}  // namespace tool
