#include "document/write_animations.h"

#include "document/buffers.h"
#include "document/json_values.h"

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

JsonValue OneNumber(float value, JsonAllocator& allocator) {
  return NumbersValue(std::array<double, 1>{static_cast<double>(value)}, allocator);
}

std::uint32_t AddTimes(GltfDocument& document, const std::vector<GltfKeyframe>& keys) {
  std::vector<float> times;
  times.reserve(keys.size());
  for (const GltfKeyframe& key : keys) times.push_back(static_cast<float>(key.time));
  float min = times.empty() ? 0.0f : times.front();
  float max = min;
  // The unrounded time is compared, which decides when a time is NaN or between two f32 values.
  for (const GltfKeyframe& key : keys) {
    if (key.time < static_cast<double>(min)) min = static_cast<float>(key.time);
    if (key.time > static_cast<double>(max)) max = static_cast<float>(key.time);
  }
  JsonAllocator& allocator = *document.allocator;
  return AddFloats(document, std::move(times), GltfAccessorType::Scalar, static_cast<std::uint32_t>(keys.size()),
                   OneNumber(min, allocator), OneNumber(max, allocator));
}

std::array<double, 4> Normalized(std::array<double, 4> q) {
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(length > 0)) return {0, 0, 0, 1};
  for (double& component : q) component /= length;
  return q;
}

std::uint32_t AddKeyValues(GltfDocument& document, const std::vector<GltfKeyframe>& keys, GltfPath path) {
  const PathShape& shape = ShapeOf(path);
  std::vector<float> values;
  values.reserve(keys.size() * shape.components);
  for (const GltfKeyframe& key : keys) {
    const auto value = path == GltfPath::Rotation ? Normalized(key.value) : key.value;
    for (std::size_t i = 0; i < shape.components; ++i) values.push_back(static_cast<float>(value[i]));
  }
  return AddFloats(document, std::move(values), shape.type, static_cast<std::uint32_t>(keys.size()));
}

std::uint32_t WriteAnimationSampler(GltfDocument& document, GltfAnimationSampler& sampler, JsonValue& samplers) {
  JsonAllocator& allocator = *document.allocator;
  // Freed on return: the blocks hold the values from here on.
  const std::vector<GltfKeyframe> keys = std::move(sampler.keyframes);
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("input", AddTimes(document, keys), allocator);
  object.AddMember("output", AddKeyValues(document, keys, sampler.path), allocator);
  object.AddMember("interpolation", "LINEAR", allocator);
  return AppendValue(samplers, std::move(object), allocator);
}

// A sampler or node that isn't in the file leaves its key out.
JsonValue MakeChannel(const GltfDocument& document, const GltfAnimationChannel& channel,
                      const SamplerIndices& samplerIndices) {
  JsonAllocator& allocator = *document.allocator;
  JsonValue target(rapidjson::kObjectType);
  if (const auto node = document.nodeIndex.find(channel.node); node != document.nodeIndex.end())
    target.AddMember("node", node->second, allocator);
  target.AddMember("path", rapidjson::StringRef(ShapeOf(channel.path).text), allocator);
  JsonValue object(rapidjson::kObjectType);
  if (const auto sampler = samplerIndices.find(channel.sampler); sampler != samplerIndices.end())
    object.AddMember("sampler", sampler->second, allocator);
  object.AddMember("target", target, allocator);
  return object;
}

}  // namespace

void WriteAnimation(GltfDocument& document, GltfAnimation& animation) {
  if (animation.channels.empty() && animation.samplers.empty()) return;
  JsonAllocator& allocator = *document.allocator;
  JsonValue channels(rapidjson::kArrayType);
  JsonValue samplers(rapidjson::kArrayType);
  SamplerIndices samplerIndices;
  for (const auto& sampler : animation.samplers)
    samplerIndices.insert({sampler.get(), WriteAnimationSampler(document, *sampler, samplers)});
  for (const auto& channel : animation.channels)
    AppendValue(channels, MakeChannel(document, *channel, samplerIndices), allocator);
  JsonValue object(rapidjson::kObjectType);
  object.AddMember("channels", channels, allocator);
  object.AddMember("samplers", samplers, allocator);
  if (!animation.name.empty()) object.AddMember("name", TextValue(animation.name, allocator), allocator);
  AppendValue(document.json.animations, std::move(object), allocator);
}
