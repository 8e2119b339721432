// Lists in the tree of a scene file, short ones and long ones.
//
// A list of nothing but numbers, nulls and lists of these, with more than kLongestShortList entries, stays text in
// the tree until it is read, so that its numbers take room only where they are wanted. Json::GetArray and
// Json::Size don't know of it: lists that may be long are asked for here.
#pragma once

#include "readers/scene_json.h"

#include <rapidjson/allocators.h>
#include <rapidjson/document.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace readers {

constexpr std::uint64_t kLongestShortList = 64;

struct LongList {
  const char* begin = nullptr;  // of its text, with the brackets
  const char* end = nullptr;
  std::uint64_t entries = 0;
  std::uint64_t numbers = 0;  // at all depths
  bool hasNull = false;       // at some depth
};

// What a value holds; nothing for all but long lists.
std::optional<LongList> FindLongList(const Json& value);

// A number of the text, none when it is too big. Whole ones are integers, all others the nearest f64.
std::optional<Json> ToNumber(std::string_view digits);

// Finds the long lists of a text ahead of its parser. No character is looked at twice, however lists are nested.
class LongListFinder {
 public:
  explicit LongListFinder(std::string_view text) : end_(text.data() + text.size()), scanned_(text.data()) {}

  // The long list that begins at `place`, null when the list that begins there is none. Places ascend from call to
  // call. A list that is nested deeper than `levels`, with a fault or with other values in it isn't a long one.
  const LongList* Find(const char* place, std::size_t levels);

 private:
  struct OpenList {
    const char* begin;
    std::uint64_t entries = 0;
    std::uint64_t numbersBefore;
    std::uint64_t nullsBefore;
    std::size_t foundBefore;
  };

  // To the end of the list, or to what no long list holds: of the lists around that none is long.
  void Scan(const char* begin, std::size_t levels);
  // Passes one value or bracket; null when it isn't what a long list may hold there.
  const char* Pass(const char* place);
  void Close(const char* end);

  const char* end_;
  const char* scanned_;          // what begins before is known
  std::vector<LongList> found_;  // none inside another, in order
  std::size_t next_ = 0;         // in found_
  std::vector<OpenList> open_;   // of the scan
  std::uint64_t numbers_ = 0;    // likewise
  std::uint64_t nulls_ = 0;      // likewise
  bool wantsComma_ = false;      // likewise
  std::size_t levels_ = 0;       // likewise
};

// Puts a long list into a tree in the place of its entries.
void PutLongList(const LongList& list, rapidjson::Document& tree);

// Reads the entries of a long list one after the other.
class LongListReader {
 public:
  explicit LongListReader(const Json& list);
  LongListReader(const LongListReader&) = delete;
  LongListReader& operator=(const LongListReader&) = delete;

  // Null after the last entry. An entry is there until the next one is asked for.
  const Json* Next();
  // The fault of the last entry as one of the list.
  JsonFault Locate(const JsonFault& fault) const;

 private:
  void Read(Json& value);

  const Json& list_;
  const char* cursor_;
  const char* kept_;  // the text from here on
  const char* end_;
  std::uint64_t count_ = 0;
  std::vector<std::max_align_t> buffer_;  // for entries of a few numbers; not on the stack of callers that nest
  rapidjson::MemoryPoolAllocator<> memory_;
  Json entry_;
};

std::uint64_t ListSize(const Json& list);
// How many numbers to make room for, at all depths: 0 for a short list.
std::uint64_t CountNumbers(const Json& list);
bool HoldsNull(const Json& list);

// Calls `visit` with each entry of a list, in order.
template <class Visit>
void ForEachEntry(const Json& list, const Visit& visit) {
  if (!FindLongList(list)) {
    for (const Json& entry : list.GetArray()) visit(entry);
    return;
  }
  LongListReader reader(list);
  try {
    while (const Json* entry = reader.Next()) visit(*entry);
  } catch (const JsonFault& fault) {
    throw reader.Locate(fault);
  }
}

}  // namespace readers
