// Plain records of a document: materials, textures, image files.
#pragma once

#include <array>
#include <cstdint>
#include <string>

enum class GltfShadingModel : std::uint32_t { MetallicRoughness = 0, Unlit = 1 };
enum class GltfAlphaMode : std::uint32_t { Opaque = 0, Mask = 1, Blend = 2 };
enum class GltfWrapMode : std::uint32_t { Repeat = 1, MirroredRepeat = 2, ClampToEdge = 3 };
enum class GltfImageKind : std::uint32_t { Unknown = 0, Png = 1, Jpeg = 2 };

struct GltfTexture {
  explicit GltfTexture(std::string text) : name(std::move(text)) {}

  std::string name;
  std::string filePath;   // the host's path of the image file
  std::string uvMapName;  // key into uvIndexByName of the mesh being written
  // Host values as they come: any other value than the three of GltfWrapMode repeats.
  GltfWrapMode wrapU = GltfWrapMode::Repeat;
  GltfWrapMode wrapV = GltfWrapMode::Repeat;
  double offsetU = 0, offsetV = 0;
  double rotation = 0;  // radians, about the middle of the image
  double scaleU = 1, scaleV = 1;
};

struct GltfMaterial {
  explicit GltfMaterial(std::string text) : name(std::move(text)) {}

  std::string name;
  GltfShadingModel shadingModel = GltfShadingModel::MetallicRoughness;
  std::array<double, 4> baseColorFactor = {1, 1, 1, 1};
  GltfTexture* baseColorTexture = nullptr;
  float metallicFactor = 1;
  float roughnessFactor = 1;
  GltfTexture* metallicRoughnessTexture = nullptr;
  std::array<double, 3> emissiveFactor = {0, 0, 0};
  GltfAlphaMode alphaMode = GltfAlphaMode::Opaque;
  float alphaCutoff = 0.5f;  // not written
  bool doubleSided = false;
  GltfTexture* normalTexture = nullptr;
  double normalScale = 1;        // written when not exactly 1
  double occlusionStrength = 1;  // written when not exactly 1
  GltfTexture* occlusionTexture = nullptr;
  GltfTexture* emissiveTexture = nullptr;
};

struct GltfImageFile {
  std::string path;
  GltfImageKind kind = GltfImageKind::Unknown;
};
