#include "headless/channel_values.h"

#include <bit>
#include <limits>

namespace headless {

namespace {

bool HoldsNumber(const ChannelValue& value) { return !std::holds_alternative<SharedText>(value); }

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
  AddClipDetails();
  AddLinks();
  CutLinkCircles();
  GroupClips();
}

void ChannelValues::AddSlots() {
  Details& none = details_.emplace_back();
  for (std::size_t item = 0; item < index_.ItemCount(); ++item) {
    ChannelRef ref{static_cast<ItemIndex>(item), 0};
    for (; index_.HasChannel(ref); ++ref.channel) {
      const ChannelData& channel = index_.Channel(ref);
      Slot& slot = slots_[index_.ChannelPlace(ref)];
      if (index_.KindOf(ref) != ChannelKind::Value || !HoldsNumber(channel.setup))
        slot.details = &none;
      else if (const auto& extras = *channel.extras; extras.edit || extras.setupEnvelope || extras.envelope)
        AddDetails(ref);
      else
        slot.number = AsDouble(channel.setup);
    }
  }
}

// Of a channel that may have its own already.
ChannelValues::Details& ChannelValues::AddDetails(ChannelRef ref) {
  Slot& slot = slots_[index_.ChannelPlace(ref)];
  const Details* none = &details_.front();
  if (slot.details && slot.details != none) return *slot.details;
  const bool hasNumber = !slot.details;
  slot.details = &details_.emplace_back();
  if (!hasNumber) return *slot.details;
  const bool isInteger = std::holds_alternative<std::int32_t>(index_.Channel(ref).setup);
  slot.details->type = isInteger ? NumberType::Integer : NumberType::Double;
  Show(ref, Layer::Setup);
  Show(ref, Layer::Edit);
  return *slot.details;
}

// All that clips change, so that their coming and going takes no memory.
void ChannelValues::AddClipDetails() {
  for (const ItemData& item : index_.Scene().items) {
    if (!item.clip) continue;
    for (const auto& [ref, value] : item.clip->channels)
      if (index_.HasChannel(ref)) AddDetails(ref);
  }
}

void ChannelValues::Show(ChannelRef ref, Layer layer) {
  Details& details = *SlotOf(ref).details;
  if (details.type == NumberType::None) return;
  const ChannelData& channel = index_.Channel(ref);
  Shown& shown = details.shown[static_cast<std::size_t>(layer)];
  const EnvelopeData* curve = Envelope(layer, ref);
  // An edit layer that holds nothing of its own shows the setup, with its curve.
  if (!curve && layer == Layer::Edit && !details.inForce && !channel.extras->edit)
    curve = Envelope(Layer::Setup, ref);
  shown.curve = CurveWalk(curve);
  // A value of another type than the channel's is none.
  const ChannelValue& stored = StoredValue(layer, ref);
  shown.number = AsDouble(HoldsNumber(stored) ? stored : channel.setup);
}

void ChannelValues::AddLinks() {
  const SceneData& scene = index_.Scene();
  for (std::size_t place = 0; place < scene.channelLinks.size(); ++place) {
    const ChannelLink& link = scene.channelLinks[place];
    if (!index_.HasChannel(link.from) || !index_.HasChannel(link.to)) continue;
    Details& details = AddDetails(link.to);
    ++details.linkCount;
    // Of several links into one channel the last counts.
    if (HasNumber(link.from) && HasNumber(link.to)) details.link = static_cast<std::int32_t>(place);
  }
}

// Links in a circle have no value to start from: those channels keep their own.
void ChannelValues::CutLinkCircles() {
  const std::vector<ChannelLink>& links = index_.Scene().channelLinks;
  std::vector<Link> successors;
  for (std::size_t place = 0; place < links.size(); ++place)
    if (index_.HasChannel(links[place].from))
      successors.emplace_back(static_cast<std::int32_t>(place), LinkInto(links[place].from));
  const LinkTable table(links.size(), successors, LinkEnd::From);
  const auto components = StrongComponents(table);
  std::vector<ChannelRef> cut;
  for (std::size_t place = 0; place < links.size(); ++place)
    for (const std::int32_t next : table.Of(static_cast<std::int32_t>(place)))
      if (components[place] == components[At(next)]) cut.push_back(links[place].from);
  for (const ChannelRef ref : cut) SlotOf(ref).details->link = -1;
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
    const ClipValue*& inForce = SlotOf(ref).details->inForce;
    if (activity == Activity::On)
      inForce = &value;
    else if (inForce == &value)
      inForce = nullptr;
    Show(ref, Layer::Edit);
  }
}

const ChannelValues::ClipValue* ChannelValues::InForce(ChannelRef ref) const {
  const Details* details = SlotOf(ref).details;
  return details ? details->inForce : nullptr;
}

std::int32_t ChannelValues::LinkInto(ChannelRef ref) const {
  const Details* details = SlotOf(ref).details;
  return details ? details->link : -1;
}

bool ChannelValues::HasNumber(ChannelRef ref) const {
  const Details* details = SlotOf(ref).details;
  return !details || details->type != NumberType::None;
}

const EnvelopeData* ChannelValues::Envelope(Layer layer, ChannelRef ref) const {
  const ChannelExtras& extras = *index_.Channel(ref).extras;
  if (layer == Layer::Setup) return extras.setupEnvelope ? &*extras.setupEnvelope : nullptr;
  if (const ClipValue* inForce = InForce(ref)) return std::get_if<EnvelopeData>(inForce);
  return extras.envelope ? &*extras.envelope : nullptr;
}

const ChannelValue& ChannelValues::StoredValue(Layer layer, ChannelRef ref) const {
  const ChannelData& channel = index_.Channel(ref);
  if (layer == Layer::Setup) return channel.setup;
  if (const ClipValue* inForce = InForce(ref))
    if (const auto* value = std::get_if<ChannelValue>(inForce)) return *value;
  return channel.extras->edit ? *channel.extras->edit : channel.setup;
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

double ChannelValues::DrivenNumber(const ReadState& state, std::int32_t link) const {
  StartMemo(state);
  const std::vector<ChannelLink>& links = index_.Scene().channelLinks;
  const auto isKnown = [&](std::int32_t place) { return memo_.stamps[At(place)] == memo_.stamp; };
  linkPath_.clear();
  std::int32_t source = link;
  for (; source >= 0 && !isKnown(source); source = LinkInto(links[At(source)].from)) linkPath_.push_back(source);
  double value =
      source >= 0 ? memo_.numbers[At(source)] : OwnNumber(state, SlotOf(links[At(linkPath_.back())].from));
  for (; !linkPath_.empty(); linkPath_.pop_back()) {
    const std::size_t place = At(linkPath_.back());
    const ChannelLink& step = links[place];
    value = value * step.factor + step.offset;
    if (SlotOf(step.to).details->type == NumberType::Integer) value = TruncateToInteger(value);
    memo_.numbers[place] = value;
    memo_.stamps[place] = memo_.stamp;
  }
  return value;
}

const SharedText* ChannelValues::Text(const ReadState& state, ChannelRef ref) const {
  if (HoldsNumber(index_.Channel(ref).setup)) return nullptr;
  return std::get_if<SharedText>(&StoredValue(state.layer, ref));
}

std::uint32_t ChannelValues::LinkCount(ChannelRef ref) const {
  const Details* details = SlotOf(ref).details;
  return index_.Channel(ref).extras->linkCount.value_or(details ? details->linkCount : 0);
}

}  // namespace headless
