// Stands in for readers/mapped_file.cpp: what reads beyond a file's end is seen by the address sanitizer, while
// behind a mapping there are the zeros of its last page.
#include "readers/mapped_file.h"
#include "readers/read_scene.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace readers {

std::shared_ptr<const MappedFile> MappedFile::Open(const std::filesystem::path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (error) throw InputError(file.string() + ": " + error.message());
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"), &std::fclose);
  if (!stream) throw InputError(file.string() + ": " + std::strerror(errno));
  std::shared_ptr<MappedFile> mapped(new MappedFile);
  if (size == 0) return mapped;
  mapped->address_ = std::malloc(size);
  mapped->size_ = std::fread(mapped->address_, 1, size, stream.get());
  if (mapped->size_ != size) throw InputError(file.string() + ": changed");
  return mapped;
}

MappedFile::~MappedFile() { std::free(address_); }

void MappedFile::ForgetPiece(const char*& begin, const char* end) { begin = end; }

}  // namespace readers
