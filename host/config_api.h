// Stored settings: trees of named entries that the host keeps for its modules from one run to the next.
//
// A module declares the shape of its tree once, in a visitor that the persistence service runs under the name of
// a domain. What is declared between an entry's start and its end lies below it. A keyed entry holds any number of
// children with keys, each of the declared shape; a plain entry holds one value.
#pragma once

#include "host/object.h"

enum class ZyEntryKind : std::uint32_t { Plain, Keyed };

struct IZyPersistEntry : IZyObject {
  static constexpr std::uint32_t kId = 0x801;

  // Makes the keyed child of the name current: what is declared below is read and written there. Fails, and
  // changes nothing, when there is no such child.
  virtual zyresult Select(const char* key) = 0;
  // As Select, but makes the child when there is none.
  virtual zyresult Insert(const char* key) = 0;
  // Makes room for one value behind all others; an old value of a plain entry goes.
  virtual zyresult Append() = 0;

 protected:
  ~IZyPersistEntry() = default;
};

// The value of an entry, as one of the types "boolean", "integer" and "float". A boolean is an integer. Each call
// fails when the type is another one, or when a keyed entry above has no current child; reading fails when nothing
// is stored.
struct IZyPersistValue : IZyObject {
  static constexpr std::uint32_t kId = 0x802;

  virtual zyresult GetInt(std::int32_t& value) = 0;
  virtual zyresult SetInt(std::int32_t value) = 0;
  virtual zyresult GetDouble(double& value) = 0;
  virtual zyresult SetDouble(double value) = 0;

 protected:
  ~IZyPersistValue() = default;
};

// What a module gives to a service that calls it back.
struct IZyVisitor : IZyObject {
  static constexpr std::uint32_t kId = 0x803;

  virtual zyresult Evaluate() = 0;

 protected:
  ~IZyVisitor() = default;
};

struct IZyPersistenceService : IZyObject {
  static constexpr std::uint32_t kId = 0x804;

  // Runs the visitor, which declares the tree of the domain, and gives its result.
  virtual zyresult Configure(const char* domain, IZyVisitor* visitor) = 0;

  // These serve a visitor alone. Each entry that was started is ended, which gives the entry.
  virtual zyresult StartEntry(const char* name, ZyEntryKind kind) = 0;
  // Gives the value of the entry that was started last; `type` is a type word.
  virtual zyresult AddValue(const char* type, IZyObject*& value) = 0;
  virtual zyresult EndEntry(IZyObject*& entry) = 0;

 protected:
  ~IZyPersistenceService() = default;
};
