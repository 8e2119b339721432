#include "readers/scene_arrays.h"

#include "headless/mesh_data.h"
#include "readers/read_scene.h"
#include "readers/scene_lists.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace readers {
namespace {

namespace fs = std::filesystem;

static_assert(std::endian::native == std::endian::little, "binary arrays are little-endian and used in place");

enum class NumberType { F32, F64, U32, U64 };

template <class T>
constexpr NumberType kTypeOf = std::is_same_v<T, float>           ? NumberType::F32
                               : std::is_same_v<T, double>        ? NumberType::F64
                               : std::is_same_v<T, std::uint32_t> ? NumberType::U32
                                                                  : NumberType::U64;

// A whole number as the JSON or a file holds it, in the target's type; nothing when it doesn't fit.
template <class T>
std::optional<T> ToWhole(std::uint64_t number) {
  if (number > std::numeric_limits<T>::max()) return std::nullopt;
  return static_cast<T>(number);
}

template <class T>
T ReadListed(const Json& entry) {
  if constexpr (std::is_floating_point_v<T>) {
    const double number = ReadNumber(entry);
    if (std::abs(number) > std::numeric_limits<T>::max()) Fail(entry, "the number is too big for 32 bits");
    return static_cast<T>(number);
  } else {
    if (std::is_same_v<T, std::uint32_t> && (entry.IsNull() || (entry.IsInt() && entry.GetInt() == -1))) {
      return static_cast<T>(headless::kNone);
    }
    const std::optional<T> number = entry.IsUint64() ? ToWhole<T>(entry.GetUint64()) : std::nullopt;
    if (!number)
      Fail(entry, "expected a whole number of " + std::to_string(8 * sizeof(T)) + " bits, not negative");
    return *number;
  }
}

template <class T>
headless::Array<T> ReadList(const Json& list, std::uint32_t group) {
  std::vector<T> values;
  values.reserve(std::max(ListSize(list), CountNumbers(list)));
  ForEachEntry(list, [&values, group](const Json& entry) {
    if (!entry.IsArray()) return values.push_back(ReadListed<T>(entry));
    if (ListSize(entry) != group) {
      Fail(entry, "expected " + std::to_string(group) + " numbers, found " + std::to_string(ListSize(entry)));
    }
    ForEachEntry(entry, [&values](const Json& number) { values.push_back(ReadListed<T>(number)); });
  });
  return values;
}

template <class From, class T>
headless::Array<T> Convert(const Json& value, std::span<const std::byte> bytes) {
  std::vector<T> values(bytes.size() / sizeof(From));
  for (std::size_t i = 0; i < values.size(); ++i) {
    From number;
    std::memcpy(&number, bytes.data() + i * sizeof(From), sizeof(From));
    if constexpr (std::is_same_v<From, T>) {
      values[i] = number;
    } else if constexpr (std::is_floating_point_v<T> && std::is_floating_point_v<From>) {
      if (std::abs(number) > std::numeric_limits<T>::max()) {
        Fail(value, "number " + std::to_string(i) + " is too big for 32 bits");
      }
      values[i] = static_cast<T>(number);
    } else {
      const std::optional<T> whole = ToWhole<T>(number);
      if (!whole) Fail(value, "number " + std::to_string(i) + " is too big for 32 bits");
      values[i] = *whole;
    }
  }
  return values;
}

template <class T>
headless::Array<T> ReadBinary(const Json& value, BinaryFiles& files) {
  using enum NumberType;
  const Json* typeKey = Find(value, "type");
  const NumberType type =
      typeKey ? ReadWord<NumberType>(*typeKey, {{"f32", F32}, {"f64", F64}, {"u32", U32}, {"u64", U64}})
              : kTypeOf<T>;
  const bool isFloat = type == F32 || type == F64;
  if (isFloat != std::is_floating_point_v<T>) {
    Fail(*typeKey, isFloat ? "expected whole numbers: \"u32\" or \"u64\"" : "expected \"f32\" or \"f64\"");
  }
  const std::uint64_t numberSize = type == F32 || type == U32 ? 4 : 8;
  const std::shared_ptr<const MappedFile>& file = files.Open(Require(value, "file"));
  const std::span<const std::byte> content = file->Bytes();
  const Json* offsetKey = Find(value, "offset");
  const std::uint64_t offset = offsetKey ? ReadListed<std::uint64_t>(*offsetKey) : 0;
  const auto count = ReadListed<std::uint64_t>(Require(value, "count"));
  if (offset > content.size() || count > (content.size() - offset) / numberSize) {
    Fail(value, "\"" + ReadText(value["file"]) + "\" has " + std::to_string(content.size()) +
                    " bytes, too few for " + std::to_string(count) + " numbers from byte " +
                    std::to_string(offset));
  }
  const std::span<const std::byte> bytes = content.subspan(offset, count * numberSize);
  if (type == kTypeOf<T> && reinterpret_cast<std::uintptr_t>(bytes.data()) % alignof(T) == 0) {
    return {std::span<const T>(reinterpret_cast<const T*>(bytes.data()), count), file};
  }
  if constexpr (std::is_floating_point_v<T>) {
    return type == F32 ? Convert<float, T>(value, bytes) : Convert<double, T>(value, bytes);
  } else {
    return type == U32 ? Convert<std::uint32_t, T>(value, bytes) : Convert<std::uint64_t, T>(value, bytes);
  }
}

// One loop without branches: a number is finite unless all bits of its exponent are set.
template <class Bits, class T>
bool ExponentsFit(std::span<const T> values, Bits exponent) {
  bool wrong = false;
  for (const T value : values) wrong |= (std::bit_cast<Bits>(value) & exponent) == exponent;
  return !wrong;
}

}  // namespace

const std::shared_ptr<const MappedFile>& BinaryFiles::Open(const Json& name) {
  const std::string text = ReadText(name);
  if (const auto known = files_.find(text); known != files_.end()) return known->second;
  const fs::path path(text);
  const auto steps = std::pair(path.begin(), path.end());
  if (text.empty() || path.is_absolute() || std::find(steps.first, steps.second, "..") != steps.second) {
    Fail(name, "\"" + text + "\" is not a path below the scene's directory");
  }
  std::error_code error;
  const fs::path base = fs::canonical(directory_.empty() ? "." : directory_, error);
  const fs::path target = error ? fs::path() : fs::canonical(base / path, error);
  if (error) Fail(name, "can't read \"" + text + "\": " + error.message());
  // A link may lead out.
  if (std::mismatch(base.begin(), base.end(), target.begin(), target.end()).first != base.end()) {
    Fail(name, "\"" + text + "\" leads out of the scene's directory");
  }
  // Before it is opened: opening a pipe would wait for its writer.
  if (!fs::is_regular_file(target, error)) Fail(name, "\"" + text + "\" is not a file");
  try {
    const auto opened = files_.emplace(text, MappedFile::Open(target)).first;
    opened_.push_back(target);
    return opened->second;
  } catch (const InputError& fault) {
    Fail(name, fault.what());
  }
}

template <class T>
headless::Array<T> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group) {
  if (!value.IsArray() && !value.IsObject()) Fail(value, "expected a list of numbers or {\"file\": ...}");
  headless::Array<T> values = value.IsArray() ? ReadList<T>(value, group) : ReadBinary<T>(value, files);
  if (values.size() % group != 0) {
    Fail(value, "holds " + std::to_string(values.size()) + " numbers, not a multiple of " + std::to_string(group));
  }
  return values;
}

template headless::Array<float> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group);
template headless::Array<double> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group);
template headless::Array<std::uint32_t> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group);
template headless::Array<std::uint64_t> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group);

float ReadFloat(const Json& value) { return ReadListed<float>(value); }

bool AllFinite(std::span<const float> values) { return ExponentsFit<std::uint32_t>(values, 0x7F800000u); }
bool AllFinite(std::span<const double> values) {
  return ExponentsFit<std::uint64_t>(values, std::uint64_t{0x7FF} << 52);
}

}  // namespace readers
