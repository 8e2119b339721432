#include "readers/mapped_file.h"

#include "readers/read_scene.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace readers {
namespace {

[[noreturn]] void Fail(const std::filesystem::path& file, int error) {
  throw InputError(file.string() + ": " + std::strerror(error));
}

}  // namespace

std::shared_ptr<const MappedFile> MappedFile::Open(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe must not wait for a writer
  if (descriptor < 0) Fail(file, errno);
  std::shared_ptr<MappedFile> mapped(new MappedFile);
  struct stat status = {};
  int error = fstat(descriptor, &status) < 0 ? errno : 0;
  if (error == 0 && S_ISDIR(status.st_mode)) error = EISDIR;
  if (error == 0 && !S_ISREG(status.st_mode)) error = EINVAL;
  if (error == 0 && status.st_size > 0) {
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (address == MAP_FAILED) {  // NOLINT: the system's own cast
      error = errno;
    } else {
      mapped->address_ = address;
      mapped->size_ = size;
      madvise(address, size, MADV_SEQUENTIAL);
    }
  }
  close(descriptor);
  if (error != 0) Fail(file, error);
  return mapped;
}

MappedFile::~MappedFile() {
  if (address_) munmap(address_, size_);
}

void MappedFile::ForgetPiece(const char*& begin, const char* end) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(begin) + page - 1) / page * page;
  const std::uintptr_t last = reinterpret_cast<std::uintptr_t>(end) / page * page;
  if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);  // NOLINT: a page's address
  begin = end;
}

}  // namespace readers
