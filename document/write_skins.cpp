#include "document/write_skins.h"

#include "document/buffers.h"

namespace {

std::uint32_t AddInverseBindMatrices(GltfDocument& document, const std::vector<Matrix4>& matrices) {
  std::vector<float> values;
  values.reserve(16 * matrices.size());
  for (const Matrix4& matrix : matrices)
    for (const double element : matrix.m) values.push_back(static_cast<float>(element));
  return AddFloats(document, std::move(values), GltfAccessorType::Mat4,
                   static_cast<std::uint32_t>(matrices.size()));
}

void AddJoints(JsonText& text, const GltfDocument& document, const std::vector<GltfNode*>& joints) {
  if (const auto first = document.nodeIndex.find(joints.front()); first != document.nodeIndex.end())
    text.Member("skeleton", first->second);
  text.Key("joints");
  text.StartArray();
  for (const GltfNode* joint : joints) {
    if (const auto found = document.nodeIndex.find(joint); found != document.nodeIndex.end())
      text.Value(found->second);
  }
  text.EndArray();
}

}  // namespace

void WriteSkin(GltfDocument& document, const GltfSkin& skin) {
  // A node with two skins gets the key twice.
  if (const auto found = document.nodeIndex.find(skin.node); found != document.nodeIndex.end())
    document.json->writtenNodes[found->second].skins.push_back(document.json->skins.Size());
  JsonText& text = document.json->skins.Append();
  text.StartObject();
  text.Member("inverseBindMatrices", AddInverseBindMatrices(document, skin.inverseBindMatrices));
  if (!skin.joints.empty()) AddJoints(text, document, skin.joints);
  text.Member("name", skin.name);
  text.EndObject();
}
