// Channels of scene files, written.
#include "readers/scene_writer_parts.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <set>
#include <string_view>

namespace readers {
namespace {

using headless::ChannelData;
using headless::ChannelValue;
using headless::EnvelopeData;
using headless::ItemData;

// By alternative of ChannelValue.
constexpr const char* kTypeWords[] = {"integer", "float", "string"};
constexpr const char* kInterpolationWords[] = {"step", "linear", "cubic"};
constexpr const char* kExtrapolationWords[] = {"constant", "linear", "repeat", "oscillate"};

template <class Word>
const char* WordOf(const char* const* words, Word word) {
  return words[static_cast<std::size_t>(word)];
}

bool IsZero(double value) { return value == 0 && !std::signbit(value); }

// -0.0 is another value than 0.0.
bool IsSame(const ChannelValue& one, const ChannelValue& other) {
  if (one != other) return false;
  const double* number = std::get_if<double>(&one);
  return !number || std::signbit(*number) == std::signbit(std::get<double>(other));
}

bool IsPlain(const ChannelData& channel) {
  const headless::ChannelExtras& extras = *channel.extras;
  return !extras.edit && !extras.setupEnvelope && !extras.envelope && extras.readable && !extras.linkCount;
}

bool HasUniqueNames(const ItemData& item) {
  std::set<std::string> names;
  for (const ChannelData& channel : item.channels)
    if (!names.insert(FileText(channel.name)).second) return false;
  return true;
}

// True when the item has the channels of its type in their order, and then those of its own.
bool Extends(const ItemData& item, const std::vector<ChannelData>& ofType) {
  if (item.channels.size() < ofType.size() || !HasUniqueNames(item)) return false;
  for (std::size_t i = 0; i < ofType.size(); ++i)
    if (item.channels[i].name != ofType[i].name) return false;
  return true;
}

// What an object says of a channel that starts from `pattern`, null for a channel the item lacks.
void WriteDetails(SceneText& text, const ChannelData& channel, const ChannelData* pattern) {
  const headless::ChannelExtras& extras = *channel.extras;
  const bool hasKeys = extras.envelope || extras.setupEnvelope;
  if (hasKeys && std::holds_alternative<headless::SharedText>(channel.setup))
    throw WriteFault{"channel \"" + std::string(channel.name) + "\" holds texts and has keys"};
  if (pattern && pattern->setup.index() != channel.setup.index()) {
    text.Key("type");
    text.Text(kTypeWords[channel.setup.index()]);
  }
  if (!pattern || !IsSame(channel.setup, pattern->setup)) {
    text.Key("value");
    WriteChannelValue(text, channel.setup, channel.setup);
  }
  if (extras.edit) {
    text.Key("edit");
    WriteChannelValue(text, *extras.edit, channel.setup);
  }
  if (extras.envelope) {
    text.Key("keys");
    WriteEnvelope(text, *extras.envelope);
  }
  if (extras.setupEnvelope) {
    text.Key("setupKeys");
    WriteEnvelope(text, *extras.setupEnvelope);
  }
  if (!extras.readable) {
    text.Key("readable");
    text.Bool(false);
  }
  if (extras.linkCount) {
    text.Key("links");
    text.Natural(*extras.linkCount);
  }
}

// The vector that a colour's three channels from `first` on make, empty when they make none.
std::string ColorName(const ItemData& item, std::size_t first) {
  if (first + 3 > item.channels.size()) return {};
  const std::string& red = item.channels[first].name;
  if (red.size() < 2 || !red.ends_with(".R")) return {};
  const std::string name = red.substr(0, red.size() - 2);
  constexpr const char* kEnds[] = {".R", ".G", ".B"};
  for (std::size_t i = 0; i < 3; ++i) {
    const ChannelData& channel = item.channels[first + i];
    if (channel.name != name + kEnds[i] || !IsPlain(channel) || !std::holds_alternative<double>(channel.setup))
      return {};
  }
  const bool isTaken = headless::FindChannel(item, name) >= 0 || headless::FindChannel(item, name + ".X") >= 0;
  return isTaken ? "" : name;
}

void WriteByName(SceneOutput& out, const ItemData& item, const std::vector<ChannelData>& ofType) {
  out.text.BeginObject(Layout::Filled);
  for (std::size_t i = 0; i < item.channels.size(); ++i) {
    const ChannelData& channel = item.channels[i];
    const ChannelData* pattern = i < ofType.size() ? &ofType[i] : nullptr;
    if (pattern && IsDefault(channel, *pattern)) continue;
    if (const std::string color = pattern ? "" : ColorName(item, i); !color.empty()) {
      out.text.Key(FileText(color));
      out.text.BeginList(Layout::Filled);
      for (std::size_t part = i; part < i + 3; ++part)
        out.text.Number(std::get<double>(item.channels[part].setup));
      out.text.EndList();
      i += 2;
      continue;
    }
    out.text.Key(FileText(channel.name));
    if (IsPlain(channel) && (!pattern || pattern->setup.index() == channel.setup.index())) {
      WriteChannelValue(out.text, channel.setup, channel.setup);
    } else {
      out.text.BeginObject(Layout::Filled);
      WriteDetails(out.text, channel, pattern);
      out.text.EndObject();
    }
  }
  out.text.EndObject();
}

void WriteList(SceneOutput& out, const ItemData& item, const std::vector<ChannelData>& ofType) {
  out.text.BeginList(Layout::Filled);
  for (const ChannelData& channel : item.channels) {
    const ChannelData* pattern = nullptr;
    for (const ChannelData& candidate : ofType)
      if (candidate.name == channel.name && !pattern) pattern = &candidate;
    if (pattern && IsDefault(channel, *pattern)) {
      out.text.Text(channel.name);
      continue;
    }
    out.text.BeginObject(Layout::Filled);
    out.text.Key("name");
    out.text.Text(channel.name);
    WriteDetails(out.text, channel, pattern);
    out.text.EndObject();
  }
  out.text.EndList();
}

}  // namespace

bool IsDefault(const ChannelData& channel, const ChannelData& ofType) {
  return IsPlain(channel) && IsSame(channel.setup, ofType.setup);
}

void WriteChannels(SceneOutput& out, const ItemData& item) {
  const std::vector<ChannelData>& ofType = out.typeChannels.at(item.type);
  const bool extends = Extends(item, ofType);
  bool isUsual = extends && item.channels.size() == ofType.size();
  for (std::size_t i = 0; i < ofType.size() && isUsual; ++i) isUsual = IsDefault(item.channels[i], ofType[i]);
  if (isUsual) return;
  out.text.Break();
  out.text.Key("channels");
  if (extends) {
    WriteByName(out, item, ofType);
  } else {
    WriteList(out, item, ofType);
  }
}

void WriteChannelValue(SceneText& text, const ChannelValue& value, const ChannelValue& pattern) {
  if (value.index() != pattern.index()) throw WriteFault{"holds a value of another type than its channel's"};
  if (const auto* integer = std::get_if<std::int32_t>(&value)) return text.Whole(*integer);
  if (const auto* number = std::get_if<double>(&value)) return text.Real(*number);
  text.Text(std::get<headless::SharedText>(value));
}

void WriteEnvelope(SceneText& text, const EnvelopeData& envelope) {
  if (envelope.keys.empty()) throw WriteFault{"has an envelope without keys"};
  const bool hasEnds =
      envelope.before != headless::Extrapolation::Constant || envelope.after != headless::Extrapolation::Constant;
  if (hasEnds) {
    text.BeginObject(Layout::Filled);
    text.Key("before");
    text.Text(WordOf(kExtrapolationWords, envelope.before));
    text.Key("after");
    text.Text(WordOf(kExtrapolationWords, envelope.after));
    text.Key("keys");
  }
  text.BeginList(Layout::Filled);
  for (const headless::KeyData& key : envelope.keys) {
    const bool hasSlopes = !IsZero(key.slopeIn) || !IsZero(key.slopeOut);
    text.BeginList(Layout::Tight);
    text.Number(key.time);
    text.Number(key.value);
    if (hasSlopes || key.interpolation != headless::Interpolation::Linear)
      text.Text(WordOf(kInterpolationWords, key.interpolation));
    if (hasSlopes) {
      text.Number(key.slopeIn);
      text.Number(key.slopeOut);
    }
    text.EndList();
  }
  text.EndList();
  if (hasEnds) text.EndObject();
}

void WriteChannelRef(const SceneOutput& out, const headless::ChannelRef& ref) {
  const std::string& id = out.Id(ref.item);
  const ItemData& item = out.scene.items[static_cast<std::size_t>(ref.item)];
  if (ref.channel < 0 || static_cast<std::size_t>(ref.channel) >= item.channels.size())
    throw WriteFault{
        fmt::format("refers to channel {} of {} of item \"{}\"", ref.channel, item.channels.size(), id)};
  const std::string& name = item.channels[static_cast<std::size_t>(ref.channel)].name;
  const bool isClear = headless::FindChannel(item, name) == ref.channel && FileText(name) == name;
  out.text.BeginList(Layout::Filled);
  out.text.Text(id);
  if (isClear)
    out.text.Text(name);
  else
    out.text.Whole(ref.channel);
  out.text.EndList();
}

}  // namespace readers
