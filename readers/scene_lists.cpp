#include "readers/scene_lists.h"

#include "readers/mapped_file.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace readers {
namespace {

// In the tree a long list is a list that begins with what no text can give: a number that isn't one.
constexpr rapidjson::SizeType kMarkerSize = 6;

bool IsNumberPart(char c) {
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// The text of the number that begins at `begin`.
std::string_view NumberText(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(std::find_if_not(begin, end, IsNumberPart) - begin)};
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

const char* PassDigits(const char* place, const char* end) {
  while (place < end && IsDigit(*place)) ++place;
  return place;
}

// Behind a number of JSON's own form that isn't too big; null for anything else.
const char* PassNumber(const char* begin, const char* end) {
  const char* place = begin + (*begin == '-' ? 1 : 0);
  const char* const whole = place;
  place = PassDigits(place, end);
  if (place == whole || (*whole == '0' && place - whole > 1)) return nullptr;
  if (place < end && *place == '.') {
    const char* const fraction = ++place;
    place = PassDigits(place, end);
    if (place == fraction) return nullptr;
  }
  const bool hasExponent = place < end && (*place == 'e' || *place == 'E');
  if (hasExponent) {
    ++place;
    if (place < end && (*place == '+' || *place == '-')) ++place;
    const char* const exponent = place;
    place = PassDigits(place, end);
    if (place == exponent) return nullptr;
  }
  // Without an exponent it takes hundreds of digits to be too big.
  const std::string_view digits(begin, static_cast<std::size_t>(place - begin));
  return (hasExponent || digits.size() > 300) && !ToNumber(digits) ? nullptr : place;
}

bool IsBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

bool IsBetweenEntries(char c) { return c == ',' || IsBlank(c); }

}  // namespace

std::optional<LongList> FindLongList(const Json& value) {
  if (!value.IsArray() || value.Size() != kMarkerSize || !value[0].IsDouble() ||
      !std::isnan(value[0].GetDouble())) {
    return std::nullopt;
  }
  return LongList{reinterpret_cast<const char*>(value[1].GetUint64()),
                  reinterpret_cast<const char*>(value[2].GetUint64()), value[3].GetUint64(), value[4].GetUint64(),
                  value[5].GetBool()};
}

std::optional<Json> ToNumber(std::string_view digits) {
  const char* const begin = digits.data();
  const char* const end = begin + digits.size();
  const auto isWhole = [end](const std::from_chars_result& result) {
    return result.ec == std::errc() && result.ptr == end;
  };
  std::int64_t integer = 0;
  if (isWhole(std::from_chars(begin, end, integer)) && digits != "-0") return Json(integer);
  std::uint64_t natural = 0;
  if (isWhole(std::from_chars(begin, end, natural))) return Json(natural);
  double number = 0;
  fast_float::from_chars(begin, end, number);
  return std::isfinite(number) ? std::optional<Json>(Json(number)) : std::nullopt;
}

const LongList* LongListFinder::Find(const char* place, std::size_t levels) {
  if (place >= scanned_) Scan(place, levels);
  while (next_ < found_.size() && found_[next_].begin < place) ++next_;
  return next_ < found_.size() && found_[next_].begin == place ? &found_[next_] : nullptr;
}

void LongListFinder::Scan(const char* begin, std::size_t levels) {
  found_.clear();
  open_.clear();
  next_ = 0;
  numbers_ = nulls_ = 0;
  levels_ = levels;
  const char* cursor = begin;
  const char* kept = begin;
  do {
    const char* const next = Pass(cursor);
    if (!next) break;
    cursor = next;
    while (cursor < end_ && IsBlank(*cursor)) ++cursor;
    MappedFile::Forget(kept, cursor);
  } while (!open_.empty() && cursor < end_);
  scanned_ = std::max(cursor, begin + 1);
}

const char* LongListFinder::Pass(const char* place) {
  if (*place == ']') {
    // No comma stands before it.
    if (!wantsComma_ && open_.back().entries > 0) return nullptr;
    Close(place + 1);
    return place + 1;
  }
  if (*place == ',') {
    if (!std::exchange(wantsComma_, false)) return nullptr;
    return place + 1;
  }
  if (!open_.empty() && wantsComma_) return nullptr;
  if (!open_.empty()) ++open_.back().entries;
  if (*place == '[') {
    if (open_.size() > levels_) return nullptr;
    open_.push_back({place, 0, numbers_, nulls_, found_.size()});
    wantsComma_ = false;
    return place + 1;
  }
  wantsComma_ = true;
  constexpr std::string_view kNull = "null";
  if (std::string_view(place, static_cast<std::size_t>(end_ - place)).starts_with(kNull)) {
    ++nulls_;
    return place + kNull.size();
  }
  ++numbers_;
  return PassNumber(place, end_);
}

void LongListFinder::Close(const char* end) {
  const OpenList list = open_.back();
  open_.pop_back();
  wantsComma_ = true;
  const std::uint64_t numbers = numbers_ - list.numbersBefore;
  if (list.entries <= kLongestShortList || numbers == 0) return;
  found_.resize(list.foundBefore);
  found_.push_back({list.begin, end, list.entries, numbers, nulls_ > list.nullsBefore});
}

void PutLongList(const LongList& list, rapidjson::Document& tree) {
  tree.StartArray();
  tree.Double(std::numeric_limits<double>::quiet_NaN());
  tree.Uint64(reinterpret_cast<std::uintptr_t>(list.begin));
  tree.Uint64(reinterpret_cast<std::uintptr_t>(list.end));
  tree.Uint64(list.entries);
  tree.Uint64(list.numbers);
  tree.Bool(list.hasNull);
  tree.EndArray(kMarkerSize);
}

LongListReader::LongListReader(const Json& list)
    : list_(list),
      cursor_(FindLongList(list)->begin + 1),
      kept_(cursor_),
      end_(FindLongList(list)->end),
      buffer_(4096 / sizeof(std::max_align_t)),
      memory_(buffer_.data(), 4096) {}

const Json* LongListReader::Next() {
  MappedFile::Forget(kept_, cursor_);
  entry_.SetNull();
  memory_.Clear();
  while (IsBetweenEntries(*cursor_)) ++cursor_;
  if (*cursor_ == ']') return nullptr;
  Read(entry_);
  ++count_;
  return &entry_;
}

void LongListReader::Read(Json& value) {
  if (*cursor_ == 'n') {
    value.SetNull();
    cursor_ += std::strlen("null");
  } else if (*cursor_ != '[') {
    const std::string_view digits = NumberText(cursor_, end_);
    value = std::move(*ToNumber(digits));
    cursor_ += digits.size();
  } else {
    value.SetArray();
    for (++cursor_;;) {
      while (IsBetweenEntries(*cursor_)) ++cursor_;
      if (*cursor_ == ']') break;
      Json entry;
      Read(entry);
      value.PushBack(entry, memory_);
    }
    ++cursor_;
  }
}

JsonFault LongListReader::Locate(const JsonFault& fault) const {
  std::string place;
  if (count_ == 0 || !FindJson(entry_, *fault.value, place)) return fault;
  return {&list_, fault.reason, "/" + std::to_string(count_ - 1) + place + fault.below};
}

std::uint64_t ListSize(const Json& list) {
  const std::optional<LongList> longList = FindLongList(list);
  return longList ? longList->entries : list.Size();
}

std::uint64_t CountNumbers(const Json& list) {
  const std::optional<LongList> longList = FindLongList(list);
  return longList ? longList->numbers : 0;
}

bool HoldsNull(const Json& list) {
  if (const std::optional<LongList> longList = FindLongList(list)) return longList->hasNull;
  return std::any_of(list.Begin(), list.End(), [](const Json& entry) { return entry.IsNull(); });
}

}  // namespace readers
