// Objects that a module's own code implements for the host: stream objects with the factory that spawns them, and
// visitors.
#pragma once

#include "host/call_guard.h"
#include "host/counted_object.h"
#include "host/module_api.h"
#include "host/user_config.h"

#include <utility>

// Both may throw a result code.
class CZyImpl_StreamIO {
 public:
  virtual ~CZyImpl_StreamIO() = default;
  virtual zyresult Write(const CZyUser_BlockWriter& writer) = 0;
  virtual zyresult Read(const CZyUser_BlockReader& reader) = 0;
};

// Holds one T. A result code that T throws becomes the result of the call. `More` are further interfaces, which a
// derived class implements.
template <class T, class... More>
class CZyIfc_StreamIO : public CountedObject<IZyStreamIO, More...> {
 public:
  zyresult Write(IZyBlockWriter* writer) override {
    return Wrapped<CZyUser_BlockWriter>(writer, [this](const auto& wrapper) { return object_.Write(wrapper); });
  }
  zyresult Read(IZyBlockReader* reader) override {
    return Wrapped<CZyUser_BlockReader>(reader, [this](const auto& wrapper) { return object_.Read(wrapper); });
  }
  // T has an id of its own, by which the module knows its objects again.
  void* Interface(std::uint32_t id) override {
    return id == T::kId ? &object_ : CountedObject<IZyStreamIO, More...>::Interface(id);
  }

 protected:
  T object_;

 private:
  template <class Wrapper, class Call>
  static zyresult Wrapped(IZyObject* stream, Call call) {
    Wrapper wrapper;
    if (!wrapper.Set(stream)) return ZYe_NO_INTERFACE;
    return GuardedCall([&] { return call(wrapper); });
  }
};

// Spawns objects of the stream class `Object`.
template <class Object>
class CZyPolymorph : public CountedObject<IZyFactory> {
 public:
  std::uint32_t InterfaceCount() override { return 1; }
  zyresult InterfaceByIndex(std::uint32_t index, std::uint32_t& id) override {
    if (index >= 1) return ZYe_OUT_OF_BOUNDS;
    id = IZyStreamIO::kId;
    return ZYe_OK;
  }
  zyresult Spawn(IZyObject*& object) override {
    return GuardedCall([&] {
      object = static_cast<IZyStreamIO*>(new Object);
      return ZYe_OK;
    });
  }
};

class CZyImpl_Visitor {
 public:
  virtual ~CZyImpl_Visitor() = default;
  virtual zyresult Evaluate() = 0;
};

// Holds one T, made from the arguments.
template <class T>
class CZyIfc_Visitor : public CountedObject<IZyVisitor> {
 public:
  template <class... Arguments>
  explicit CZyIfc_Visitor(Arguments&&... arguments) : visitor_(std::forward<Arguments>(arguments)...) {}
  zyresult Evaluate() override {
    return GuardedCall([this] { return visitor_.Evaluate(); });
  }

 private:
  T visitor_;
};
