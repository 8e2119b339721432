#include "headless/envelope.h"

#include <algorithm>
#include <cmath>

namespace headless {

namespace {

using Keys = std::vector<KeyData>;

// Whether the curve is between key `place` and the next one; past the last key's time is never.
bool IsInSegment(const Keys& keys, std::size_t place, double time) {
  return place + 1 < keys.size() && keys[place].time <= time && time < keys[place + 1].time;
}

// The last key at or before `time`, which isn't before the first key.
std::size_t FindSegment(const Keys& keys, double time, std::size_t hint) {
  if (IsInSegment(keys, hint, time)) return hint;
  if (IsInSegment(keys, hint + 1, time)) return hint + 1;
  const auto after = std::upper_bound(keys.begin(), keys.end(), time,
                                      [](double value, const KeyData& key) { return value < key.time; });
  return after == keys.begin() ? 0 : static_cast<std::size_t>(after - keys.begin()) - 1;
}

double Hermite(const KeyData& from, const KeyData& to, double time) {
  const double length = to.time - from.time;
  const double t = (time - from.time) / length;
  const double t2 = t * t, t3 = t2 * t;
  return (2 * t3 - 3 * t2 + 1) * from.value + (t3 - 2 * t2 + t) * length * from.slopeOut +
         (3 * t2 - 2 * t3) * to.value + (t3 - t2) * length * to.slopeIn;
}

// From key `place` on, at or after its time.
double ValueFrom(const Keys& keys, std::size_t place, double time) {
  const KeyData& from = keys[place];
  if (place + 1 == keys.size() || time == from.time) return from.value;
  const KeyData& to = keys[place + 1];
  switch (from.interpolation) {
    case Interpolation::Step:
      return from.value;
    case Interpolation::Linear:
      return from.value + (to.value - from.value) * ((time - from.time) / (to.time - from.time));
    case Interpolation::Cubic:
      break;
  }
  return Hermite(from, to, time);
}

double InsideValue(const Keys& keys, double time, std::size_t& hint) {
  hint = FindSegment(keys, time, hint);
  return ValueFrom(keys, hint, time);
}

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

double EvaluateEnvelope(const EnvelopeData& envelope, double time, std::size_t& hint) {
  const Keys& keys = envelope.keys;
  if (keys.empty()) return 0;
  // First, since the ends of a long curve lie far away in memory.
  if (IsInSegment(keys, hint, time)) return ValueFrom(keys, hint, time);
  const bool before = time < keys.front().time;
  const bool after = time > keys.back().time;
  if (!before && !after) return InsideValue(keys, time, hint);
  const KeyData& end = before ? keys.front() : keys.back();
  const Extrapolation extrapolation = before ? envelope.before : envelope.after;
  if (keys.size() == 1 || extrapolation == Extrapolation::Constant) return end.value;
  if (extrapolation == Extrapolation::Linear)
    return end.value + (before ? FirstSlope(keys) : LastSlope(keys)) * (time - end.time);
  return InsideValue(keys, FoldTime(keys, time, extrapolation), hint);
}

}  // namespace headless
