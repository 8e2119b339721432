#include "readers/output_file.h"

#include "readers/scene_writer.h"

#include <cerrno>
#include <cstring>

namespace readers {
namespace {

[[noreturn]] void Fail(const std::filesystem::path& file) {
  throw SceneWriteError(file.string() + ": " + std::strerror(errno));
}

}  // namespace

OutputFile::OutputFile(const std::filesystem::path& file) : file_(file), stream_(std::fopen(file.c_str(), "wbe")) {
  if (!stream_) Fail(file_);
}

void OutputFile::Write(const void* bytes, std::size_t size) {
  if (std::fwrite(bytes, 1, size, stream_.get()) != size) Fail(file_);
  size_ += size;
}

void OutputFile::Close() {
  if (std::fclose(stream_.release()) != 0) Fail(file_);
}

}  // namespace readers
