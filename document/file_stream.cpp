#include "document/file_stream.h"

void FileStream::Write(const void* data, std::size_t byteCount) {
  Flush();
  if (!failed_ && byteCount > 0) failed_ = std::fwrite(data, 1, byteCount, file_.get()) != byteCount;
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
