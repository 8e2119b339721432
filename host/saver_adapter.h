// Makes a saver class T a server: its two interfaces, and the factory that makes its objects.
#pragma once

#include "host/counted_object.h"
#include "host/module_api.h"
#include "host/scene_saver.h"

// Answers from a class's tag table, which ends at a row with a null key.
template <class T>
class CZyIfc_StaticDesc : public IZyStaticDesc {
 public:
  std::uint32_t Count() final {
    std::uint32_t count = 0;
    while (T::kTags[count].key) ++count;
    return count;
  }
  zyresult ByIndex(std::uint32_t index, ZyTagRow& row) final {
    if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
    row = T::kTags[index];
    return ZYe_OK;
  }

 protected:
  ~CZyIfc_StaticDesc() = default;
};

// Holds one T and forwards the host's verify and save calls to it.
template <class T>
class CZyIfc_Saver : public CountedObject<IZySaver, CZyIfc_StaticDesc<T>> {
 public:
  zyresult Verify(IZyObject* target, IZyObject* message) override { return saver_.VerifyTarget(target, message); }
  zyresult Save(IZyObject* target, const char* filename, IZyMonitor* monitor) override {
    return saver_.SaveTarget(target, filename, monitor);
  }

 private:
  T saver_;
};

template <class T>
class SaverFactory : public CountedObject<IZyFactory, CZyIfc_StaticDesc<T>> {
 public:
  std::uint32_t InterfaceCount() override { return 2; }
  zyresult InterfaceByIndex(std::uint32_t index, std::uint32_t& id) override {
    if (index >= 2) return ZYe_OUT_OF_BOUNDS;
    id = index == 0 ? IZySaver::kId : IZyStaticDesc::kId;
    return ZYe_OK;
  }
  zyresult Spawn(IZyObject*& object) override {
    try {
      object = static_cast<IZySaver*>(new CZyIfc_Saver<T>);
      return ZYe_OK;
    } catch (...) {
      return ZYe_FAILED;
    }
  }
};
