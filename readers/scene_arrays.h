// Arrays of numbers in a scene file: listed in the JSON, or a piece of a binary file beside it.
#pragma once

#include "headless/array.h"
#include "readers/mapped_file.h"
#include "readers/scene_json.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace readers {

// The binary files of one scene, each mapped once. They lie below the scene's directory.
class BinaryFiles {
 public:
  // Each file that is opened is entered in `opened`, which must outlive this.
  BinaryFiles(std::filesystem::path directory, std::vector<std::filesystem::path>& opened)
      : directory_(std::move(directory)), opened_(opened) {}

  // The file of a reference. Throws a JsonFault at `name` when it isn't there or lies elsewhere.
  const std::shared_ptr<const MappedFile>& Open(const Json& name);

 private:
  std::filesystem::path directory_;
  std::vector<std::filesystem::path>& opened_;
  std::map<std::string, std::shared_ptr<const MappedFile>> files_;
};

// Reads an array of float, double, std::uint32_t or std::uint64_t. In the JSON it may be flat or one list per
// value of `group` numbers; its size must be a multiple of `group`. In an array of std::uint32_t -1 and null
// stand for headless::kNone. A piece of a binary file of the same type is used in place, not copied. Whole
// numbers are checked to fit; floats of a binary file may be infinite or NaN, see AllFinite.
template <class T>
headless::Array<T> ReadArray(const Json& value, BinaryFiles& files, std::uint32_t group = 1);

// A number of the JSON in 32 bits.
float ReadFloat(const Json& value);

bool AllFinite(std::span<const float> values);
bool AllFinite(std::span<const double> values);

}  // namespace readers
