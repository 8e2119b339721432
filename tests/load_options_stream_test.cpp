// The stream record of the load options.
#include "headless/block_stream.h"
#include "options/options_stream.h"
#include "tests/support/load_options_rig.h"

#include <algorithm>
#include <functional>

namespace {

using headless::BlockReader;
using headless::BlockWriter;
using namespace test_support;

std::string Record(std::uint32_t version, std::uint32_t flags, double scale) {
  BlockWriter writer;
  writer.WriteUint32(version);
  writer.WriteUint32(flags);
  writer.WriteDouble(scale);
  return writer.Bytes();
}

template <class Wrapper>
Wrapper Wrapped(IZyObject& stream) {
  Wrapper wrapper;
  wrapper.Set(&stream);
  return wrapper;
}

std::string Written(const LoadOptions& options) {
  BlockWriter writer;
  EXPECT_EQ(WriteLoadOptions(options, Wrapped<CZyUser_BlockWriter>(writer)), ZYe_OK);
  return writer.Bytes();
}

// Through the interface wrapper.
zyresult Read(CZyIfc_StreamIO<LoadOptionsIO>& io, const std::string& bytes) {
  BlockReader reader(bytes);
  return io.Read(&reader);
}

LoadOptions& OptionsOf(CZyIfc_StreamIO<LoadOptionsIO>& io) {
  return static_cast<LoadOptionsIO*>(io.Interface(LoadOptionsIO::kId))->options;
}

TEST(LoadOptionsStream, EachOptionHasItsPlace) {
  EXPECT_EQ(Written(LoadOptions()), std::string("\1\0\0\0\xFF\x19\0\0\0\0\0\0\0\0\xF0\x3F", 16));
  std::vector<LoadOptions> sets = OptionSets();
  for (std::size_t i = 0; i < sets.size(); ++i) {
    std::uint32_t flags = kDefaultFlags;
    for (std::size_t option = 0; option < kExpected.size(); ++option)
      if (kExpected[option].bit >= 0 && (i == option || i == kExpected.size()))
        flags ^= 1u << kExpected[option].bit;
    flags |= sets[i].importUnits << 18;
    EXPECT_EQ(Written(sets[i]), Record(1, flags, sets[i].globalScalingFactor)) << i;
    CZyIfc_StreamIO<LoadOptionsIO> io;
    EXPECT_EQ(Read(io, Written(sets[i])), ZYe_OK);
    EXPECT_EQ(ValuesOf(OptionsOf(io)), ValuesOf(sets[i])) << i;
  }
}

TEST(LoadOptionsStream, NumbersThatArentFlags) {
  LoadOptions options;
  options.mergeWithExistingItems = 2;
  options.loadSampleAnimationRate = 6;
  CZyIfc_StreamIO<LoadOptionsIO> io;
  EXPECT_EQ(Read(io, Written(options)), ZYe_OK);
  EXPECT_EQ(OptionsOf(io).mergeWithExistingItems, 1u);
  EXPECT_EQ(OptionsOf(io).loadSampleAnimationRate, 1u);
  for (std::uint32_t units = 0; units < 10; ++units) {
    options.importUnits = units;
    EXPECT_EQ(Written(options), Record(1, kDefaultFlags | 0x12000 | units << 18, 1.0));
    EXPECT_EQ(Read(io, Written(options)), ZYe_OK);
    EXPECT_EQ(OptionsOf(io).importUnits, units < 8 ? units : units - 8);  // the mask of the format
  }
}

// Succeeds and gives nothing.
struct SilentReader final : CountedObject<IZyBlockReader> {
  zyresult ReadUint32(std::uint32_t&) override { return ZYe_OK; }
  zyresult ReadDouble(double&) override { return ZYe_OK; }
};

TEST(LoadOptionsStream, VersionsAreToldApart) {
  struct Row {
    std::uint32_t version;
    std::uint32_t flags;
    zyresult result;
    std::vector<double> values;
  };
  LoadOptions before;
  for (const Expected& argument : kExpected) argument.change(before);
  const std::vector<double> kept = ValuesOf(before);
  const Row rows[] = {
      {0, 0, ZYe_OK, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0}},
      {0, 0xFFFFFFFF, ZYe_OK, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 0}},
      {1, 0, ZYe_OK, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5.5, 0}},
      {1, 0xFFFFFFFF, ZYe_OK, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 5.5, 0x457}},
      {1, 0x0003C000, ZYe_OK, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 5.5, 0}},
      {2, 0, ZYe_FAILED, kept},
      {0x80000000, 0, ZYe_FAILED, kept},
      {0xFFFFFFFF, 0, ZYe_FAILED, kept},
  };
  for (const Row& row : rows) {
    CZyIfc_StreamIO<LoadOptionsIO> io;
    OptionsOf(io) = before;
    EXPECT_EQ(Read(io, Record(row.version, row.flags, 5.5)), row.result) << row.version;
    EXPECT_EQ(ValuesOf(OptionsOf(io)), row.values) << row.version << " " << row.flags;
  }
  CZyIfc_StreamIO<LoadOptionsIO> io;
  SilentReader silent;
  OptionsOf(io) = before;
  EXPECT_EQ(io.Read(&silent), ZYe_FAILED) << "the version is unset";
  EXPECT_EQ(ValuesOf(OptionsOf(io)), kept);
  EXPECT_EQ(io.Read(nullptr), ZYe_NO_INTERFACE);
}

TEST(LoadOptionsStream, ShortRecordsFailAndChangeWhatTheyHold) {
  for (std::uint32_t version = 0; version < 2; ++version) {
    const std::string record = Record(version, 0x00100000, 5.5);
    for (std::size_t size = 0; size <= record.size(); ++size) {
      CZyIfc_StreamIO<LoadOptionsIO> io;
      const bool isWhole = size >= (version == 0 ? 8u : 16u);
      EXPECT_EQ(Read(io, record.substr(0, size)), isWhole ? ZYe_OK : ZYe_FAILED) << size;
      std::vector<double> values = kDefaults;
      if (size >= 8) std::fill(values.begin(), values.end(), 0.0);
      if (size >= 8) values[16] = version == 1 && isWhole ? 5.5 : 1.0;
      if (size >= 8 && version == 1) values[17] = 4;
      EXPECT_EQ(ValuesOf(OptionsOf(io)), values) << version << " " << size;
    }
  }
}

// Fails its block number `failing`, counting from 0, with a code of its own.
struct FailingStream final : CountedObject<IZyBlockWriter, IZyBlockReader> {
  static constexpr zyresult kCode = ZyCode(0x80001234u);
  explicit FailingStream(int failingBlock) : failing(failingBlock) {}
  zyresult Next() { return failing-- == 0 ? kCode : (++blocks, ZYe_OK); }
  zyresult WriteUint32(std::uint32_t) override { return Next(); }
  zyresult WriteDouble(double) override { return Next(); }
  zyresult ReadUint32(std::uint32_t& value) override { return value = 1, Next(); }
  zyresult ReadDouble(double&) override { return Next(); }

  int failing;
  int blocks = 0;
};

TEST(LoadOptionsStream, AFailingBlockThrowsItsCode) {
  for (int block = 0; block < 3; ++block) {
    FailingStream stream(block), reader(block), wrappedWriter(block), wrappedReader(block);
    LoadOptions options;
    const auto thrownBy = [](const std::function<void()>& call) {
      try {
        call();
      } catch (zyresult code) {
        return code;
      }
      return ZYe_OK;
    };
    const auto asReader = [](FailingStream& s) {
      return Wrapped<CZyUser_BlockReader>(static_cast<IZyBlockReader&>(s));
    };
    EXPECT_EQ(thrownBy([&] {
                WriteLoadOptions(options, Wrapped<CZyUser_BlockWriter>(static_cast<IZyBlockWriter&>(stream)));
              }),
              FailingStream::kCode);
    EXPECT_EQ(stream.blocks, block) << "nothing is written behind the failure";
    EXPECT_EQ(thrownBy([&] { ReadLoadOptions(options, asReader(reader)); }), FailingStream::kCode);
    CZyIfc_StreamIO<LoadOptionsIO> io;
    EXPECT_EQ(io.Write(&wrappedWriter), FailingStream::kCode);
    EXPECT_EQ(io.Read(&wrappedReader), FailingStream::kCode);
  }
}

}  // namespace
