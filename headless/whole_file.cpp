#include "headless/whole_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace headless {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void FailToWrite(const fs::path& file, int error) {
  throw WriteError(file.string() + ": can't be written: " + std::strerror(error));
}

// A file beside the target; it goes unless it takes the target's place.
class NewFile {
 public:
  explicit NewFile(const fs::path& target) {
    // Not mkstemp, so that the user's umask counts. A name that is left from a killed process is passed over.
    constexpr int kAttempts = 100;
    for (int attempt = 0; descriptor_ < 0 && attempt < kAttempts; ++attempt) {
      const std::string name = "." + target.filename().string() + "-" + std::to_string(getpid()) + "-" +
                               std::to_string(attempt) + ".new";
      path_ = target.parent_path() / name;
      descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (descriptor_ < 0 && errno != EEXIST) break;
    }
    isMade_ = descriptor_ >= 0;
  }
  ~NewFile() {
    const int error = errno;
    if (descriptor_ >= 0) close(descriptor_);
    if (isMade_ && !isMoved_) unlink(path_.c_str());
    errno = error;
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Each leaves its reason in errno.
  bool Write(std::string_view bytes) {
    while (descriptor_ >= 0 && !bytes.empty()) {
      const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return descriptor_ >= 0;
  }
  void TakePermissions(const struct stat& old) { static_cast<void>(fchmod(descriptor_, old.st_mode & 07777)); }
  bool MoveTo(const fs::path& target) {
    if (fsync(descriptor_) != 0) return false;
    const int closed = close(std::exchange(descriptor_, -1));
    isMoved_ = closed == 0 && std::rename(path_.c_str(), target.c_str()) == 0;
    return isMoved_;
  }

 private:
  fs::path path_;
  int descriptor_ = -1;
  bool isMade_ = false, isMoved_ = false;
};

}  // namespace

std::string ReadSmallFile(const fs::path& file, std::size_t limit) {
  const auto close = [](std::FILE* stream) { std::fclose(stream); };
  const std::unique_ptr<std::FILE, decltype(close)> stream(std::fopen(file.c_str(), "rbe"), close);
  if (!stream) throw ReadError(file.string() + ": can't be read: " + std::strerror(errno));
  std::string bytes;
  char block[4096];
  for (std::size_t count; bytes.size() <= limit && (count = std::fread(block, 1, sizeof block, stream.get())) > 0;)
    bytes.append(block, count);
  if (std::ferror(stream.get())) throw ReadError(file.string() + ": can't be read: " + std::strerror(errno));
  if (bytes.size() > limit)
    throw ReadError(file.string() + ": is longer than " + std::to_string(limit) + " bytes");
  return bytes;
}

void WriteFileAtomically(const fs::path& file, std::string_view bytes) {
  std::error_code error;
  const fs::path target = fs::weakly_canonical(fs::absolute(file), error);
  if (error) FailToWrite(file, error.value());
  struct stat old;
  const bool isReplaced = stat(target.c_str(), &old) == 0;
  if (isReplaced && !S_ISREG(old.st_mode)) throw WriteError(file.string() + ": is not a regular file");
  NewFile written(target);
  if (!written.Write(bytes)) FailToWrite(file, errno);
  if (isReplaced) written.TakePermissions(old);
  if (!written.MoveTo(target)) FailToWrite(file, errno);
}

}  // namespace headless
