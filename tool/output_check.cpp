#include "tool/output_check.h"

#include "tool/cut_json.h"
#include "tool/fault_place.h"
#include "tool/image_check.h"

#include <fmt/core.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tool {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::uint32_t kComponentFloat = 5126;
constexpr std::uint32_t kComponentU16 = 5123;

std::string_view TextOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// Of a mapped text no more than a piece stays in memory beside its copy.
std::string CopyOf(std::string_view mapped) {
  constexpr std::size_t kPiece = 1 << 20;
  std::string copy;
  copy.reserve(mapped.size());
  while (copy.size() < mapped.size()) {
    const char* piece = mapped.data() + copy.size();
    copy += mapped.substr(copy.size(), kPiece);
    readers::MappedFile::Forget(piece, mapped.data() + copy.size());
  }
  return copy;
}

// A float is finite when its exponent isn't all ones.
bool AllFinite(Bytes floats) {
  constexpr std::uint32_t kExponent = 0x7F800000u;
  // A loop without a way out, and with its end known beforehand, so that compilers take many floats at a time.
  std::uint32_t infinite = 0;
  const std::size_t count = floats.size() / 4;
  for (std::size_t place = 0; place < count; ++place) {
    std::uint32_t bits;
    std::memcpy(&bits, floats.data() + 4 * place, 4);
    infinite |= (bits & kExponent) == kExponent ? 1u : 0u;
  }
  return infinite == 0;
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
    const std::string_view json = TextOf(document_.json);
    const std::optional<JsonError> error = ReadOutline(CopyOf(json), document_.outline);
    if (!error) return;
    if (const std::optional<CutJson> cut = CompleteCutJson(json)) {
      const rapidjson::Document completed = ParseTree(cut->text);
      if (!completed.HasParseError())
        throw WriteFault("a number that is infinite or not a number: " +
                         PlaceOfNumber(completed, cut->path, scene_));
    }
    throw WriteFault(fmt::format("its JSON is broken: {} at byte {}", error->reason, error->offset));
  }

  void CheckBuffer() const {
    const OutputOutline& outline = document_.outline;
    if (outline.bufferLength != document_.buffer.size())
      throw WriteFault(fmt::format("its buffer has {} bytes where the JSON says {}", document_.buffer.size(),
                                   outline.bufferLength));
    for (std::size_t index = 0; index < outline.views.size(); ++index) {
      const OutlineView& view = outline.views[index];
      // No sum or product of these numbers, which may be as large as they like.
      if (view.byteOffset > outline.bufferLength || view.byteLength > outline.bufferLength - view.byteOffset)
        throw WriteFault(fmt::format("buffer view {} reaches beyond the buffer", index));
    }
  }

  void CheckAccessors(const ShareSink& told) const {
    std::uint64_t bytes = 0;
    const char* kept = TextOf(document_.buffer).data();
    for (std::size_t index = 0; index < document_.outline.accessors.size(); ++index) {
      const Bytes values = CheckAccessor(index);
      bytes += values.size();
      readers::MappedFile::Forget(kept, TextOf(values).data() + values.size());  // most stand in this order
      // Accessors may share what they show.
      told(std::min(1.0, static_cast<double>(bytes) / static_cast<double>(document_.buffer.size() + 1)));
    }
  }

 private:
  static rapidjson::Document ParseTree(std::string_view json) {
    rapidjson::Document root;
    root.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
    return root;
  }

  Bytes CheckAccessor(std::size_t index) const {
    const OutlineAccessor& accessor = document_.outline.accessors[index];
    const std::vector<OutlineView>& views = document_.outline.views;
    if (accessor.bufferView >= views.size())
      throw WriteFault(fmt::format("accessor {} names buffer view {}", index, accessor.bufferView));
    const OutlineView& view = views[accessor.bufferView];
    const std::uint64_t size = accessor.components * (accessor.componentType == kComponentU16 ? 2 : 4);
    if (size > 0 && accessor.count > view.byteLength / size)
      throw WriteFault(fmt::format("accessor {} reaches beyond its buffer view", index));
    const std::uint64_t needed = accessor.count * size;
    const Bytes values = document_.buffer.subspan(view.byteOffset, needed);
    if (accessor.componentType == kComponentFloat && !AllFinite(values))
      throw WriteFault((HasNan(values) ? "a value that is not a number: " : "an infinite value: ") +
                       PlaceOfAccessor(ParseTree(TextOf(document_.json)), index, scene_));
    return values;
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
  const std::string block(65536, '\0');
  std::FILE* const stream = std::fopen(file.c_str(), "ab");
  if (!stream) return std::strerror(errno);
  const bool written = std::fwrite(block.data(), 1, block.size(), stream) == block.size();
  const int error = errno;
  if (std::fclose(stream) == 0 && written) return std::nullopt;
  return std::strerror(written ? errno : error);
}

}  // namespace tool
