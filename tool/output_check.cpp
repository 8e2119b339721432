#include "tool/output_check.h"

#include "tool/cut_json.h"
#include "tool/fault_place.h"
#include "tool/image_check.h"

#include <fmt/core.h>
#include <rapidjson/error/en.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tool {
namespace {

using Bytes = std::span<const std::byte>;
using Json = rapidjson::Value;

constexpr std::uint32_t kComponentFloat = 5126;
constexpr std::uint32_t kComponentU16 = 5123;

std::string_view TextOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

std::uint64_t ComponentCount(const Json& accessor) {
  static constexpr std::pair<const char*, std::uint64_t> kTypes[] = {
      {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
  for (const auto& [type, count] : kTypes)
    if (accessor["type"] == type) return count;
  return 0;
}

// A float is finite when its exponent isn't all ones.
bool AllFinite(Bytes floats) {
  bool finite = true;
  for (std::size_t offset = 0; offset + 4 <= floats.size(); offset += 4) {
    std::uint32_t bits;
    std::memcpy(&bits, floats.data() + offset, 4);
    finite &= (bits & 0x7F800000u) != 0x7F800000u;
  }
  return finite;
}

bool HasNan(Bytes floats) {
  for (std::size_t offset = 0; offset + 4 <= floats.size(); offset += 4) {
    float value;
    std::memcpy(&value, floats.data() + offset, 4);
    if (std::isnan(value)) return true;
  }
  return false;
}

// Checks one document of a scene; the first fault is thrown.
class DocumentCheck {
 public:
  DocumentCheck(WrittenDocument& document, const headless::SceneData& scene)
      : document_(document), scene_(scene) {}

  void Parse() {
    rapidjson::Document& root = document_.root;
    const std::string_view json = TextOf(document_.json);
    root.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
    if (!root.HasParseError() && root.IsObject()) return;
    if (const std::optional<CutJson> cut = CompleteCutJson(json)) {
      rapidjson::Document completed;
      completed.Parse<rapidjson::kParseIterativeFlag>(cut->text.data(), cut->text.size());
      if (!completed.HasParseError())
        throw WriteFault("a number that is infinite or not a number: " +
                         PlaceOfNumber(completed, cut->path, scene_));
    }
    throw WriteFault(fmt::format("its JSON is broken: {} at byte {}",
                                 rapidjson::GetParseError_En(root.GetParseError()), root.GetErrorOffset()));
  }

  void CheckBuffer() const {
    const auto buffers = ArrayOf(document_.root, "buffers");
    const std::uint64_t length = buffers.Empty() ? 0 : NumberOf(buffers[0], "byteLength");
    if (length != document_.buffer.size())
      throw WriteFault(
          fmt::format("its buffer has {} bytes where the JSON says {}", document_.buffer.size(), length));
    std::size_t index = 0;
    for (const Json& view : ArrayOf(document_.root, "bufferViews")) {
      if (NumberOf(view, "byteOffset") + NumberOf(view, "byteLength") > length)
        throw WriteFault(fmt::format("buffer view {} reaches beyond the buffer", index));
      ++index;
    }
  }

  void CheckAccessors(const ShareSink& told) const {
    const auto accessors = ArrayOf(document_.root, "accessors");
    std::uint64_t bytes = 0;
    for (std::size_t index = 0; index < accessors.Size(); ++index) {
      bytes += CheckAccessor(accessors[static_cast<rapidjson::SizeType>(index)], index);
      told(static_cast<double>(bytes) / static_cast<double>(document_.buffer.size() + 1));
    }
  }

 private:
  // Returns its bytes.
  std::uint64_t CheckAccessor(const Json& accessor, std::size_t index) const {
    const auto views = ArrayOf(document_.root, "bufferViews");
    const std::uint64_t view = NumberOf(accessor, "bufferView");
    if (view >= views.Size()) throw WriteFault(fmt::format("accessor {} names buffer view {}", index, view));
    const Json& bufferView = views[static_cast<rapidjson::SizeType>(view)];
    const std::uint64_t type = NumberOf(accessor, "componentType");
    const std::uint64_t size = type == kComponentU16 ? 2 : 4;
    const std::uint64_t needed = NumberOf(accessor, "count") * ComponentCount(accessor) * size;
    if (needed > NumberOf(bufferView, "byteLength"))
      throw WriteFault(fmt::format("accessor {} reaches beyond its buffer view", index));
    const Bytes values = document_.buffer.subspan(NumberOf(bufferView, "byteOffset"), needed);
    if (type == kComponentFloat && !AllFinite(values))
      throw WriteFault((HasNan(values) ? "a value that is not a number: " : "an infinite value: ") +
                       PlaceOfAccessor(document_.root, index, scene_));
    return needed;
  }

  WrittenDocument& document_;
  const headless::SceneData& scene_;
};

}  // namespace

WrittenDocument CheckOutput(const std::filesystem::path& file, const headless::SceneData& scene,
                            const ShareSink& told) {
  WrittenDocument document = OpenDocument(file);
  DocumentCheck check(document, scene);
  check.Parse();
  check.CheckBuffer();
  check.CheckAccessors(told);
  CheckImages(document, file.parent_path(), scene);
  return document;
}

std::optional<std::string> FindWriteFault(const std::filesystem::path& file) {
  std::FILE* const stream = std::fopen(file.c_str(), "ab");
  if (!stream) return std::strerror(errno);
  const std::string block(65536, '\0');
  const bool written = std::fwrite(block.data(), 1, block.size(), stream) == block.size();
  const int error = errno;
  if (std::fclose(stream) == 0 && written) return std::nullopt;
  return std::strerror(written ? errno : error);
}

}  // namespace tool
