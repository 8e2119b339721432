// Block streams, the objects that save themselves in them, and the service that hands such objects to loaders.
#pragma once

#include "host/object.h"

// All numbers are little endian.
struct IZyBlockWriter : IZyObject {
  static constexpr std::uint32_t kId = 0x811;

  virtual zyresult WriteUint32(std::uint32_t value) = 0;
  virtual zyresult WriteDouble(double value) = 0;

 protected:
  ~IZyBlockWriter() = default;
};

struct IZyBlockReader : IZyObject {
  static constexpr std::uint32_t kId = 0x812;

  virtual zyresult ReadUint32(std::uint32_t& value) = 0;
  virtual zyresult ReadDouble(double& value) = 0;

 protected:
  ~IZyBlockReader() = default;
};

// An object that can be saved in a block stream and read back.
struct IZyStreamIO : IZyObject {
  static constexpr std::uint32_t kId = 0x813;

  virtual zyresult Write(IZyBlockWriter* writer) = 0;
  // After a failure the object may hold a part of what was read.
  virtual zyresult Read(IZyBlockReader* reader) = 0;

 protected:
  ~IZyStreamIO() = default;
};

struct IZyIOService : IZyObject {
  static constexpr std::uint32_t kId = 0x814;

  // Keeps the object as the options of the load to come, in place of the one before; null for none.
  virtual zyresult SetOptions(IZyObject* options) = 0;
  // Fails when there are none.
  virtual zyresult Options(IZyObject*& options) = 0;

 protected:
  ~IZyIOService() = default;
};
