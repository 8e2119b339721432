#include "readers/temporary_directory.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <system_error>

namespace readers {
namespace {

namespace fs = std::filesystem;

fs::path MakeDirectory(const fs::path& parent) {
  std::string name = (fs::absolute(parent) / "vornel-import-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::system_error(errno, std::generic_category());
  return name;
}

void RemoveAll(const fs::path& path) noexcept {
  constexpr int kAttempts = 2;  // the first one may lack the memory
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    try {
      std::error_code ignored;
      fs::remove_all(path, ignored);
      return;
    } catch (const std::bad_alloc&) {
    }
  }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory(const fs::path& parent) {
  const InterruptPause pause;
  path_ = MakeDirectory(parent);
  removal_.emplace([this] { RemoveAll(path_); });
}

TemporaryDirectory::~TemporaryDirectory() { RemoveAll(path_); }

}  // namespace readers
