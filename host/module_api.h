// The border between the host and a plug-in module.
#pragma once

#include "host/object.h"

// What the host gives to a module. Outlives the module.
struct IZyHost {
  // The service of an interface id, without a reference; null when the host lacks it.
  virtual IZyObject* Service(std::uint32_t id) = 0;

 protected:
  ~IZyHost() = default;
};

struct IZyMonitor : IZyObject {
  static constexpr std::uint32_t kId = 0x701;

  virtual zyresult Initialize(std::uint32_t steps) = 0;
  // A failure asks the running operation to stop.
  virtual zyresult Step(std::uint32_t steps) = 0;

 protected:
  ~IZyMonitor() = default;
};

// A scene saver, as the host calls it. `target` is the scene.
struct IZySaver : IZyObject {
  static constexpr std::uint32_t kId = 0x702;

  virtual zyresult Verify(IZyObject* target, IZyObject* message) = 0;
  // `filename` names the output file in the host's form, with backslashes; `monitor` may be null.
  virtual zyresult Save(IZyObject* target, const char* filename, IZyMonitor* monitor) = 0;

 protected:
  ~IZySaver() = default;
};

// One row of a server's tag table; the table ends at a null key.
struct ZyTagRow {
  const char* key;
  const char* value;
  const char* reserved;  // always null
};

struct IZyStaticDesc : IZyObject {
  static constexpr std::uint32_t kId = 0x703;

  virtual std::uint32_t Count() = 0;
  // ZYe_OUT_OF_BOUNDS at or past the count.
  virtual zyresult ByIndex(std::uint32_t index, ZyTagRow& row) = 0;

 protected:
  ~IZyStaticDesc() = default;
};

// Makes objects of one server.
struct IZyFactory : IZyObject {
  static constexpr std::uint32_t kId = 0x704;

  virtual std::uint32_t InterfaceCount() = 0;
  // The id of an interface of the server's objects, in the order the server added them.
  virtual zyresult InterfaceByIndex(std::uint32_t index, std::uint32_t& id) = 0;
  virtual zyresult Spawn(IZyObject*& object) = 0;

 protected:
  ~IZyFactory() = default;
};

struct IZyModule : IZyObject {
  static constexpr std::uint32_t kId = 0x705;

  virtual std::uint32_t ServerCount() = 0;
  virtual zyresult ServerName(std::uint32_t index, const char*& text) = 0;
  // The factory of a whole server name, without a reference; null when there is none.
  virtual IZyFactory* Factory(const char* name) = 0;

 protected:
  ~IZyModule() = default;
};

// The one entry of a module. The module comes counted.
extern "C" zyresult _IZyModule_Create(IZyHost* host, IZyModule** module);
using ZyModuleEntry = zyresult(IZyHost*, IZyModule**);
