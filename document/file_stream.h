// A file that is written from its start to its end, and knows at the end whether all of it arrived.
#pragma once

#include "document/path_rules.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

// After the first failure it writes nothing more.
class FileStream {
 public:
  // Replaces the file.
  explicit FileStream(const std::string& path) : file_(OpenForWriting(path)), failed_(!file_) {}

  void Put(char byte) {
    if (used_ == buffer_.size()) Flush();
    buffer_[used_++] = byte;
  }
  void PutRepeated(char byte, std::size_t count) {
    for (; count > 0; --count) Put(byte);
  }
  // In one piece, past the buffer.
  void Write(const void* data, std::size_t byteCount);
  void Write(const std::vector<std::string_view>& pieces) {
    for (const std::string_view piece : pieces) Write(piece.data(), piece.size());
  }
  // Appends up to `byteCount` bytes of a file from its place on, and returns how many it gave.
  std::uint64_t CopyFrom(std::FILE* source, std::uint64_t byteCount);
  void Flush();

  bool Failed() const { return failed_; }
  // True when the file was opened and every byte reached it. Nothing may follow.
  bool Close();

 private:
  FilePtr file_;
  bool failed_;
  std::size_t used_ = 0;
  std::array<char, 1000> buffer_;
};
