// Commands of the host, as far as a plug-in calls them.
#pragma once

#include "host/object.h"
#include "host/service_api.h"

struct IZyCommand : IZyObject {
  static constexpr std::uint32_t kId = 0x601;

  virtual zyresult Message(IZyObject*& message) = 0;

 protected:
  ~IZyCommand() = default;
};

// The arguments of a command.
struct IZyAttributes : IZyObject {
  static constexpr std::uint32_t kId = 0x602;

  virtual zyresult Lookup(const char* name, std::int32_t& index) = 0;
  // A writable value object of the argument.
  virtual zyresult Value(std::int32_t index, IZyObject*& value) = 0;
  virtual zyresult SetString(std::int32_t index, const char* text) = 0;
  virtual zyresult SetInt(std::int32_t index, std::int32_t value) = 0;

 protected:
  ~IZyAttributes() = default;
};

struct IZyValueReference : IZyObject {
  static constexpr std::uint32_t kId = 0x603;

  virtual zyresult SetObject(IZyObject* object) = 0;

 protected:
  ~IZyValueReference() = default;
};

struct IZyValueArray : IZyObject {
  static constexpr std::uint32_t kId = 0x604;

  virtual std::uint32_t Count() = 0;
  // Writes a text with its closing zero; ZYe_SHORT_BUFFER when `size` bytes don't hold it.
  virtual zyresult String(std::uint32_t index, char* buffer, std::uint32_t size) = 0;

 protected:
  ~IZyValueArray() = default;
};

struct IZyCommandService : IZyObject {
  static constexpr std::uint32_t kId = 0x605;

  virtual zyresult NewCommand(const char* name, IZyObject*& command) = 0;
  virtual zyresult QueryArgument(IZyCommand* command, std::int32_t argument, IZyObject*& values) = 0;

 protected:
  ~IZyCommandService() = default;
};
