#include "readers/scene_array_writer.h"

#include "headless/mesh_data.h"

#include <type_traits>

namespace readers {
namespace {

constexpr std::size_t kLeastBinary = 64;  // numbers; shorter arrays are easier to follow in the text
constexpr std::size_t kAlignment = 8;     // of the largest number, for arrays to be used in place

template <class T>
void WriteEntry(SceneText& text, T value) {
  if constexpr (std::is_floating_point_v<T>) {
    text.Number(value);
  } else if (std::is_same_v<T, std::uint32_t> && value == headless::kNone) {
    text.Whole(-1);
  } else {
    text.Natural(value);
  }
}

}  // namespace

ArrayWriter::ArrayWriter(SceneText& text, const std::filesystem::path& sceneFile, ArrayForm form)
    : text_(text), binaryPath_(std::filesystem::path(sceneFile).replace_extension(".bin")), form_(form) {
  const std::string name = binaryPath_.filename().string();
  if (form == ArrayForm::Binary && FileText(name) != name)
    throw SceneWriteError(binaryPath_.string() + ": a name that isn't UTF-8 can't stand in the scene file");
}

bool ArrayWriter::IsBinary(std::size_t count) const { return form_ == ArrayForm::Binary && count >= kLeastBinary; }

template <class T>
void ArrayWriter::Write(std::span<const T> values, std::uint32_t group) {
  if (IsBinary(values.size())) return WriteBinary(values);
  text_.BeginList(Layout::Filled);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (group > 1 && i % group == 0) text_.BeginList(Layout::Tight);
    WriteEntry(text_, values[i]);
    if (group > 1 && i % group == group - 1) text_.EndList();
  }
  text_.EndList();
}

template <class T>
void ArrayWriter::WriteBinary(std::span<const T> values) {
  if (!binary_) binary_.emplace(binaryPath_);
  constexpr char kZeros[kAlignment] = {};
  binary_->Write(kZeros, (kAlignment - binary_->Size() % kAlignment) % kAlignment);
  text_.BeginObject(Layout::Filled);
  text_.Key("file");
  text_.Text(binaryPath_.filename().string());
  text_.Key("offset");
  text_.Natural(binary_->Size());
  text_.Key("count");
  text_.Natural(values.size());
  text_.EndObject();
  binary_->Write(values.data(), values.size_bytes());
}

void ArrayWriter::Close() {
  if (binary_) binary_->Close();
}

template void ArrayWriter::Write(std::span<const float> values, std::uint32_t group);
template void ArrayWriter::Write(std::span<const double> values, std::uint32_t group);
template void ArrayWriter::Write(std::span<const std::uint32_t> values, std::uint32_t group);
template void ArrayWriter::Write(std::span<const std::uint64_t> values, std::uint32_t group);

}  // namespace readers
