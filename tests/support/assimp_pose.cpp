#include "tests/support/assimp_pose.h"

#include "importer/file_access.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

namespace test_support {
namespace {

// What lies between the keys of a list at a time.
template <class Key, class Mix>
auto ValueAt(const Key* keys, unsigned count, double ticks, Mix mix) {
  unsigned after = 0;
  while (after < count && keys[after].mTime <= ticks) ++after;
  if (after == 0) return keys[0].mValue;
  if (after == count) return keys[count - 1].mValue;
  const Key &from = keys[after - 1], &to = keys[after];
  return mix(from.mValue, to.mValue, static_cast<float>((ticks - from.mTime) / (to.mTime - from.mTime)));
}

aiMatrix4x4 MatrixAt(const aiNodeAnim& channel, double ticks) {
  const auto mix = [](const aiVector3D& a, const aiVector3D& b, float part) { return a + (b - a) * part; };
  const auto turn = [](const aiQuaternion& a, const aiQuaternion& b, float part) {
    aiQuaternion result;
    aiQuaternion::Interpolate(result, a, b, part);
    return result.Normalize();
  };
  // Assimp's own constructor from the three takes them in another order.
  aiMatrix4x4 position, scale;
  aiMatrix4x4::Translation(ValueAt(channel.mPositionKeys, channel.mNumPositionKeys, ticks, mix), position);
  aiMatrix4x4::Scaling(ValueAt(channel.mScalingKeys, channel.mNumScalingKeys, ticks, mix), scale);
  return position *
         aiMatrix4x4(ValueAt(channel.mRotationKeys, channel.mNumRotationKeys, ticks, turn).GetMatrix()) * scale;
}

using Worlds = std::map<const aiNode*, aiMatrix4x4>;

void AddWorlds(const aiNode& node, const aiMatrix4x4& parent, const std::map<std::string, aiMatrix4x4>& moved,
               Worlds& worlds) {
  const auto own = moved.find(node.mName.C_Str());
  worlds[&node] = parent * (own == moved.end() ? node.mTransformation : own->second);
  for (unsigned i = 0; i < node.mNumChildren; ++i) AddWorlds(*node.mChildren[i], worlds[&node], moved, worlds);
}

struct Vertex {
  aiVector3D sum;
  float weight = 0;
  int influences = 0;
};

void AddPoints(const aiScene& scene, const aiMesh& mesh, const aiNode& node, const Worlds& worlds,
               std::size_t stride, std::vector<Point>& points) {
  std::vector<Vertex> vertices(mesh.mNumVertices);
  for (unsigned b = 0; b < mesh.mNumBones; ++b) {
    const aiBone& bone = *mesh.mBones[b];
    const aiNode* driver = scene.mRootNode->FindNode(bone.mName);
    if (!driver) continue;
    const aiMatrix4x4 move = worlds.at(driver) * bone.mOffsetMatrix;
    for (unsigned w = 0; w < bone.mNumWeights; ++w) {
      Vertex& vertex = vertices[bone.mWeights[w].mVertexId];
      if (bone.mWeights[w].mWeight <= 0) continue;
      vertex.sum += move * mesh.mVertices[bone.mWeights[w].mVertexId] * bone.mWeights[w].mWeight;
      vertex.weight += bone.mWeights[w].mWeight;
      ++vertex.influences;
    }
  }
  std::size_t seen = 0;
  for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
    const aiFace& face = mesh.mFaces[f];
    for (unsigned i = 0; i < face.mNumIndices && face.mNumIndices > 2; ++i) {
      const Vertex& vertex = vertices[face.mIndices[i]];
      if (vertex.influences > 4 || seen++ % stride != 0) continue;
      const aiVector3D p =
          vertex.influences > 0 ? vertex.sum / vertex.weight : worlds.at(&node) * mesh.mVertices[face.mIndices[i]];
      points.push_back({static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)});
    }
  }
}

}  // namespace

AssimpModel::AssimpModel(const std::filesystem::path& file) : reader_(std::make_unique<Assimp::Importer>()) {
  reader_->SetIOHandler(new importer::FolderAccess(file, opened_));
  reader_->SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
  reader_->SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
  reader_->SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
  if (!reader_->ReadFile(file.string(), 0)) throw std::runtime_error(reader_->GetErrorString());
}

AssimpModel::~AssimpModel() = default;

const aiScene& AssimpModel::Scene() const { return *reader_->GetScene(); }

std::vector<Point> AssimpModel::Pose(const std::string& animation, double seconds, std::size_t stride) const {
  const aiScene& scene = Scene();
  std::map<std::string, aiMatrix4x4> moved;
  for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
    const aiAnimation& candidate = *scene.mAnimations[i];
    if (animation != candidate.mName.C_Str()) continue;
    for (unsigned c = 0; c < candidate.mNumChannels; ++c) {
      const aiNodeAnim& channel = *candidate.mChannels[c];
      moved.emplace(channel.mNodeName.C_Str(), MatrixAt(channel, seconds * candidate.mTicksPerSecond));
    }
  }
  aiMatrix4x4 unit;
  float centimeters = 0;
  if (scene.mMetaData && scene.mMetaData->Get("UnitScaleFactor", centimeters))
    aiMatrix4x4::Scaling(aiVector3D(centimeters / 100), unit);
  Worlds worlds;
  AddWorlds(*scene.mRootNode, unit, moved, worlds);
  std::vector<Point> points;
  for (const auto& [node, world] : worlds)
    for (unsigned i = 0; i < node->mNumMeshes; ++i)
      AddPoints(scene, *scene.mMeshes[node->mMeshes[i]], *node, worlds, stride, points);
  return points;
}

}  // namespace test_support
