// The values of channels in each state of the scene: layers, curves, active clips, links between numbers.
#pragma once

#include "headless/envelope.h"
#include "headless/scene_index.h"

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace headless {

enum class Layer { Setup, Edit };

// What a layer holds, or what the host makes of it when links drive channels.
enum class Evaluation { Stored, Driven };

// Which values a channel read shows.
struct ReadState {
  Layer layer = Layer::Edit;
  Evaluation evaluation = Evaluation::Driven;
  double time = 0;  // seconds
};

enum class Activity { Off, On };

class ChannelValues {
 public:
  // The index outlives the values.
  explicit ChannelValues(const SceneIndex& index);
  ChannelValues(const ChannelValues&) = delete;
  ChannelValues& operator=(const ChannelValues&) = delete;

  // All take channels that exist. Nothing or null when the channel holds no such value.
  std::optional<double> Number(const ReadState& state, ChannelRef ref) const {
    return NumberAt(state, index_.ChannelPlace(ref));
  }
  // By the channel's place in the index.
  std::optional<double> NumberAt(const ReadState& state, std::size_t place) const;
  const SharedText* Text(const ReadState& state, ChannelRef ref) const;
  // The channel's own curve in a layer.
  const EnvelopeData* Envelope(Layer layer, ChannelRef ref) const;
  std::uint32_t LinkCount(ChannelRef ref) const;

  bool IsActive(ItemIndex clip) const { return activities_[At(clip)] == Activity::On; }
  // Of the clips that share a group, at most one is active.
  void SetActivity(ItemIndex clip, Activity activity);
  // Changes whenever a value changes.
  std::uint32_t Revision() const { return revision_; }

 private:
  using ClipValue = std::variant<ChannelValue, EnvelopeData>;

  // What a layer shows of a channel, clips in force considered.
  struct Shown {
    CurveWalk curve;
    double number = 0;  // where there is no curve
  };

  enum class NumberType : std::uint8_t { Integer, Double, None };

  // Of the channels that don't hold one number alone.
  struct Details {
    std::array<Shown, 2> shown;          // by layer
    const ClipValue* inForce = nullptr;  // of the active clip
    std::int32_t link = -1;              // the link that drives the number
    std::uint32_t linkCount = 0;
    NumberType type = NumberType::None;
  };

  struct Slot {
    double number = 0;           // in every state, where there are no details
    Details* details = nullptr;  // null for most
  };

  const Slot& SlotOf(ChannelRef ref) const { return slots_[index_.ChannelPlace(ref)]; }
  const ClipValue* InForce(ChannelRef ref) const;
  std::int32_t LinkInto(ChannelRef ref) const;
  bool HasNumber(ChannelRef ref) const;
  const ChannelValue& StoredValue(Layer layer, ChannelRef ref) const;
  double OwnNumber(const ReadState& state, const Slot& slot) const;
  double DrivenNumber(const ReadState& state, std::int32_t link) const;
  void StartMemo(const ReadState& state) const;
  void AddSlots();
  Details& AddDetails(ChannelRef ref);
  void AddClipDetails();
  void Show(ChannelRef ref, Layer layer);
  void AddLinks();
  void CutLinkCircles();
  void GroupClips();
  void SwapIn(ItemIndex clip, Activity activity);

  const SceneIndex& index_;
  std::vector<Slot> slots_;
  std::deque<Details> details_;        // the first is that of all channels without a number or anything else
  std::vector<Activity> activities_;   // per item
  std::vector<ItemIndex> clipGroups_;  // per item: the group that lists the clip, -1 for none
  std::uint32_t revision_ = 0;

  // The numbers that links have given in one state, so that a chain of links isn't walked from each of its
  // channels anew.
  struct LinkMemo {
    ReadState state;
    std::uint32_t revision = 0;
    std::uint32_t stamp = 0;            // 0: nothing is known
    std::vector<double> numbers;        // by link
    std::vector<std::uint32_t> stamps;  // a number is known when its stamp is the current one
  };
  mutable LinkMemo memo_;
  mutable std::vector<std::int32_t> linkPath_;  // scratch
};

// Numbers as an integer channel holds them: towards zero, within range.
std::int32_t TruncateToInteger(double value);

inline double ChannelValues::OwnNumber(const ReadState& state, const Slot& slot) const {
  if (!slot.details) return slot.number;
  const Shown& shown = slot.details->shown[static_cast<std::size_t>(state.layer)];
  const double value = shown.curve ? shown.curve.ValueAt(state.time) : shown.number;
  return slot.details->type == NumberType::Integer ? TruncateToInteger(value) : value;
}

inline std::optional<double> ChannelValues::NumberAt(const ReadState& state, std::size_t place) const {
  const Slot& slot = slots_[place];
  if (!slot.details) return slot.number;
  if (slot.details->type == NumberType::None) return std::nullopt;
  const bool isDriven = state.evaluation == Evaluation::Driven && slot.details->link >= 0;
  return isDriven ? DrivenNumber(state, slot.details->link) : OwnNumber(state, slot);
}

}  // namespace headless
