#include "document/write_animations.h"

#include "document/buffers.h"

#include <array>
#include <cmath>

namespace {

using SamplerIndices = InsertionMap<const GltfAnimationSampler*, std::uint32_t>;

struct PathShape {
  const char* text;
  GltfAccessorType type;
  std::size_t components;
};

// By GltfPath. No caller makes a sampler of another path.
constexpr std::array<PathShape, 5> kPathShapes = {{{"", GltfAccessorType::Scalar, 1},
                                                   {"translation", GltfAccessorType::Vec3, 3},
                                                   {"rotation", GltfAccessorType::Vec4, 4},
                                                   {"scale", GltfAccessorType::Vec3, 3},
                                                   {"weights", GltfAccessorType::Scalar, 1}}};

const PathShape& ShapeOf(GltfPath path) {
  const auto number = static_cast<std::size_t>(path);
  return kPathShapes[number < kPathShapes.size() ? number : 0];
}

std::uint32_t AddTimes(GltfDocument& document, const std::vector<GltfKeyframe>& keys) {
  std::vector<float> times(keys.size());
  double bounds[] = {0, 0};  // f32 values
  if (!keys.empty()) bounds[0] = bounds[1] = static_cast<float>(keys.front().time);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const double time = keys[i].time;
    times[i] = static_cast<float>(time);
    // The unrounded time is compared, which decides when a time is NaN or between two f32 values.
    if (time < bounds[0]) bounds[0] = times[i];
    if (time > bounds[1]) bounds[1] = times[i];
  }
  return AddFloats(document, std::move(times), GltfAccessorType::Scalar, static_cast<std::uint32_t>(keys.size()),
                   {&bounds[0], 1}, {&bounds[1], 1});
}

std::array<double, 4> Normalized(std::array<double, 4> q) {
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(length > 0)) return {0, 0, 0, 1};
  for (double& component : q) component /= length;
  return q;
}

std::uint32_t AddKeyValues(GltfDocument& document, const std::vector<GltfKeyframe>& keys, GltfPath path) {
  const PathShape& shape = ShapeOf(path);
  std::vector<float> values(keys.size() * shape.components);
  auto next = values.begin();
  for (const GltfKeyframe& key : keys) {
    const auto value = path == GltfPath::Rotation ? Normalized(key.value) : key.value;
    for (std::size_t i = 0; i < shape.components; ++i) *next++ = static_cast<float>(value[i]);
  }
  return AddFloats(document, std::move(values), shape.type, static_cast<std::uint32_t>(keys.size()));
}

// Accessors of a sampler.
struct WrittenSampler {
  std::uint32_t input = 0, output = 0;
};

WrittenSampler AddSamplerData(GltfDocument& document, GltfAnimationSampler& sampler) {
  // Freed on return: the blocks hold the values from here on.
  const std::vector<GltfKeyframe> keys = std::move(sampler.keyframes);
  const std::uint32_t input = AddTimes(document, keys);
  return {input, AddKeyValues(document, keys, sampler.path)};
}

// A sampler or node that isn't in the file leaves its key out.
void WriteChannel(JsonText& text, const GltfDocument& document, const GltfAnimationChannel& channel,
                  const SamplerIndices& samplerIndices) {
  text.StartObject();
  if (const auto sampler = samplerIndices.find(channel.sampler); sampler != samplerIndices.end())
    text.Member("sampler", sampler->second);
  text.Key("target");
  text.StartObject();
  if (const auto node = document.nodeIndex.find(channel.node); node != document.nodeIndex.end())
    text.Member("node", node->second);
  text.Member("path", ShapeOf(channel.path).text);
  text.EndObject();
  text.EndObject();
}

void WriteAnimationSampler(JsonText& text, const WrittenSampler& sampler) {
  text.StartObject();
  text.Member("input", sampler.input);
  text.Member("output", sampler.output);
  text.Member("interpolation", "LINEAR");
  text.EndObject();
}

}  // namespace

void WriteAnimation(GltfDocument& document, GltfAnimation& animation) {
  if (animation.channels.empty() && animation.samplers.empty()) return;
  std::vector<WrittenSampler> samplers;
  SamplerIndices samplerIndices;
  for (const auto& sampler : animation.samplers) {
    samplerIndices.insert({sampler.get(), static_cast<std::uint32_t>(samplers.size())});
    samplers.push_back(AddSamplerData(document, *sampler));
  }
  JsonText& text = document.json->animations.Append();
  text.StartObject();
  text.Key("channels");
  text.StartArray();
  for (const auto& channel : animation.channels) WriteChannel(text, document, *channel, samplerIndices);
  text.EndArray();
  text.Key("samplers");
  text.StartArray();
  for (const WrittenSampler& sampler : samplers) WriteAnimationSampler(text, sampler);
  text.EndArray();
  if (!animation.name.empty()) text.Member("name", animation.name);
  text.EndObject();
}
