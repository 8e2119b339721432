#include "tool/output_outline.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <array>
#include <charconv>
#include <utility>

namespace tool {
namespace {

enum class Section { Other, Buffers, Views, Accessors };
enum class Field { Other, BufferView, ByteLength, ByteOffset, ComponentType, Count, Type };

template <class Name, std::size_t N>
Name FindName(const std::array<std::pair<std::string_view, Name>, N>& names, std::string_view text) {
  for (const auto& [name, value] : names)
    if (name == text) return value;
  return Name::Other;
}

constexpr std::array<std::pair<std::string_view, Section>, 3> kSections = {
    {{"buffers", Section::Buffers}, {"bufferViews", Section::Views}, {"accessors", Section::Accessors}}};
constexpr std::array<std::pair<std::string_view, Field>, 6> kFields = {{{"bufferView", Field::BufferView},
                                                                        {"byteLength", Field::ByteLength},
                                                                        {"byteOffset", Field::ByteOffset},
                                                                        {"componentType", Field::ComponentType},
                                                                        {"count", Field::Count},
                                                                        {"type", Field::Type}}};

std::uint64_t ComponentCount(std::string_view type) {
  constexpr std::pair<std::string_view, std::uint64_t> kTypes[] = {
      {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
  for (const auto& [name, count] : kTypes)
    if (name == type) return count;
  return 0;
}

// Takes the parser's events. An element's own fields stand three levels deep: object, array, object.
class OutlineHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, OutlineHandler> {
 public:
  explicit OutlineHandler(OutputOutline& outline) : outline_(outline) {}

  bool StartObject() {
    if (++depth_ == kElementDepth) AddElement();
    return true;
  }
  bool EndObject(rapidjson::SizeType) { return Leave(); }
  bool StartArray() {
    ++depth_;
    return true;
  }
  bool EndArray(rapidjson::SizeType) { return Leave(); }

  bool Key(const char* text, rapidjson::SizeType size, bool) {
    if (depth_ == 1) section_ = FindName(kSections, {text, size});
    if (depth_ == kElementDepth && section_ != Section::Other) field_ = FindName(kFields, {text, size});
    return true;
  }
  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    std::uint64_t number = 0;
    if (std::uint64_t* const place = Place();
        place && std::from_chars(text, text + size, number).ec == std::errc())
      *place = number;
    return true;
  }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    if (depth_ == kElementDepth && section_ == Section::Accessors && field_ == Field::Type)
      outline_.accessors.back().components = ComponentCount({text, size});
    return true;
  }

 private:
  static constexpr int kElementDepth = 3;

  bool Leave() {
    --depth_;
    return true;
  }

  void AddElement() {
    if (section_ == Section::Buffers) ++buffers_;
    if (section_ == Section::Views) outline_.views.emplace_back();
    if (section_ == Section::Accessors) outline_.accessors.emplace_back();
  }

  // Where the number of the current field goes, null for nowhere.
  std::uint64_t* Place() {
    if (depth_ != kElementDepth) return nullptr;
    if (section_ == Section::Buffers)
      return field_ == Field::ByteLength && buffers_ == 1 ? &outline_.bufferLength : nullptr;
    if (section_ == Section::Views) {
      OutlineView& view = outline_.views.back();
      if (field_ == Field::ByteLength) return &view.byteLength;
      return field_ == Field::ByteOffset ? &view.byteOffset : nullptr;
    }
    if (section_ != Section::Accessors) return nullptr;
    OutlineAccessor& accessor = outline_.accessors.back();
    if (field_ == Field::BufferView) return &accessor.bufferView;
    if (field_ == Field::ComponentType) return &accessor.componentType;
    return field_ == Field::Count ? &accessor.count : nullptr;
  }

  OutputOutline& outline_;
  int depth_ = 0;
  Section section_ = Section::Other;
  Field field_ = Field::Other;
  std::size_t buffers_ = 0;
};

}  // namespace

std::optional<std::string> ReadOutline(std::string_view text, OutputOutline& outline) {
  // Iterative, so that a deep text costs no stack. Most numbers are of no interest and stay texts.
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::MemoryStream stream(text.data(), text.size());
  OutlineHandler handler(outline);
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, handler);
  if (!result.IsError()) return std::nullopt;
  return std::string(rapidjson::GetParseError_En(result.Code())) + " at byte " + std::to_string(result.Offset());
}

}  // namespace tool
