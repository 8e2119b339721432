#include "tool/file_flush.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace tool {

void FlushToDisk(const std::filesystem::path& fileOrDirectory) {
  const int descriptor = open(fileOrDirectory.c_str(), O_RDONLY | O_CLOEXEC);
  int error = descriptor < 0 ? errno : 0;
  if (descriptor >= 0) {
    if (fsync(descriptor) != 0) error = errno;
    if (close(descriptor) != 0 && error == 0) error = errno;
  }
  if (error == 0 || error == EINVAL || error == ENOTSUP || error == EROFS) return;
  throw std::filesystem::filesystem_error("can't be flushed", fileOrDirectory,
                                          std::error_code(error, std::generic_category()));
}

}  // namespace tool
