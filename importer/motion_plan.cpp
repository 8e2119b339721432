#include "importer/motion_plan.h"

#include "importer/axes.h"
#include "importer/import_model.h"
#include "importer/source_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

namespace importer {
namespace {

constexpr double kMostSamples = 1u << 24;  // of all nodes and clips together
constexpr double kDefaultTicks = 25;       // a second, where the file says nothing

double SecondsPerTick(const aiAnimation& animation) {
  return 1 / (animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : kDefaultTicks);
}

Vector3 FromAssimp(const aiVector3D& v) {
  return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

Vector3 Mix(const Vector3& from, const Vector3& to, double part) {
  return {from[0] + (to[0] - from[0]) * part, from[1] + (to[1] - from[1]) * part,
          from[2] + (to[2] - from[2]) * part};
}

Quaternion Mix(const Quaternion& from, const Quaternion& to, double part) { return Interpolate(from, to, part); }

Quaternion FromKey(const aiQuaternion& value) { return importer::FromAssimp(value); }
Vector3 FromKey(const aiVector3D& value) { return FromAssimp(value); }

Quaternion TurnOf(const Placement& placement) {
  return QuaternionOf(MatrixOf({{1, 1, 1}, placement.angles, {0, 0, 0}}));
}

template <class Value>
struct Track {
  std::vector<double> times;  // ascending strictly
  std::vector<Value> values;

  Value At(double time) const {
    const auto after = std::upper_bound(times.begin(), times.end(), time);
    const auto place = static_cast<std::size_t>(after - times.begin());
    if (place == 0) return values.front();
    if (after == times.end()) return values.back();
    const double part = (time - times[place - 1]) / (times[place] - times[place - 1]);
    return Mix(values[place - 1], values[place], part);
  }
};

// Of keys at one time the last counts.
template <class Value, class Key>
Track<Value> MakeTrack(const Key* keys, unsigned count, double secondsPerTick, const Value& otherwise) {
  std::map<double, Value> byTime;
  for (unsigned i = 0; i < count; ++i)
    byTime.insert_or_assign(keys[i].mTime * secondsPerTick, FromKey(keys[i].mValue));
  if (byTime.empty()) byTime.emplace(0, otherwise);
  Track<Value> track;
  for (const auto& [time, value] : byTime) {
    track.times.push_back(time);
    track.values.push_back(value);
  }
  return track;
}

// One node of Assimp in motion.
struct Tracks {
  Track<Vector3> position;
  Track<Quaternion> rotation;
  Track<Vector3> scale;

  Matrix4 MatrixAt(double time) const {
    return MatrixOf({scale.At(time), AnglesOf(rotation.At(time), {0, 0, 0}), position.At(time)});
  }
};

Tracks MakeTracks(const aiNodeAnim& channel, double secondsPerTick, const Matrix4& rest) {
  const Placement placement = DecomposeNearly(rest);
  return {MakeTrack(channel.mPositionKeys, channel.mNumPositionKeys, secondsPerTick, placement.position),
          MakeTrack(channel.mRotationKeys, channel.mNumRotationKeys, secondsPerTick, TurnOf(placement)),
          MakeTrack(channel.mScalingKeys, channel.mNumScalingKeys, secondsPerTick, placement.scale)};
}

// The time from the first key of an animation to its last, and to its end where it says one.
struct Range {
  double start = 0, end = 0;
};

template <class Key>
void Widen(const Key* keys, unsigned count, double& first, double& last) {
  for (unsigned i = 0; i < count; ++i) {
    first = std::min(first, keys[i].mTime);
    last = std::max(last, keys[i].mTime);
  }
}

std::optional<Range> RangeOf(const aiAnimation& animation) {
  double first = HUGE_VAL, last = -HUGE_VAL;
  for (unsigned i = 0; i < animation.mNumChannels; ++i) {
    const aiNodeAnim& channel = *animation.mChannels[i];
    Widen(channel.mPositionKeys, channel.mNumPositionKeys, first, last);
    Widen(channel.mRotationKeys, channel.mNumRotationKeys, first, last);
    Widen(channel.mScalingKeys, channel.mNumScalingKeys, first, last);
  }
  if (first > last) return std::nullopt;
  const double seconds = SecondsPerTick(animation);
  return Range{first * seconds, std::max(last, animation.mDuration) * seconds};
}

// FBX numbers its frame rates.
constexpr double kFbxRates[] = {0,  120,  100,           60, 50, 48, 30, 30, 30000.0 / 1001, 30000.0 / 1001, 25,
                                24, 1000, 24000.0 / 1001};
constexpr int kFbxCustomRate = 14;

// The lowest of the usual rates on whose frames all keys fall.
double RateOfKeys(const aiScene& source) {
  constexpr double kRates[] = {24, 25, 30, 50, 60, 100, 120};
  for (const double rate : kRates) {
    bool fits = true;
    for (unsigned i = 0; i < source.mNumAnimations && fits; ++i) {
      const aiAnimation& animation = *source.mAnimations[i];
      const double framesPerTick = SecondsPerTick(animation) * rate;
      for (unsigned c = 0; c < animation.mNumChannels && fits; ++c) {
        const aiNodeAnim& channel = *animation.mChannels[c];
        fits = std::all_of(channel.mRotationKeys, channel.mRotationKeys + channel.mNumRotationKeys,
                           [&](const aiQuatKey& key) {
                             const double frame = key.mTime * framesPerTick;
                             return std::abs(frame - std::round(frame)) < 0.01;
                           });
      }
    }
    if (fits) return rate;
  }
  return 30;
}

double RateOf(const aiScene& source) {
  const int mode = static_cast<int>(MetadataNumber(source, "FrameRate").value_or(-1));
  if (mode > 0 && mode < static_cast<int>(std::size(kFbxRates))) return kFbxRates[mode];
  const double custom = MetadataNumber(source, "CustomFrameRate").value_or(0);
  if (mode == kFbxCustomRate && custom >= 1 && custom <= 1000) return custom;
  return RateOfKeys(source);
}

bool DiffersFrom(const Vector3& rest, const VectorKeys& keys, double tolerance) {
  return std::any_of(keys.values.begin(), keys.values.end(), [&](const Vector3& value) {
    for (std::size_t i = 0; i < 3; ++i)
      if (std::abs(value[i] - rest[i]) > tolerance) return true;
    return false;
  });
}

double LargestOf(const Vector3& v) { return std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])}); }

class MotionPlanner {
 public:
  MotionPlanner(const aiScene& source, const NodePlan& plan, std::vector<std::string>& warnings)
      : source_(source), plan_(plan), warnings_(warnings) {
    result_.rest.resize(plan.nodes.size());
    result_.moves.resize(plan.nodes.size());
    result_.movesScaled.resize(plan.nodes.size());
  }

  MotionPlan Plan() {
    SetRange();
    for (unsigned i = 0; i < source_.mNumAnimations; ++i) AddClip(*source_.mAnimations[i], i);
    FindScaledMoves();
    return std::move(result_);
  }

 private:
  // What one clip says of one planned node: of the node as a whole, or of parts of its chain.
  struct Channels {
    const aiNodeAnim* whole = nullptr;
    std::map<std::string, const aiNodeAnim*> parts;
  };

  void SetRange();
  void AddClip(const aiAnimation& animation, unsigned index);
  std::vector<double> Frames(double first, double last);
  NodeMotion ReadWhole(NodeIndex index, const Tracks& tracks);
  NodeMotion ReadChain(NodeIndex index, const Channels& channels, double secondsPerTick);
  // Leaves out what stays at rest.
  void AddMotion(NodeMotion motion, PlannedClip& clip);
  void FindScaledMoves();

  const PlannedNode& Node(NodeIndex index) const { return plan_.nodes[static_cast<std::size_t>(index)]; }
  const Placement& Rest(NodeIndex index) const { return result_.rest[static_cast<std::size_t>(index)]; }

  const aiScene& source_;
  const NodePlan& plan_;
  std::vector<std::string>& warnings_;
  MotionPlan result_;
  double samples_ = 0;
};

void MotionPlanner::SetRange() {
  result_.fps = RateOf(source_);
  std::optional<Range> all;
  for (unsigned i = 0; i < source_.mNumAnimations; ++i) {
    const std::optional<Range> range = RangeOf(*source_.mAnimations[i]);
    if (range) all = all ? Range{std::min(all->start, range->start), std::max(all->end, range->end)} : *range;
  }
  if (!all) return;
  if ((all->end - all->start) * result_.fps > kMostSamples)
    throw ImportError(fmt::format("animations of {} seconds are too long", all->end - all->start));
  result_.start = all->start;
  result_.end = all->end;
}

std::vector<double> MotionPlanner::Frames(double first, double last) {
  const double from = std::floor((first - result_.start) * result_.fps + 1e-6);
  const double to = std::ceil((last - result_.start) * result_.fps - 1e-6);
  samples_ += to - from + 1;
  if (samples_ > kMostSamples) throw ImportError("the animations have too many frames for their nodes");
  std::vector<double> times;
  for (double frame = from; frame <= to; ++frame) times.push_back(result_.start + frame / result_.fps);
  return times;
}

NodeMotion MotionPlanner::ReadWhole(NodeIndex index, const Tracks& tracks) {
  NodeMotion motion;
  motion.node = index;
  motion.position = VectorKeys{tracks.position.times, tracks.position.values};
  motion.scale = VectorKeys{tracks.scale.times, tracks.scale.values};
  // The host's angles don't run between keys as quaternions do, so each frame gets its own.
  motion.angles = VectorKeys{Frames(tracks.rotation.times.front(), tracks.rotation.times.back()), {}};
  Vector3 angles = Rest(index).angles;
  for (const double time : motion.angles->times) {
    angles = AnglesOf(tracks.rotation.At(time), angles);
    motion.angles->values.push_back(angles);
  }
  return motion;
}

NodeMotion MotionPlanner::ReadChain(NodeIndex index, const Channels& channels, double secondsPerTick) {
  struct Part {
    Matrix4 rest;
    std::optional<Tracks> tracks;
  };
  std::vector<Part> parts;
  double first = HUGE_VAL, last = -HUGE_VAL;
  for (const aiNode* node : Node(index).chain) {
    Part part = {importer::FromAssimp(node->mTransformation), std::nullopt};
    const auto channel = channels.parts.find(node->mName.C_Str());
    if (channel != channels.parts.end()) {
      part.tracks = MakeTracks(*channel->second, secondsPerTick, part.rest);
      first = std::min({first, part.tracks->position.times.front(), part.tracks->rotation.times.front(),
                        part.tracks->scale.times.front()});
      last = std::max({last, part.tracks->position.times.back(), part.tracks->rotation.times.back(),
                       part.tracks->scale.times.back()});
    }
    parts.push_back(std::move(part));
  }
  NodeMotion motion;
  motion.node = index;
  const std::vector<double> times = Frames(first, last);
  motion.position = motion.angles = motion.scale = VectorKeys{times, {}};
  Vector3 angles = Rest(index).angles;
  for (const double time : times) {
    std::vector<Matrix4> matrices;
    for (const Part& part : parts) matrices.push_back(part.tracks ? part.tracks->MatrixAt(time) : part.rest);
    const Placement placement = DecomposeNearly(ChainMatrix(matrices));
    angles = AnglesOf(TurnOf(placement), angles);
    motion.position->values.push_back(placement.position);
    motion.angles->values.push_back(angles);
    motion.scale->values.push_back(placement.scale);
  }
  return motion;
}

void MotionPlanner::AddMotion(NodeMotion motion, PlannedClip& clip) {
  const Placement& rest = Rest(motion.node);
  // Files keep single precision.
  double reach = LargestOf(rest.position);
  for (const Vector3& value : motion.position->values) reach = std::max(reach, LargestOf(value));
  if (!DiffersFrom(rest.position, *motion.position, 1e-6 * reach)) motion.position.reset();
  if (!DiffersFrom(rest.angles, *motion.angles, 1e-5)) motion.angles.reset();
  if (!DiffersFrom(rest.scale, *motion.scale, 1e-5 * LargestOf(rest.scale))) motion.scale.reset();
  if (!motion.position && !motion.angles && !motion.scale) return;
  result_.moves[static_cast<std::size_t>(motion.node)] = true;
  clip.motions.push_back(std::move(motion));
}

void MotionPlanner::AddClip(const aiAnimation& animation, unsigned index) {
  PlannedClip clip;
  clip.name = TextOf(animation.mName);
  if (clip.name.empty())
    clip.name = source_.mNumAnimations == 1 ? "Animation" : fmt::format("Animation {}", index + 1);
  if (animation.mNumMeshChannels > 0 || animation.mNumMorphMeshChannels > 0)
    warnings_.push_back(fmt::format("animation \"{}\": animated morph shapes are not carried over", clip.name));
  std::map<NodeIndex, Channels> byNode;
  for (unsigned i = 0; i < animation.mNumChannels; ++i) {
    const aiNodeAnim& channel = *animation.mChannels[i];
    const char* name = channel.mNodeName.C_Str();
    const auto part = plan_.chainPart.find(name);
    const auto node = plan_.byName.find(name);
    if (part != plan_.chainPart.end())
      byNode[part->second].parts.emplace(name, &channel);
    else if (node != plan_.byName.end())
      byNode[node->second].whole = &channel;
    else
      warnings_.push_back(
          fmt::format("animation \"{}\": \"{}\" is no node of the file", clip.name, TextOf(channel.mNodeName)));
  }
  const double seconds = SecondsPerTick(animation);
  for (auto& [node, channels] : byNode) {
    Placement& rest = result_.rest[static_cast<std::size_t>(node)];
    rest = DecomposeNearly(Node(node).local);
    rest.angles = AnglesOf(TurnOf(rest), {0, 0, 0});
    // Beside parts of the chain the node's own name means its last part, else the whole chain.
    if (!channels.parts.empty()) {
      if (channels.whole) channels.parts.emplace(channels.whole->mNodeName.C_Str(), channels.whole);
      AddMotion(ReadChain(node, channels, seconds), clip);
    } else {
      AddMotion(ReadWhole(node, MakeTracks(*channels.whole, seconds, Node(node).local)), clip);
    }
  }
  result_.clips.push_back(std::move(clip));
}

void MotionPlanner::FindScaledMoves() {
  std::vector<bool> turns(plan_.nodes.size()), scales(plan_.nodes.size());
  for (const PlannedClip& clip : result_.clips) {
    for (const NodeMotion& motion : clip.motions) {
      const auto node = static_cast<std::size_t>(motion.node);
      if (motion.angles) turns[node] = true;
      if (motion.scale) scales[node] = true;
    }
  }
  for (std::size_t node = 0; node < plan_.nodes.size(); ++node) {
    if (!result_.moves[node]) continue;
    const Placement& rest = result_.rest[node];
    const bool scaled = scales[node] || std::any_of(rest.scale.begin(), rest.scale.end(),
                                                    [](double s) { return std::abs(s - 1) > 1e-6; });
    const bool turned = turns[node] || LargestOf(rest.angles) > 1e-6;
    result_.movesScaled[node] = scaled && turned;
  }
}

}  // namespace

MotionPlan PlanMotions(const aiScene& source, const NodePlan& plan, std::vector<std::string>& warnings) {
  return MotionPlanner(source, plan, warnings).Plan();
}

}  // namespace importer
