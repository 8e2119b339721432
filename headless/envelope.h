// Curves over time.
#pragma once

#include "headless/scene_data.h"

namespace headless {

// The curve from one key up to the next, at a time between theirs.
double ValueBetween(const KeyData& from, const KeyData& to, double time);

// A walk along a curve, or along none. Remembers where it is, so that a step through time is cheap.
class CurveWalk {
 public:
  CurveWalk() = default;
  // The curve outlives the walk; null for none.
  explicit CurveWalk(const EnvelopeData* curve) : curve_(curve) {}

  explicit operator bool() const { return curve_ != nullptr; }
  // Of a walk along a curve.
  double ValueAt(double time) const {
    return IsHere(time) ? ValueBetween(segment_[0], segment_[1], time) : Seek(time);
  }

 private:
  // Whether the time is between the two keys where the walk is.
  bool IsHere(double time) const { return segment_ && segment_[0].time <= time && time < segment_[1].time; }
  double Seek(double time) const;
  double ValueInside(double time) const;

  const EnvelopeData* curve_ = nullptr;
  mutable const KeyData* segment_ = nullptr;  // null at first
};

double HermiteBetween(const KeyData& from, const KeyData& to, double time);

inline double ValueBetween(const KeyData& from, const KeyData& to, double time) {
  if (time == from.time || from.interpolation == Interpolation::Step) return from.value;
  if (from.interpolation == Interpolation::Cubic) return HermiteBetween(from, to, time);
  return from.value + (to.value - from.value) * ((time - from.time) / (to.time - from.time));
}

}  // namespace headless
