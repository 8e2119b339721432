#include "readers/scene_channels.h"

#include "readers/scene_lists.h"

#include <fmt/format.h>

#include <algorithm>
#include <numbers>
#include <utility>

namespace readers {
namespace {

using headless::ChannelData;
using headless::ChannelValue;
using headless::EnvelopeData;
using headless::Extrapolation;
using headless::Interpolation;
using headless::KeyData;

constexpr std::size_t kMostChannels = 4096;  // of an item, which are looked through for each name
constexpr double kRadiansPerDegree = std::numbers::pi / 180;

Interpolation ReadInterpolation(const Json& value) {
  using enum Interpolation;
  return ReadWord<Interpolation>(value, {{"step", Step}, {"linear", Linear}, {"cubic", Cubic}});
}

Extrapolation ReadExtrapolation(const Json& value) {
  using enum Extrapolation;
  return ReadWord<Extrapolation>(
      value, {{"constant", Constant}, {"linear", Linear}, {"repeat", Repeat}, {"oscillate", Oscillate}});
}

// What an envelope object says besides its keys.
EnvelopeData ReadEnds(const Json& value) {
  EnvelopeData envelope;
  if (const Json* before = Find(value, "before")) envelope.before = ReadExtrapolation(*before);
  if (const Json* after = Find(value, "after")) envelope.after = ReadExtrapolation(*after);
  return envelope;
}

Interpolation CommonInterpolation(const Json& value) {
  const Json* word = value.IsObject() ? Find(value, "interpolation") : nullptr;
  return word ? ReadInterpolation(*word) : Interpolation::Linear;
}

const Json& KeysOf(const Json& value) {
  const Json& keys = ReadList(value.IsObject() ? Require(value, "keys") : value);
  if (keys.Empty()) Fail(keys, "needs at least one key");
  return keys;
}

void AddKey(const Json& place, const KeyData& key, EnvelopeData& envelope) {
  if (!envelope.keys.empty() && !(envelope.keys.back().time < key.time)) {
    Fail(place, fmt::format("time {} doesn't come after {}", key.time, envelope.keys.back().time));
  }
  envelope.keys.push_back(key);
}

void CheckKey(const Json& key, rapidjson::SizeType least, rapidjson::SizeType most) {
  const std::uint64_t size = ListSize(ReadList(key));
  if (size >= least && size <= most) return;
  Fail(key, fmt::format("expected {} to {} entries, found {}", least, most, size));
}

// The value that a new channel starts from.
ChannelValue PatternOf(const Json& value) {
  const Json* example = &value;
  if (value.IsObject()) {
    if (const Json* type = Find(value, "type")) {
      return ReadWord<ChannelValue>(
          *type, {{"integer", std::int32_t{0}}, {"float", double{0}}, {"string", std::string()}});
    }
    example = Find(value, "value");
    if (!example) example = Find(value, "edit");
  }
  if (!example) return double{0};
  if (example->IsString()) return std::string();
  return example->IsInt() ? ChannelValue(std::int32_t{0}) : ChannelValue(double{0});
}

EnvelopeData ReadChannelEnvelope(const Json& value, const ChannelData& channel) {
  if (std::holds_alternative<headless::SharedText>(channel.setup)) Fail(value, "a channel of texts has no keys");
  return ReadEnvelope(value);
}

void ReadChannelObject(const Json& value, ChannelData& channel) {
  if (Find(value, "type")) {
    const ChannelValue pattern = PatternOf(value);
    if (pattern.index() != channel.setup.index()) channel.setup = pattern;
  }
  if (const Json* setup = Find(value, "value")) channel.setup = ReadChannelValue(*setup, channel.setup);
  if (const Json* edit = Find(value, "edit")) channel.extras.Make().edit = ReadChannelValue(*edit, channel.setup);
  if (const Json* keys = Find(value, "keys")) channel.extras.Make().envelope = ReadChannelEnvelope(*keys, channel);
  if (const Json* keys = Find(value, "setupKeys"))
    channel.extras.Make().setupEnvelope = ReadChannelEnvelope(*keys, channel);
  if (const Json* readable = Find(value, "readable")) channel.extras.Make().readable = ReadBool(*readable);
  if (const Json* links = Find(value, "links")) {
    if (!links->IsUint()) Fail(*links, "expected a whole number, not negative");
    channel.extras.Make().linkCount = links->GetUint();
  }
}

ChannelData& ChannelOf(headless::ItemData& item, const std::string& name, const ChannelValue& pattern) {
  const std::int32_t known = headless::FindChannel(item, name);
  if (known < 0) headless::SetChannel(item, name, pattern);
  return item.channels[known < 0 ? item.channels.size() - 1 : static_cast<std::size_t>(known)];
}

// "name": [1, 2, 3] sets name.X, name.Y and name.Z where the item has them, else name.R, name.G and name.B.
void ReadChannelVector(const std::string& name, const Json& value, headless::ItemData& item) {
  const bool isPoint = headless::FindChannel(item, name + ".X") >= 0;
  const char* const components = isPoint ? "XYZ" : "RGB";
  ReadList(value, 3);
  for (rapidjson::SizeType i = 0; i < 3; ++i) {
    ChannelData& channel = ChannelOf(item, name + "." + components[i], double{0});
    channel.setup = ReadNumber(value[i]);
  }
}

ChannelData ReadListedChannel(const Json& entry, const headless::ItemData& defaults) {
  const std::string name = ReadText(entry.IsString() ? entry : Require(entry, "name"));
  ChannelData channel;
  channel.name = name;
  channel.setup = entry.IsObject() ? PatternOf(entry) : double{0};
  const std::int32_t known = headless::FindChannel(defaults, name);
  if (known >= 0) channel = defaults.channels[static_cast<std::size_t>(known)];
  if (entry.IsObject()) ReadChannelObject(entry, channel);
  return channel;
}

}  // namespace

EnvelopeData ReadEnvelope(const Json& value) {
  EnvelopeData envelope = value.IsObject() ? ReadEnds(value) : EnvelopeData();
  const Interpolation interpolation = CommonInterpolation(value);
  envelope.keys.reserve(ListSize(KeysOf(value)));
  ForEachEntry(KeysOf(value), [&](const Json& entry) {
    CheckKey(entry, 2, 5);
    KeyData key;
    key.time = ReadNumber(entry[0]);
    key.value = ReadNumber(entry[1]);
    key.interpolation = entry.Size() > 2 ? ReadInterpolation(entry[2]) : interpolation;
    if (entry.Size() > 3) key.slopeIn = ReadNumber(entry[3]);
    if (entry.Size() > 4) key.slopeOut = ReadNumber(entry[4]);
    AddKey(entry, key, envelope);
  });
  return envelope;
}

ChannelValue ReadChannelValue(const Json& value, const ChannelValue& pattern) {
  if (std::holds_alternative<headless::SharedText>(pattern)) {
    if (!value.IsString()) Fail(value, "the channel holds texts");
    return ReadText(value);
  }
  if (!value.IsNumber()) Fail(value, "the channel holds numbers");
  if (std::holds_alternative<double>(pattern)) return ReadNumber(value);
  if (!value.IsInt()) Fail(value, "the channel holds integers; {\"type\": \"float\", ...} changes that");
  return ReadInteger(value);
}

void ReadChannels(const Json& value, headless::ItemData& item) {
  if ((value.IsObject() ? value.MemberCount() : ListSize(ReadList(value))) > kMostChannels)
    Fail(value, fmt::format("holds more than {} channels", kMostChannels));
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      const std::string name = ReadText(member.name);
      if (member.value.IsArray()) {
        ReadChannelVector(name, member.value, item);
        continue;
      }
      ChannelData& channel = ChannelOf(item, name, PatternOf(member.value));
      if (member.value.IsObject()) {
        ReadChannelObject(member.value, channel);
      } else {
        channel.setup = ReadChannelValue(member.value, channel.setup);
      }
    }
    return;
  }
  std::vector<ChannelData> channels;
  for (const Json& entry : ReadList(value).GetArray()) channels.push_back(ReadListedChannel(entry, item));
  item.channels = std::move(channels);
}

VectorData ReadVector(const Json& value, double unit) {
  const auto readThree = [unit](const Json& numbers, rapidjson::SizeType first) {
    return std::array{ReadNumber(numbers[first]) * unit, ReadNumber(numbers[first + 1]) * unit,
                      ReadNumber(numbers[first + 2]) * unit};
  };
  VectorData vector;
  if (!value.IsObject()) {
    vector.value = readThree(ReadList(value, 3), 0);
    return vector;
  }
  auto& envelopes = vector.envelopes.emplace();
  envelopes.fill(ReadEnds(value));
  const Interpolation interpolation = CommonInterpolation(value);
  ForEachEntry(KeysOf(value), [&](const Json& entry) {
    CheckKey(entry, 4, 5);
    KeyData key;
    key.time = ReadNumber(entry[0]);
    key.interpolation = entry.Size() > 4 ? ReadInterpolation(entry[4]) : interpolation;
    const std::array<double, 3> values = readThree(entry, 1);
    for (std::size_t i = 0; i < 3; ++i) {
      key.value = values[i];
      AddKey(entry, key, envelopes[i]);
    }
  });
  const Json* setup = Find(value, "value");
  for (std::size_t i = 0; i < 3; ++i) vector.value[i] = envelopes[i].keys.front().value;
  if (setup) vector.value = readThree(ReadList(*setup, 3), 0);
  return vector;
}

const std::array<const char*, 3>* VectorChannels(std::string_view transformType) {
  static constexpr std::pair<const char*, std::array<const char*, 3>> kChannels[] = {
      {"translation", {"pos.X", "pos.Y", "pos.Z"}},
      {"rotation", {"rot.X", "rot.Y", "rot.Z"}},
      {"scale", {"scl.X", "scl.Y", "scl.Z"}}};
  for (const auto& [type, names] : kChannels) {
    if (transformType == type) return &names;
  }
  return nullptr;
}

double VectorUnit(std::string_view transformType) { return transformType == "rotation" ? kRadiansPerDegree : 1; }

void ReadTransformValue(const Json& value, headless::ItemData& transform) {
  const std::array<const char*, 3>* names = VectorChannels(transform.type);
  if (!names) Fail(value, "an item of type \"" + std::string(transform.type) + "\" has no value of three numbers");
  const VectorData vector = ReadVector(value, VectorUnit(transform.type));
  for (std::size_t i = 0; i < 3; ++i) {
    ChannelData& channel = ChannelOf(transform, (*names)[i], double{0});
    channel.setup = vector.value[i];
    if (vector.envelopes) channel.extras.Make().envelope = (*vector.envelopes)[i];
  }
}

}  // namespace readers
