#include "document/animation_records.h"

GltfAnimationSampler* GltfAnimation::CreateSampler(GltfPath path) {
  GltfAnimationSampler* sampler = samplers.emplace_back(std::make_unique<GltfAnimationSampler>()).get();
  sampler->path = path;
  return sampler;
}

GltfAnimationChannel* GltfAnimation::CreateChannel(GltfNode* node, GltfAnimationSampler* sampler, GltfPath path) {
  GltfAnimationChannel* channel = channels.emplace_back(std::make_unique<GltfAnimationChannel>()).get();
  *channel = {node, sampler, path};
  return channel;
}
