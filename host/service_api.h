// Services: global objects of the host that a module asks for once.
#pragma once

#include "host/scene_api.h"

struct IZySceneService : IZyObject {
  static constexpr std::uint32_t kId = 0x501;

  virtual zyresult ItemTypeLookup(const char* name, std::uint32_t& type) = 0;
  virtual zyresult ItemTypeName(std::uint32_t type, const char*& text) = 0;
  virtual zyresult MeshInstanceSource(IZyItem* item, IZyObject*& source) = 0;

 protected:
  ~IZySceneService() = default;
};

struct IZyItemPacketTranslation : IZyObject {
  static constexpr std::uint32_t kId = 0x502;

  virtual zyresult Item(void* packet, IZyObject*& item) = 0;

 protected:
  ~IZyItemPacketTranslation() = default;
};

struct IZySelectionService : IZyObject {
  static constexpr std::uint32_t kId = 0x503;

  virtual std::uint32_t LookupType(const char* name) = 0;  // 0 when unknown
  virtual zyresult AllocatePacketTranslation(const char* name, IZyObject*& translation) = 0;
  // The packet after `previous`, the first one for null; null at the end.
  virtual void* NextPacket(std::uint32_t type, void* previous) = 0;

 protected:
  ~IZySelectionService() = default;
};

struct IZyPlatformService : IZyObject {
  static constexpr std::uint32_t kId = 0x504;

  virtual zyresult AppName(const char*& text) = 0;
  // The three parts of the version, as 10, 2, 3 of "10.2v3".
  virtual zyresult AppVersionParts(std::int32_t (&parts)[3]) = 0;
  virtual zyresult AppVersion(std::int32_t& version) = 0;
  virtual zyresult AppBuild(std::int32_t& build) = 0;
  virtual zyresult OsName(const char*& text) = 0;
  virtual zyresult OsVersion(const char*& text) = 0;

 protected:
  ~IZyPlatformService() = default;
};

// Severities of log entries and codes of messages.
constexpr zyresult kSeverityInfo = 1;
constexpr zyresult kSeverityWarning = 2;
constexpr zyresult kSeverityError = ZYe_FAILED;

struct IZyLogEntry : IZyObject {
  static constexpr std::uint32_t kId = 0x505;

  virtual zyresult AddChild(IZyLogEntry* child) = 0;

 protected:
  ~IZyLogEntry() = default;
};

// One subsystem of the event log.
struct IZyLog : IZyObject {
  static constexpr std::uint32_t kId = 0x506;

  virtual zyresult AddEntry(IZyLogEntry* entry) = 0;

 protected:
  ~IZyLog() = default;
};

struct IZyLogService : IZyObject {
  static constexpr std::uint32_t kId = 0x507;

  virtual zyresult SubSystemLookup(const char* name, IZyObject*& log) = 0;
  virtual zyresult NewEntry(zyresult severity, const char* text, IZyObject*& entry) = 0;

 protected:
  ~IZyLogService() = default;
};

struct IZyMessage : IZyObject {
  static constexpr std::uint32_t kId = 0x508;

  virtual zyresult Code() = 0;
  virtual zyresult SetCode(zyresult code) = 0;
  virtual zyresult SetMessage(const char* table, std::uint32_t number) = 0;
  // Arguments count from 1.
  virtual zyresult SetArgument(std::uint32_t index, const char* text) = 0;

 protected:
  ~IZyMessage() = default;
};

struct IZyMessageService : IZyObject {
  static constexpr std::uint32_t kId = 0x509;

  virtual zyresult NewMessage(IZyObject*& message) = 0;
  // Both write a text with its closing zero; ZYe_SHORT_BUFFER when `size` bytes don't hold it.
  virtual zyresult TableText(const char* table, std::uint32_t number, char* buffer, std::uint32_t size) = 0;
  virtual zyresult MessageText(IZyMessage* message, char* buffer, std::uint32_t size) = 0;

 protected:
  ~IZyMessageService() = default;
};

struct IZyStdDialogService : IZyObject {
  static constexpr std::uint32_t kId = 0x50A;

  virtual zyresult ShowMessage(IZyMessage* message) = 0;

 protected:
  ~IZyStdDialogService() = default;
};

struct IZyUserValue : IZyObject {
  static constexpr std::uint32_t kId = 0x50B;

  virtual zyresult GetInt(std::int32_t& value) = 0;

 protected:
  ~IZyUserValue() = default;
};

struct IZyValueService : IZyObject {
  static constexpr std::uint32_t kId = 0x50C;

  virtual zyresult Query(const char* name, IZyObject*& value) = 0;

 protected:
  ~IZyValueService() = default;
};
