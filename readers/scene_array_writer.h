// Arrays of numbers in a scene file as it is written: in its text, or in a binary file beside it.
#pragma once

#include "readers/output_file.h"
#include "readers/scene_text.h"
#include "readers/scene_writer.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

namespace readers {

class ArrayWriter {
 public:
  ArrayWriter(SceneText& text, const std::filesystem::path& sceneFile, ArrayForm form);

  // An array of float, double, std::uint32_t or std::uint64_t as the next value of the text; one list per value
  // of `group` numbers when it stands there. headless::kNone becomes -1.
  template <class T>
  void Write(std::span<const T> values, std::uint32_t group = 1);

  bool IsBinary(std::size_t count) const;  // whether an array of so many numbers goes to the binary file
  void Close();

 private:
  template <class T>
  void WriteBinary(std::span<const T> values);

  SceneText& text_;
  std::filesystem::path binaryPath_;
  ArrayForm form_;
  std::optional<OutputFile> binary_;  // made for the first array
};

}  // namespace readers
