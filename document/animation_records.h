// Plain records of a document: animations.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct GltfNode;

enum class GltfPath : std::uint32_t { Translation = 1, Rotation = 2, Scale = 3, Weights = 4 };

struct GltfKeyframe {
  double time = 0;              // seconds
  std::array<double, 4> value;  // 3 used for translation and scale, 4 for rotation, 1 for weights
};

struct GltfAnimationSampler {
  std::vector<GltfKeyframe> keyframes;
  GltfPath path = GltfPath::Translation;
};

struct GltfAnimationChannel {
  GltfNode* node = nullptr;
  GltfAnimationSampler* sampler = nullptr;
  GltfPath path = GltfPath::Translation;
};

struct GltfAnimation {
  GltfAnimationSampler* CreateSampler(GltfPath path);
  GltfAnimationChannel* CreateChannel(GltfNode* node, GltfAnimationSampler* sampler, GltfPath path);

  std::string name;  // written when not empty
  std::vector<std::unique_ptr<GltfAnimationChannel>> channels;
  std::vector<std::unique_ptr<GltfAnimationSampler>> samplers;
};
