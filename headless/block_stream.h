// Block streams: little-endian numbers one behind the other, with nothing around them.
#pragma once

#include "headless/permanent_object.h"
#include "host/stream_api.h"

#include <string>
#include <string_view>

namespace headless {

class BlockWriter final : public PermanentObject<IZyBlockWriter> {
 public:
  zyresult WriteUint32(std::uint32_t value) override;
  zyresult WriteDouble(double value) override;

  const std::string& Bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// A number that isn't there as a whole fails with ZYe_FAILED and isn't read in part.
class BlockReader final : public PermanentObject<IZyBlockReader> {
 public:
  // The bytes outlive the reader.
  explicit BlockReader(std::string_view bytes) : bytes_(bytes) {}

  zyresult ReadUint32(std::uint32_t& value) override;
  zyresult ReadDouble(double& value) override;

  std::size_t Left() const { return bytes_.size() - place_; }
  // What the first read that failed lacked; empty when none did.
  const std::string& Fault() const { return fault_; }

 private:
  zyresult Read(std::size_t size, std::uint64_t& bits);

  std::string_view bytes_;
  std::size_t place_ = 0;
  std::string fault_;
};

}  // namespace headless
