#include "headless/channel_values.h"

#include <bit>
#include <limits>

namespace headless {

namespace {

bool HoldsNumber(const ChannelValue& value) { return !std::holds_alternative<std::string>(value); }

double AsDouble(const ChannelValue& value) {
  if (const auto* integer = std::get_if<std::int32_t>(&value)) return *integer;
  return std::get<double>(value);
}

}  // namespace

std::int32_t TruncateToInteger(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (!(value > Limits::min())) return value <= Limits::min() ? Limits::min() : 0;  // 0 for no number
  return value >= Limits::max() ? Limits::max() : static_cast<std::int32_t>(value);
}

ChannelValues::ChannelValues(const SceneIndex& index)
    : index_(index),
      slots_(index.ChannelCount()),
      activities_(index.ItemCount(), Activity::Off),
      clipGroups_(index.ItemCount(), -1) {
  AddSlots();
  AddLinks();
  CutLinkCircles();
  GroupClips();
}

void ChannelValues::AddSlots() {
  for (std::size_t item = 0; item < index_.ItemCount(); ++item) {
    ChannelRef ref{static_cast<ItemIndex>(item), 0};
    for (; index_.HasChannel(ref); ++ref.channel) {
      Slot& slot = slots_[index_.ChannelPlace(ref)];
      const ChannelValue& setup = index_.Channel(ref).setup;
      if (index_.KindOf(ref) != ChannelKind::Value || !HoldsNumber(setup)) continue;
      slot.type = std::holds_alternative<std::int32_t>(setup) ? SlotType::Integer : SlotType::Double;
      Show(ref, Layer::Setup);
      Show(ref, Layer::Edit);
    }
  }
}

void ChannelValues::Show(ChannelRef ref, Layer layer) {
  const ChannelData& channel = index_.Channel(ref);
  Slot& slot = slots_[index_.ChannelPlace(ref)];
  if (slot.type == SlotType::NoNumber) return;
  Shown& shown = slot.shown[static_cast<std::size_t>(layer)];
  const EnvelopeData* curve = Envelope(layer, ref);
  // An edit layer that holds nothing of its own shows the setup, with its curve.
  if (!curve && layer == Layer::Edit && !slot.inForce && !channel.edit) curve = Envelope(Layer::Setup, ref);
  shown.curve = CurveWalk(curve);
  // A value of another type than the channel's is none.
  const ChannelValue& stored = StoredValue(layer, ref);
  shown.number = AsDouble(HoldsNumber(stored) ? stored : channel.setup);
}

void ChannelValues::AddLinks() {
  const SceneData& scene = index_.Scene();
  const auto isNumber = [&](ChannelRef ref) { return SlotOf(ref).type != SlotType::NoNumber; };
  for (std::size_t place = 0; place < scene.channelLinks.size(); ++place) {
    const ChannelLink& link = scene.channelLinks[place];
    if (!index_.HasChannel(link.from) || !index_.HasChannel(link.to)) continue;
    Slot& slot = slots_[index_.ChannelPlace(link.to)];
    ++slot.linkCount;
    // Of several links into one channel the last counts.
    if (isNumber(link.from) && isNumber(link.to)) slot.link = static_cast<std::int32_t>(place);
  }
}

// Links in a circle have no value to start from: those channels keep their own.
void ChannelValues::CutLinkCircles() {
  const std::vector<ChannelLink>& links = index_.Scene().channelLinks;
  std::vector<Link> successors;
  for (std::size_t place = 0; place < links.size(); ++place)
    if (index_.HasChannel(links[place].from))
      successors.emplace_back(static_cast<std::int32_t>(place), SlotOf(links[place].from).link);
  const LinkTable table(links.size(), successors, LinkEnd::From);
  const auto components = StrongComponents(table);
  std::vector<Slot*> cut;
  for (std::size_t place = 0; place < links.size(); ++place)
    for (const std::int32_t next : table.Of(static_cast<std::int32_t>(place)))
      if (components[place] == components[At(next)])
        cut.push_back(&slots_[index_.ChannelPlace(links[place].from)]);
  for (Slot* slot : cut) slot->link = -1;
}

void ChannelValues::GroupClips() {
  const std::vector<ItemData>& items = index_.Scene().items;
  for (std::size_t group = 0; group < items.size(); ++group) {
    if (!items[group].group) continue;
    for (const ItemIndex item : items[group].group->items)
      if (index_.HasItem(item) && clipGroups_[At(item)] < 0) clipGroups_[At(item)] = static_cast<ItemIndex>(group);
  }
  for (std::size_t clip = items.size(); clip-- > 0;)
    if (items[clip].clip && items[clip].clip->active) SetActivity(static_cast<ItemIndex>(clip), Activity::On);
}

void ChannelValues::SetActivity(ItemIndex clip, Activity activity) {
  const std::vector<ItemData>& items = index_.Scene().items;
  if (!items[At(clip)].clip || activities_[At(clip)] == activity) return;
  if (activity == Activity::On)
    for (std::size_t other = 0; other < items.size(); ++other)
      if (activities_[other] == Activity::On && clipGroups_[other] == clipGroups_[At(clip)])
        SwapIn(static_cast<ItemIndex>(other), Activity::Off);
  SwapIn(clip, activity);
  ++revision_;
}

void ChannelValues::SwapIn(ItemIndex clip, Activity activity) {
  activities_[At(clip)] = activity;
  for (const auto& [ref, value] : index_.Scene().items[At(clip)].clip->channels) {
    if (!index_.HasChannel(ref)) continue;
    Slot& slot = slots_[index_.ChannelPlace(ref)];
    if (activity == Activity::On)
      slot.inForce = &value;
    else if (slot.inForce == &value)
      slot.inForce = nullptr;
    Show(ref, Layer::Edit);
  }
}

const EnvelopeData* ChannelValues::Envelope(Layer layer, ChannelRef ref) const {
  const ChannelData& channel = index_.Channel(ref);
  if (layer == Layer::Setup) return channel.setupEnvelope ? &*channel.setupEnvelope : nullptr;
  if (const ClipValue* inForce = SlotOf(ref).inForce) return std::get_if<EnvelopeData>(inForce);
  return channel.envelope ? &*channel.envelope : nullptr;
}

const ChannelValue& ChannelValues::StoredValue(Layer layer, ChannelRef ref) const {
  const ChannelData& channel = index_.Channel(ref);
  if (layer == Layer::Setup) return channel.setup;
  if (const ClipValue* inForce = SlotOf(ref).inForce)
    if (const auto* value = std::get_if<ChannelValue>(inForce)) return *value;
  return channel.edit ? *channel.edit : channel.setup;
}

void ChannelValues::StartMemo(const ReadState& state) const {
  const bool isCurrent =
      memo_.stamp != 0 && memo_.revision == revision_ && memo_.state.layer == state.layer &&
      std::bit_cast<std::uint64_t>(memo_.state.time) == std::bit_cast<std::uint64_t>(state.time);
  if (isCurrent) return;
  const std::size_t links = index_.Scene().channelLinks.size();
  if (++memo_.stamp == 0 || memo_.stamps.size() != links) {
    memo_.stamps.assign(links, 0);
    memo_.numbers.resize(links);
    memo_.stamp = 1;
  }
  memo_.state = state;
  memo_.revision = revision_;
}

double ChannelValues::DrivenNumber(const ReadState& state, const Slot& slot) const {
  StartMemo(state);
  const std::vector<ChannelLink>& links = index_.Scene().channelLinks;
  const auto isKnown = [&](std::int32_t link) { return memo_.stamps[At(link)] == memo_.stamp; };
  linkPath_.clear();
  std::int32_t source = slot.link;
  for (; source >= 0 && !isKnown(source); source = SlotOf(links[At(source)].from).link)
    linkPath_.push_back(source);
  double value =
      source >= 0 ? memo_.numbers[At(source)] : OwnNumber(state, SlotOf(links[At(linkPath_.back())].from));
  for (; !linkPath_.empty(); linkPath_.pop_back()) {
    const std::size_t place = At(linkPath_.back());
    const ChannelLink& link = links[place];
    value = value * link.factor + link.offset;
    if (SlotOf(link.to).type == SlotType::Integer) value = TruncateToInteger(value);
    memo_.numbers[place] = value;
    memo_.stamps[place] = memo_.stamp;
  }
  return value;
}

const std::string* ChannelValues::Text(const ReadState& state, ChannelRef ref) const {
  if (HoldsNumber(index_.Channel(ref).setup)) return nullptr;
  return std::get_if<std::string>(&StoredValue(state.layer, ref));
}

std::uint32_t ChannelValues::LinkCount(ChannelRef ref) const {
  return index_.Channel(ref).linkCount.value_or(SlotOf(ref).linkCount);
}

}  // namespace headless
