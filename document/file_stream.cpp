#include "document/file_stream.h"

#include <algorithm>

#ifdef __linux__
#include <unistd.h>
#endif

namespace {

constexpr std::uint64_t kCopyBytes = 65536;
constexpr std::uint64_t kKernelBytes = 1 << 30;

// Copies inside the kernel where that can be had, so that the bytes don't pass through this program. Both files
// are left behind what was copied.
std::uint64_t CopyInKernel([[maybe_unused]] std::FILE* from, [[maybe_unused]] std::FILE* to,
                           [[maybe_unused]] std::uint64_t byteCount) {
  std::uint64_t copied = 0;
#ifdef __linux__
  if (std::ftell(from) != 0 || std::fflush(to) != 0) return 0;
  while (copied < byteCount) {
    const auto piece = static_cast<std::size_t>(std::min(kKernelBytes, byteCount - copied));
    const ssize_t got = copy_file_range(fileno(from), nullptr, fileno(to), nullptr, piece, 0);
    if (got <= 0) break;  // the end of the file, or for the common way to try
    copied += static_cast<std::uint64_t>(got);
  }
  std::fseek(from, static_cast<long>(copied), SEEK_SET);
  std::fseek(to, 0, SEEK_END);
#endif
  return copied;
}

}  // namespace

void FileStream::Write(const void* data, std::size_t byteCount) {
  Flush();
  if (!failed_ && byteCount > 0) failed_ = std::fwrite(data, 1, byteCount, file_.get()) != byteCount;
}

std::uint64_t FileStream::CopyFrom(std::FILE* source, std::uint64_t byteCount) {
  Flush();
  if (failed_) return 0;
  std::uint64_t copied = CopyInKernel(source, file_.get(), byteCount);
  std::vector<char> buffer(std::min(kCopyBytes, byteCount - copied));
  while (copied < byteCount && !failed_) {
    const std::size_t wanted = static_cast<std::size_t>(std::min(kCopyBytes, byteCount - copied));
    const std::size_t got = std::fread(buffer.data(), 1, wanted, source);
    if (got == 0) break;
    Write(buffer.data(), got);
    copied += got;
  }
  return copied;
}

void FileStream::Flush() {
  if (!failed_ && used_ > 0) failed_ = std::fwrite(buffer_.data(), 1, used_, file_.get()) != used_;
  used_ = 0;
}

bool FileStream::Close() {
  Flush();
  if (file_ && std::fclose(file_.release()) != 0) failed_ = true;
  return !failed_;
}
