// A file's bytes, mapped into memory for reading.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace readers {

class MappedFile {
 public:
  // Throws InputError with the file's name and the system's reason; a directory is refused.
  static std::shared_ptr<const MappedFile> Open(const std::filesystem::path& file);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  // For a walk over a mapped file: gives back the memory of what was walked over, from `begin` up to `end`, once
  // it is a piece of some size, and moves `begin` behind it. What is looked at again comes from the file again.
  static void Forget(const char*& begin, const char* end) {
    constexpr std::ptrdiff_t kPiece = 1 << 20;
    if (end - begin >= kPiece) ForgetPiece(begin, end);
  }

  std::span<const std::byte> Bytes() const { return {static_cast<const std::byte*>(address_), size_}; }
  const char* Begin() const { return static_cast<const char*>(address_); }
  const char* End() const { return Begin() + size_; }

 private:
  MappedFile() = default;
  static void ForgetPiece(const char*& begin, const char* end);

  void* address_ = nullptr;  // null for an empty file
  std::size_t size_ = 0;
};

}  // namespace readers
