#include "importer/source_check.h"

#include "importer/import_model.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace importer {
namespace {

constexpr std::size_t kMostNodes = 1u << 22;
constexpr unsigned kMostVertices = 1u << 31;

[[noreturn]] void Refuse(const std::string& text) { throw ImportError(text); }

bool AreFinite(const aiVector3D& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool AreFinite(const aiMatrix4x4& matrix) {
  for (unsigned row = 0; row < 4; ++row)
    for (unsigned column = 0; column < 4; ++column)
      if (!std::isfinite(matrix[row][column])) return false;
  return true;
}

template <class T>
void CheckList(const std::string& what, T* const* list, unsigned count) {
  if (count > 0 && !list) Refuse(what + ": missing");
  for (unsigned place = 0; place < count; ++place)
    if (!list[place]) Refuse(fmt::format("{} {}: missing", what, place));
}

void CheckBones(const aiMesh& mesh, const std::string& name) {
  CheckList(name + ", bone", mesh.mBones, mesh.mNumBones);
  for (unsigned i = 0; i < mesh.mNumBones; ++i) {
    const aiBone& bone = *mesh.mBones[i];
    const std::string place = fmt::format("{}, bone \"{}\"", name, TextOf(bone.mName));
    if (!AreFinite(bone.mOffsetMatrix)) Refuse(place + ": its matrix isn't finite");
    if (bone.mNumWeights > 0 && !bone.mWeights) Refuse(place + ": weights are missing");
    for (unsigned w = 0; w < bone.mNumWeights; ++w) {
      const aiVertexWeight& weight = bone.mWeights[w];
      if (weight.mVertexId >= mesh.mNumVertices) {
        Refuse(fmt::format("{}, weight {}: vertex {} of {}", place, w, weight.mVertexId, mesh.mNumVertices));
      }
      if (!std::isfinite(weight.mWeight)) Refuse(fmt::format("{}, weight {}: not finite", place, w));
    }
  }
}

void CheckMesh(const aiMesh& mesh, unsigned index, unsigned materialCount) {
  const std::string name = fmt::format("mesh {} \"{}\"", index, TextOf(mesh.mName));
  if (mesh.mNumVertices > kMostVertices)
    Refuse(fmt::format("{}: {} vertices are too many", name, mesh.mNumVertices));
  if (mesh.mNumVertices > 0 && !mesh.mVertices) Refuse(name + ": vertices are missing");
  if (mesh.mNumFaces > 0 && !mesh.mFaces) Refuse(name + ": faces are missing");
  if (mesh.mMaterialIndex >= materialCount) {
    Refuse(fmt::format("{}: material {} of {}", name, mesh.mMaterialIndex, materialCount));
  }
  for (unsigned vertex = 0; vertex < mesh.mNumVertices; ++vertex)
    if (!AreFinite(mesh.mVertices[vertex])) Refuse(fmt::format("{}, vertex {}: not finite", name, vertex));
  for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
    const aiFace& face = mesh.mFaces[f];
    if (face.mNumIndices > 0 && !face.mIndices) Refuse(fmt::format("{}, face {}: missing", name, f));
    for (unsigned i = 0; i < face.mNumIndices; ++i) {
      if (face.mIndices[i] < mesh.mNumVertices) continue;
      Refuse(fmt::format("{}, face {}: vertex {} of {}", name, f, face.mIndices[i], mesh.mNumVertices));
    }
  }
  CheckBones(mesh, name);
}

void CheckNodes(const aiScene& source) {
  std::vector<const aiNode*> pending = {source.mRootNode};
  for (std::size_t count = 1; !pending.empty(); ++count) {
    const aiNode& node = *pending.back();
    pending.pop_back();
    const std::string name = fmt::format("node \"{}\"", TextOf(node.mName));
    if (count > kMostNodes) Refuse(fmt::format("more than {} nodes", kMostNodes));
    if (!AreFinite(node.mTransformation)) Refuse(name + ": its matrix isn't finite");
    if (node.mNumMeshes > 0 && !node.mMeshes) Refuse(name + ": meshes are missing");
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      if (node.mMeshes[i] < source.mNumMeshes) continue;
      Refuse(fmt::format("{}: mesh {} of {}", name, node.mMeshes[i], source.mNumMeshes));
    }
    CheckList(name + ", child", node.mChildren, node.mNumChildren);
    pending.insert(pending.end(), node.mChildren, node.mChildren + node.mNumChildren);
  }
}

template <class Key>
void CheckKeys(const std::string& what, const Key* keys, unsigned count) {
  if (count > 0 && !keys) Refuse(what + ": missing");
  for (unsigned i = 0; i < count; ++i) {
    bool finite = std::isfinite(keys[i].mTime);
    if constexpr (std::is_same_v<Key, aiQuatKey>) {
      const aiQuaternion& q = keys[i].mValue;
      finite = finite && std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
    } else {
      finite = finite && AreFinite(keys[i].mValue);
    }
    if (!finite) Refuse(fmt::format("{} {}: not finite", what, i));
  }
}

void CheckAnimation(const aiAnimation& animation, unsigned index) {
  const std::string name = fmt::format("animation {} \"{}\"", index, TextOf(animation.mName));
  if (!std::isfinite(animation.mTicksPerSecond) || !std::isfinite(animation.mDuration)) {
    Refuse(name + ": its duration isn't finite");
  }
  CheckList(name + ", channel", animation.mChannels, animation.mNumChannels);
  for (unsigned i = 0; i < animation.mNumChannels; ++i) {
    const aiNodeAnim& channel = *animation.mChannels[i];
    const std::string place = fmt::format("{}, node \"{}\"", name, TextOf(channel.mNodeName));
    CheckKeys(place + ", position key", channel.mPositionKeys, channel.mNumPositionKeys);
    CheckKeys(place + ", rotation key", channel.mRotationKeys, channel.mNumRotationKeys);
    CheckKeys(place + ", scale key", channel.mScalingKeys, channel.mNumScalingKeys);
  }
}

}  // namespace

std::string TextOf(const aiString& text) {
  return readers::ToUtf8(std::string(text.data, strnlen(text.data, sizeof(text.data))));
}

void CheckSource(const aiScene& source) {
  if (!source.mRootNode) Refuse("holds no node");
  CheckList("mesh", source.mMeshes, source.mNumMeshes);
  CheckList("material", source.mMaterials, source.mNumMaterials);
  CheckList("texture", source.mTextures, source.mNumTextures);
  CheckList("animation", source.mAnimations, source.mNumAnimations);
  CheckList("camera", source.mCameras, source.mNumCameras);
  CheckList("light", source.mLights, source.mNumLights);
  for (unsigned i = 0; i < source.mNumMeshes; ++i) CheckMesh(*source.mMeshes[i], i, source.mNumMaterials);
  CheckNodes(source);
  for (unsigned i = 0; i < source.mNumAnimations; ++i) CheckAnimation(*source.mAnimations[i], i);
}

}  // namespace importer
