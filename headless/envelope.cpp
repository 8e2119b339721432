#include "headless/envelope.h"

#include <algorithm>
#include <cmath>

namespace headless {

namespace {

using Keys = std::vector<KeyData>;

// Slope at the start of the first segment, or at the end of the last one.
double FirstSlope(const Keys& keys) {
  const KeyData& from = keys[0];
  if (from.interpolation == Interpolation::Step) return 0;
  if (from.interpolation == Interpolation::Cubic) return from.slopeOut;
  return (keys[1].value - from.value) / (keys[1].time - from.time);
}

double LastSlope(const Keys& keys) {
  const KeyData& from = keys[keys.size() - 2];
  const KeyData& to = keys.back();
  if (from.interpolation == Interpolation::Step) return 0;
  if (from.interpolation == Interpolation::Cubic) return to.slopeIn;
  return (to.value - from.value) / (to.time - from.time);
}

// A time within the keys that stands for one outside, in curves that go on periodically.
double FoldTime(const Keys& keys, double time, Extrapolation extrapolation) {
  const double first = keys.front().time;
  const double period = keys.back().time - first;
  const double cycle = extrapolation == Extrapolation::Oscillate ? 2 * period : period;
  double offset = std::fmod(time - first, cycle);
  if (offset < 0) offset += cycle;
  return first + (offset > period ? cycle - offset : offset);
}

}  // namespace

double HermiteBetween(const KeyData& from, const KeyData& to, double time) {
  const double length = to.time - from.time;
  const double t = (time - from.time) / length;
  const double t2 = t * t, t3 = t2 * t;
  return (2 * t3 - 3 * t2 + 1) * from.value + (t3 - 2 * t2 + t) * length * from.slopeOut +
         (3 * t2 - 2 * t3) * to.value + (t3 - t2) * length * to.slopeIn;
}

// A time that isn't outside the keys.
double CurveWalk::ValueInside(double time) const {
  const Keys& keys = curve_->keys;
  const auto after = std::upper_bound(keys.begin(), keys.end(), time,
                                      [](double value, const KeyData& key) { return value < key.time; });
  // Before the first key only with a time that is no number.
  const auto from = after == keys.begin() ? after : after - 1;
  if (from + 1 == keys.end()) return from->value;
  segment_ = &*from;
  return ValueBetween(from[0], from[1], time);
}

double CurveWalk::Seek(double time) const {
  const Keys& keys = curve_->keys;
  if (keys.empty()) return 0;
  if (segment_ && segment_ + 2 <= &keys.back() && segment_[1].time <= time && time < segment_[2].time) {
    ++segment_;
    return ValueBetween(segment_[0], segment_[1], time);
  }
  const bool before = time < keys.front().time;
  const bool after = time > keys.back().time;
  if (!before && !after) return ValueInside(time);
  const KeyData& end = before ? keys.front() : keys.back();
  const Extrapolation extrapolation = before ? curve_->before : curve_->after;
  if (keys.size() == 1 || extrapolation == Extrapolation::Constant) return end.value;
  if (extrapolation == Extrapolation::Linear)
    return end.value + (before ? FirstSlope(keys) : LastSlope(keys)) * (time - end.time);
  return ValueInside(FoldTime(keys, time, extrapolation));
}

}  // namespace headless
