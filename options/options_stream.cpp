#include "options/options_stream.h"

#include "options/load_option_table.h"

namespace {

constexpr std::uint32_t kVersion = 1;
constexpr int kUnitsShift = 18;
// Part of the format, odd as it is: the units 8 and 9 read back as 0 and 1.
constexpr std::uint32_t kUnitsMask = 0x457;

void ThrowIfFailed(zyresult result) {
  if (ZyFailed(result)) throw result;
}

// One flag, as the value of an option.
struct Flag {
  zyresult GetInt(std::int32_t& value) const {
    value = static_cast<std::int32_t>(flags >> bit & 1);
    return ZYe_OK;
  }
  zyresult GetDouble(double&) const { return ZYe_FAILED; }
  void SetInt(std::int32_t value) {
    if (value != 0) flags |= 1u << bit;
  }
  void SetDouble(double) {}

  std::uint32_t& flags;
  int bit;
};

}  // namespace

zyresult WriteLoadOptions(const LoadOptions& options, const CZyUser_BlockWriter& writer) {
  ThrowIfFailed(writer.WriteUint32(kVersion));
  std::uint32_t flags = options.importUnits << kUnitsShift;
  for (const LoadOptionRow& row : kLoadOptionTable)
    if (row.flag != kNoFlag) WriteOption(options, row, Flag{flags, row.flag});
  ThrowIfFailed(writer.WriteUint32(flags));
  ThrowIfFailed(writer.WriteDouble(options.globalScalingFactor));
  return ZYe_OK;
}

zyresult ReadLoadOptions(LoadOptions& options, const CZyUser_BlockReader& reader) {
  // A reader may succeed and give nothing; then the version is none that is known.
  std::uint32_t version = 0xFFFFFFFFu;
  ThrowIfFailed(reader.ReadUint32(version));
  if (version > kVersion) return ZYe_FAILED;
  std::uint32_t flags = 0;
  ThrowIfFailed(reader.ReadUint32(flags));
  for (const LoadOptionRow& row : kLoadOptionTable)
    if (row.flag != kNoFlag) ReadOption(options, row, Flag{flags, row.flag});
  if (version == 0) {
    options.changeTextureEffect = false;
    options.importUnits = 0;
    options.globalScalingFactor = 1.0;
    return ZYe_OK;
  }
  options.importUnits = flags >> kUnitsShift & kUnitsMask;
  ThrowIfFailed(reader.ReadDouble(options.globalScalingFactor));
  return ZYe_OK;
}
