#include "document/write_skins.h"

#include "document/buffers.h"
#include "document/json_values.h"

namespace {

std::uint32_t AddInverseBindMatrices(GltfDocument& document, const std::vector<Matrix4>& matrices) {
  std::vector<float> values;
  values.reserve(16 * matrices.size());
  for (const Matrix4& matrix : matrices)
    for (const double element : matrix.m) values.push_back(static_cast<float>(element));
  return AddFloats(document, std::move(values), GltfAccessorType::Mat4,
                   static_cast<std::uint32_t>(matrices.size()));
}

void AddJoints(JsonValue& object, const GltfDocument& document, const std::vector<GltfNode*>& joints) {
  JsonAllocator& allocator = *document.allocator;
  if (const auto first = document.nodeIndex.find(joints.front()); first != document.nodeIndex.end())
    object.AddMember("skeleton", first->second, allocator);
  JsonValue indices(rapidjson::kArrayType);
  for (const GltfNode* joint : joints) {
    if (const auto found = document.nodeIndex.find(joint); found != document.nodeIndex.end())
      indices.PushBack(found->second, allocator);
  }
  object.AddMember("joints", indices, allocator);
}

}  // namespace

void WriteSkin(GltfDocument& document, const GltfSkin& skin) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("inverseBindMatrices", AddInverseBindMatrices(document, skin.inverseBindMatrices), allocator);
  if (!skin.joints.empty()) AddJoints(object, document, skin.joints);
  object.AddMember("name", TextValue(skin.name, allocator), allocator);
  // A node with two skins gets the key twice.
  if (const auto found = document.nodeIndex.find(skin.node); found != document.nodeIndex.end())
    document.json.nodes[found->second].AddMember("skin", document.json.skins.Size(), allocator);
  AppendValue(document.json.skins, std::move(object), allocator);
}
