#include "animation/sampling.h"

#include "animation/sampling_plan.h"
#include "document/decompose.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <deque>

namespace {

// The buffer's length is a 32-bit sum and no key takes less than 16 bytes in it, so more keys than this
// can't be written; a range or rate that asks for more is damaged.
constexpr double kMaxKeys = 268435456;

struct SampledRecord {
  XformRecord* record;
  SampleSource source;
};

// A sampling run: the planned records with their host objects.
struct SamplingRun {
  std::vector<SampledRecord> records;
  std::deque<SampleSource::ParentMatrix> parentMatrices;
  std::size_t pathCount = 0;
};

SampleSource BindSource(const SaveState& state, const XformRecord& record, SamplingRun& run,
                        InsertionMap<IZyItem*, SampleSource::ParentMatrix*>& matrixByParent) {
  SampleSource source;
  source.locator.Set(record.item);
  CZyUser_Item item, parent;
  item.Set(record.item);
  if (IsTopLevel(state, *record.node) || ZyFailed(item.Parent(parent))) return source;
  source.parent.Set(parent.Raw());
  SampleSource::ParentMatrix*& matrix = matrixByParent[parent.Raw()];
  if (!matrix) matrix = &run.parentMatrices.emplace_back();
  source.parentMatrix = matrix;
  return source;
}

GltfAnimationSampler* AddTrack(GltfAnimation& animation, GltfNode* node, GltfPath path) {
  GltfAnimationSampler* sampler = animation.CreateSampler(path);
  animation.CreateChannel(node, sampler, path);
  return sampler;
}

SamplingRun PrepareRun(SaveState& state, GltfAnimation& animation) {
  SamplingRun run;
  InsertionMap<IZyItem*, SampleSource::ParentMatrix*> matrixByParent;
  auto& table = state.animation.sampleRecords;
  for (auto entry = table.begin(); entry != table.end(); ++entry) {
    for (XformRecord& record : entry.value()) {
      if (record.mode != 1) continue;
      if (record.doTranslation) record.translation = AddTrack(animation, record.node, GltfPath::Translation);
      if (record.doRotation) record.rotation = AddTrack(animation, record.node, GltfPath::Rotation);
      if (record.doScale) record.scale = AddTrack(animation, record.node, GltfPath::Scale);
      record.animation = &animation;
      run.pathCount += record.doTranslation + record.doRotation + record.doScale;
      run.records.push_back({&record, BindSource(state, record, run, matrixByParent)});
    }
  }
  return run;
}

// Room for the samples of the range, one more for each end that rounding may add.
void ReserveKeys(GltfAnimation& animation, double range, double rate, double maxSamples) {
  const double expected = range * rate + 2;
  const bool usable = expected > 0 && expected <= maxSamples;  // false for a NaN too
  const auto capacity = static_cast<std::size_t>(usable ? expected : 1);
  for (const auto& sampler : animation.samplers) sampler->keyframes.reserve(capacity);
}

void RunThroughTime(SaveState& state, const SamplingRun& run, double step, double maxSamples) {
  const double end = state.animation.endTime + step;
  CZyUser_ChannelRead read;
  double samples = 0;
  for (double time = state.animation.startTime; time < end;) {
    if (samples >= maxSamples) {
      state.log.Warning("Sampling stopped at time:%f, too many samples", time);
      return;
    }
    CZyUser_ChannelRead next;
    if (ZySucceeded(state.scene.Channels(nullptr, time, next))) read = std::move(next);
    for (const SampledRecord& sampled : run.records) SampleAt(*sampled.record, sampled.source, read, time);
    ++samples;
    // Added up and not multiplied: whether a last sample past the end is taken hangs on the rounding.
    const double following = time + step;
    if (!(following > time)) return;  // a rate too high for the clock, or below 0, would never end
    time = following;
  }
}

// Equal bits and not equal values: a zero's sign shows in the inverse.
bool SameBits(const Matrix4& left, const Matrix4& right) {
  using Bits = std::array<std::uint64_t, 16>;
  return std::bit_cast<Bits>(left.m) == std::bit_cast<Bits>(right.m);
}

const Matrix4& InverseOf(const Matrix4& world, SampleSource::ParentMatrix& cache) {
  if (!cache.known || !SameBits(cache.world, world)) {
    cache.world = world;
    cache.inverse = Inverse(world);
    cache.known = true;
  }
  return cache.inverse;
}

bool ReadWorld(const CZyUser_Locator& locator, const CZyUser_ChannelRead& read, Matrix4& matrix) {
  return read && ZySucceeded(locator.WorldTransform(read, matrix));
}

Matrix4 LocalMatrix(const SampleSource& source, const CZyUser_ChannelRead& read) {
  Matrix4 world, parentWorld;
  if (!ReadWorld(source.locator, read, world)) return {};
  if (!source.parentMatrix || !ReadWorld(source.parent, read, parentWorld)) return world;
  return world * InverseOf(parentWorld, *source.parentMatrix);
}

void AddKey(GltfAnimationSampler& sampler, double time, const std::array<double, 3>& value) {
  sampler.keyframes.push_back({time, {value[0], value[1], value[2], 0}});
}

}  // namespace

void SampleAt(const XformRecord& record, const SampleSource& source, const CZyUser_ChannelRead& read,
              double time) {
  if (record.mode != 1) return;
  const NodeTransform local = Decompose(LocalMatrix(source, read));
  if (record.doTranslation) AddKey(*record.translation, time, local.translation);
  if (record.doRotation) record.rotation->keyframes.push_back({time, local.rotation});
  if (record.doScale) AddKey(*record.scale, time, local.scale);
}

zyresult SampleScene(SaveState& state, double rate) {
  AnimationState& animation = state.animation;
  if (animation.sampleRecords.empty()) return ZYe_OK;
  GltfAnimation& record = *state.gltfScene->CreateAnimation();

  state.log.Info("Init FbxCurves for sampling...");
  const SamplingRun run = PrepareRun(state, record);
  const double maxSamples = kMaxKeys / static_cast<double>(std::max<std::size_t>(run.pathCount, 1));
  ReserveKeys(record, animation.endTime - animation.startTime, rate, maxSamples);

  state.log.Info("Sampling...");
  RunThroughTime(state, run, 1.0 / rate, maxSamples);
  state.log.Info("Deinit FbxCurves after sampling...");
  state.log.Info("   start:%f end:%f (%f - %f)", animation.startTime, animation.endTime,
                 animation.startTime * rate, animation.endTime * rate);
  return ZYe_OK;
}
