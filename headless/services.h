// Small services of the host: types, selection, platform, user values, options of a load.
#pragma once

#include "headless/host_state.h"
#include "headless/permanent_object.h"
#include "host/service_api.h"
#include "host/stream_api.h"

#include <map>
#include <string>

namespace headless {

class SceneService final : public PermanentObject<IZySceneService> {
 public:
  explicit SceneService(HostState& host) : host_(host) {}

  zyresult ItemTypeLookup(const char* name, std::uint32_t& type) override;
  zyresult ItemTypeName(std::uint32_t type, const char*& text) override;
  // The mesh at the end of a chain of instances.
  zyresult MeshInstanceSource(IZyItem* item, IZyObject*& source) override;

 private:
  HostState& host_;
};

class SelectionService final : public PermanentObject<IZySelectionService> {
 public:
  explicit SelectionService(HostState& host) : host_(host), selection_(host.scene.selection) {}

  std::uint32_t LookupType(const char* name) override;
  zyresult AllocatePacketTranslation(const char* name, IZyObject*& translation) override;
  void* NextPacket(std::uint32_t type, void* previous) override;

 private:
  HostState& host_;
  std::vector<ItemIndex> selection_;  // a packet is the address of an entry
};

class PlatformService final : public PermanentObject<IZyPlatformService> {
 public:
  // The data outlive the service.
  explicit PlatformService(const ApplicationData& data) : data_(data) {}

  zyresult AppName(const char*& text) override;
  zyresult AppVersionParts(std::int32_t (&parts)[3]) override;
  // The parts as decimal digits: 1023 for "10.2v3".
  zyresult AppVersion(std::int32_t& version) override;
  zyresult AppBuild(std::int32_t& build) override;
  zyresult OsName(const char*& text) override;
  zyresult OsVersion(const char*& text) override;

 private:
  const ApplicationData& data_;
};

class ValueService final : public PermanentObject<IZyValueService> {
 public:
  explicit ValueService(HostState& host) : host_(host), values_(host.scene.userValues) {}

  void Set(const std::string& name, std::int32_t value) { values_[name] = value; }
  // Fails when the value isn't set.
  zyresult Query(const char* name, IZyObject*& value) override;

 private:
  HostState& host_;
  std::map<std::string, std::int32_t> values_;
};

// Keeps the options object of the load to come. It belongs to a module, and is to be dropped before that goes.
class IOService final : public PermanentObject<IZyIOService> {
 public:
  zyresult SetOptions(IZyObject* options) override;
  zyresult Options(IZyObject*& options) override;

 private:
  CountedRef<IZyObject> options_;
};

}  // namespace headless
