// Wrappers of stored settings and of block streams. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/config_api.h"
#include "host/stream_api.h"
#include "host/user_services.h"

class CZyUser_PersistEntry : public CountedRef<IZyPersistEntry> {
 public:
  zyresult Select(const char* key) const { return Call(&IZyPersistEntry::Select, key); }
  zyresult Insert(const char* key) const { return Call(&IZyPersistEntry::Insert, key); }
  zyresult Append() const { return Call(&IZyPersistEntry::Append); }
};

class CZyUser_PersistValue : public CountedRef<IZyPersistValue> {
 public:
  zyresult GetInt(std::int32_t& value) const { return Call(&IZyPersistValue::GetInt, value); }
  zyresult SetInt(std::int32_t value) const { return Call(&IZyPersistValue::SetInt, value); }
  zyresult GetDouble(double& value) const { return Call(&IZyPersistValue::GetDouble, value); }
  zyresult SetDouble(double value) const { return Call(&IZyPersistValue::SetDouble, value); }
};

class CZyPersistenceService : public CZyService<IZyPersistenceService> {
 public:
  zyresult Configure(const char* domain, IZyVisitor* visitor) const {
    return Call(&IZyPersistenceService::Configure, domain, visitor);
  }
  zyresult StartEntry(const char* name, ZyEntryKind kind) const {
    return Call(&IZyPersistenceService::StartEntry, name, kind);
  }
  zyresult AddValue(const char* type, CZyUser_PersistValue& value) const {
    return CallFor(value, &IZyPersistenceService::AddValue, type);
  }
  zyresult EndEntry(CZyUser_PersistEntry& entry) const { return CallFor(entry, &IZyPersistenceService::EndEntry); }
};

class CZyUser_BlockWriter : public CountedRef<IZyBlockWriter> {
 public:
  zyresult WriteUint32(std::uint32_t value) const { return Call(&IZyBlockWriter::WriteUint32, value); }
  zyresult WriteDouble(double value) const { return Call(&IZyBlockWriter::WriteDouble, value); }
};

class CZyUser_BlockReader : public CountedRef<IZyBlockReader> {
 public:
  zyresult ReadUint32(std::uint32_t& value) const { return Call(&IZyBlockReader::ReadUint32, value); }
  zyresult ReadDouble(double& value) const { return Call(&IZyBlockReader::ReadDouble, value); }
};

class CZyIOService : public CZyService<IZyIOService> {
 public:
  zyresult SetOptions(IZyObject* options) const { return Call(&IZyIOService::SetOptions, options); }
  // Any object will do, so this is for a plain CountedRef.
  zyresult Options(CountedRef<IZyObject>& options) const { return CallFor(options, &IZyIOService::Options); }
};
