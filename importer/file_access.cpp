#include "importer/file_access.h"

#include "readers/mapped_file.h"
#include "readers/read_scene.h"

#include <assimp/IOStream.hpp>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace importer {
namespace {

class MappedStream : public Assimp::IOStream {
 public:
  explicit MappedStream(std::shared_ptr<const readers::MappedFile> file)
      : file_(std::move(file)), begin_(file_->Begin()), size_(file_->Bytes().size()) {}
  explicit MappedStream(std::string text) : text_(std::move(text)), begin_(text_.data()), size_(text_.size()) {}

  std::size_t Read(void* buffer, std::size_t size, std::size_t count) override {
    if (size == 0) return 0;
    const std::size_t whole = std::min(count, (size_ - place_) / size);
    if (whole > 0) std::memcpy(buffer, begin_ + place_, whole * size);
    place_ += whole * size;
    return whole;
  }
  std::size_t Write(const void*, std::size_t, std::size_t) override { return 0; }
  aiReturn Seek(std::size_t offset, aiOrigin origin) override {
    // Offsets from the end come negative, as unsigned numbers that wrap.
    const std::size_t base = origin == aiOrigin_SET ? 0 : origin == aiOrigin_CUR ? place_ : size_;
    const std::size_t place = base + offset;
    if (place > size_) return aiReturn_FAILURE;
    place_ = place;
    return aiReturn_SUCCESS;
  }
  std::size_t Tell() const override { return place_; }
  std::size_t FileSize() const override { return size_; }
  void Flush() override {}

 private:
  std::shared_ptr<const readers::MappedFile> file_;
  std::string text_;
  const char* begin_;
  std::size_t size_;
  std::size_t place_ = 0;
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Assimp's Collada reader takes lists of numbers only from their first byte on: the blanks behind tags go.
std::string CloseUpText(const char* begin, const char* end) {
  std::string text;
  text.reserve(static_cast<std::size_t>(end - begin));
  for (const char* place = begin; place != end;) {
    text += *place;
    if (*place++ != '>') continue;
    const char* word = std::find_if_not(place, end, IsBlank);
    if (word == end || *word != '<') place = word;
  }
  return text;
}

bool IsCollada(const std::filesystem::path& file) {
  std::string extension = file.extension().string();
  for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return extension == ".dae";
}

}  // namespace

FolderAccess::FolderAccess(const std::filesystem::path& file, std::vector<std::filesystem::path>& opened)
    : file_(std::filesystem::absolute(file).lexically_normal()), opened_(opened) {
  std::error_code error;
  folder_ = std::filesystem::canonical(file_.parent_path(), error);
}

std::filesystem::path FolderAccess::Resolve(const char* name) const {
  std::string text = name;
  std::replace(text.begin(), text.end(), '\\', '/');
  std::error_code error;
  const std::filesystem::path asked = std::filesystem::path(text).lexically_normal();
  if (std::filesystem::absolute(asked, error) == file_) return file_;
  const std::filesystem::path path = std::filesystem::canonical(folder_ / asked, error);
  if (error || folder_.empty()) return {};
  const auto [end, place] = std::mismatch(folder_.begin(), folder_.end(), path.begin(), path.end());
  return end == folder_.end() && place != path.end() ? path : std::filesystem::path();
}

bool FolderAccess::Exists(const char* name) const {
  const std::filesystem::path path = Resolve(name);
  std::error_code error;
  return !path.empty() && std::filesystem::is_regular_file(path, error);
}

Assimp::IOStream* FolderAccess::Open(const char* name, const char* mode) {
  const std::filesystem::path path = mode[0] == 'r' ? Resolve(name) : std::filesystem::path();
  if (path.empty()) return nullptr;
  try {
    auto file = readers::MappedFile::Open(path);
    if (path != file_ && std::find(opened_.begin(), opened_.end(), path) == opened_.end()) opened_.push_back(path);
    if (IsCollada(path)) return new MappedStream(CloseUpText(file->Begin(), file->End()));
    return new MappedStream(std::move(file));
  } catch (const readers::InputError&) {
    return nullptr;
  }
}

void FolderAccess::Close(Assimp::IOStream* stream) { delete stream; }

}  // namespace importer
