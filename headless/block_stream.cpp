#include "headless/block_stream.h"

#include <bit>

namespace headless {
namespace {

void Put(std::string& bytes, std::uint64_t bits, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(bits >> (8 * i) & 0xFF);
}

}  // namespace

zyresult BlockWriter::WriteUint32(std::uint32_t value) {
  Put(bytes_, value, sizeof(value));
  return ZYe_OK;
}

zyresult BlockWriter::WriteDouble(double value) {
  Put(bytes_, std::bit_cast<std::uint64_t>(value), sizeof(value));
  return ZYe_OK;
}

zyresult BlockReader::Read(std::size_t size, std::uint64_t& bits) {
  if (Left() < size) {
    if (fault_.empty())
      fault_ = "ends after " + std::to_string(bytes_.size()) + " bytes, where a number of " +
               std::to_string(size) + " bytes begins at byte " + std::to_string(place_);
    return ZYe_FAILED;
  }
  bits = 0;
  for (std::size_t i = 0; i < size; ++i)
    bits |= std::uint64_t{static_cast<unsigned char>(bytes_[place_ + i])} << (8 * i);
  place_ += size;
  return ZYe_OK;
}

zyresult BlockReader::ReadUint32(std::uint32_t& value) {
  std::uint64_t bits = 0;
  const zyresult result = Read(sizeof(value), bits);
  if (ZySucceeded(result)) value = static_cast<std::uint32_t>(bits);
  return result;
}

zyresult BlockReader::ReadDouble(double& value) {
  std::uint64_t bits = 0;
  const zyresult result = Read(sizeof(value), bits);
  if (ZySucceeded(result)) value = std::bit_cast<double>(bits);
  return result;
}

}  // namespace headless
