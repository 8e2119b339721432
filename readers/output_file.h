// A file that is written from start to end, every step checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace readers {

class OutputFile {
 public:
  // Throws SceneWriteError, as all steps do.
  explicit OutputFile(const std::filesystem::path& file);

  void Write(const void* bytes, std::size_t size);
  std::uint64_t Size() const { return size_; }  // written so far
  void Close();

 private:
  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::filesystem::path file_;
  std::unique_ptr<std::FILE, Closer> stream_;
  std::uint64_t size_ = 0;
};

}  // namespace readers
