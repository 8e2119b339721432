#include "tool/output_outline.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <span>

namespace tool {
namespace {

using enum OutputArray;

// By OutputArray.
constexpr std::string_view kArrays[] = {"nodes", "meshes",     "materials", "textures",    "images",   "cameras",
                                        "skins", "animations", "buffers",   "bufferViews", "accessors"};

enum class Field {
  None,
  BufferLength,
  ViewOffset,
  ViewLength,
  AccessorView,
  AccessorComponent,
  AccessorCount,
  AccessorType,
  ImageView,
  ImageUri,
  PrimitiveIndices,
  PrimitivePosition,
  SamplerInput,
};

// An element of an array under the root is three levels deep, what it holds in arrays five.
constexpr int kElement = 3, kPart = 5, kPartMember = 6;
constexpr int kDeepest = 64;  // glTF without extensions ends at a tenth of it

struct FieldRow {
  OutputArray array;
  int depth;
  std::string_view key;
  Field field;
};
constexpr FieldRow kFields[] = {
    {Buffers, kElement, "byteLength", Field::BufferLength},
    {BufferViews, kElement, "byteOffset", Field::ViewOffset},
    {BufferViews, kElement, "byteLength", Field::ViewLength},
    {Accessors, kElement, "bufferView", Field::AccessorView},
    {Accessors, kElement, "componentType", Field::AccessorComponent},
    {Accessors, kElement, "count", Field::AccessorCount},
    {Accessors, kElement, "type", Field::AccessorType},
    {Images, kElement, "bufferView", Field::ImageView},
    {Images, kElement, "uri", Field::ImageUri},
    {Meshes, kPart, "indices", Field::PrimitiveIndices},
    {Meshes, kPartMember, "POSITION", Field::PrimitivePosition},
    {Animations, kPart, "input", Field::SamplerInput},
};

OutputArray ArrayOf(std::string_view key) {
  std::size_t place = 0;
  while (place < std::size(kArrays) && kArrays[place] != key) ++place;
  return static_cast<OutputArray>(place);
}

// The rows of an array stand together.
std::span<const FieldRow> FieldsOf(OutputArray array) {
  const FieldRow* first = std::begin(kFields);
  while (first != std::end(kFields) && first->array != array) ++first;
  const FieldRow* last = first;
  while (last != std::end(kFields) && last->array == array) ++last;
  return {first, last};
}

std::uint64_t ComponentCount(std::string_view type) {
  constexpr std::pair<std::string_view, std::uint64_t> kTypes[] = {
      {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
  for (const auto& [name, count] : kTypes)
    if (name == type) return count;
  return 0;
}

// Takes the parser's events.
class OutlineHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, OutlineHandler> {
 public:
  explicit OutlineHandler(OutputOutline& outline) : outline_(outline) {}

  bool StartObject() {
    if (!Enter()) return false;
    if (depth_ == kElement) AddElement();
    if (depth_ == kPart && array_ == Meshes) ++outline_.primitives;
    return true;
  }
  bool EndObject(rapidjson::SizeType) { return Leave(); }
  bool StartArray() { return Enter(); }
  bool EndArray(rapidjson::SizeType) { return Leave(); }

  bool Key(const char* text, rapidjson::SizeType size, bool) {
    const std::string_view key(text, size);
    field_ = Field::None;
    if (depth_ == 1) {
      array_ = ArrayOf(key);
      fields_ = FieldsOf(array_);
    }
    for (const FieldRow& row : fields_)
      if (row.depth == depth_ && row.key == key) field_ = row.field;
    return true;
  }
  bool Uint(unsigned number) { return Uint64(number); }
  bool Uint64(std::uint64_t number) {
    Take(number);
    return true;
  }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    if (field_ == Field::AccessorType) outline_.accessors.back().components = ComponentCount({text, size});
    if (field_ == Field::ImageUri) outline_.images.back().uri.emplace(text, size);
    return true;
  }

 private:
  bool Enter() { return ++depth_ <= kDeepest; }
  bool Leave() {
    --depth_;
    field_ = Field::None;
    return true;
  }

  void AddElement() {
    if (array_ == None) return;
    ++outline_.sizes[static_cast<std::size_t>(array_)];
    if (array_ == BufferViews) outline_.views.emplace_back();
    if (array_ == Accessors) outline_.accessors.emplace_back();
    if (array_ == Images) outline_.images.emplace_back();
  }

  void Take(std::uint64_t number) {
    switch (field_) {
      case Field::BufferLength:
        if (outline_.SizeOf(Buffers) == 1) outline_.bufferLength = number;
        break;
      case Field::ViewOffset:
        outline_.views.back().byteOffset = number;
        break;
      case Field::ViewLength:
        outline_.views.back().byteLength = number;
        break;
      case Field::AccessorView:
        outline_.accessors.back().bufferView = number;
        break;
      case Field::AccessorComponent:
        outline_.accessors.back().componentType = number;
        break;
      case Field::AccessorCount:
        outline_.accessors.back().count = number;
        break;
      case Field::ImageView:
        outline_.images.back().bufferView = number;
        break;
      case Field::PrimitiveIndices:
        outline_.indices.push_back(number);
        break;
      case Field::PrimitivePosition:
        outline_.positions.push_back(number);
        break;
      case Field::SamplerInput:
        outline_.inputs.push_back(number);
        break;
      case Field::None:
      case Field::AccessorType:
      case Field::ImageUri:
        break;
    }
  }

  OutputOutline& outline_;
  int depth_ = 0;
  OutputArray array_ = None;
  std::span<const FieldRow> fields_;
  Field field_ = Field::None;
};

}  // namespace

std::optional<JsonError> ReadOutline(std::string text, OutputOutline& outline) {
  // In the text itself, and by recursion, which takes less than half the time.
  rapidjson::InsituStringStream stream(text.data());
  OutlineHandler handler(outline);
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<rapidjson::kParseInsituFlag>(stream, handler);
  if (result.Code() == rapidjson::kParseErrorTermination) return JsonError{"Nested too deeply.", result.Offset()};
  if (result.IsError()) return JsonError{rapidjson::GetParseError_En(result.Code()), result.Offset()};
  if (stream.Tell() < text.size())
    return JsonError{"A zero byte.", stream.Tell()};  // the reader takes it for the end
  return std::nullopt;
}

}  // namespace tool
