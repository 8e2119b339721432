#include "headless/services.h"

#include "headless/host_object.h"

#include <string_view>

namespace headless {

namespace {

constexpr std::uint32_t kItemSelection = 1;

class PacketTranslation final : public HostObject<IZyItemPacketTranslation> {
 public:
  explicit PacketTranslation(HostState& host) : HostObject(host.live), host_(host) {}

  zyresult Item(void* packet, IZyObject*& item) override {
    return packet ? host_.Give(*static_cast<const ItemIndex*>(packet), item) : ZYe_FAILED;
  }

 private:
  HostState& host_;
};

class UserValue final : public HostObject<IZyUserValue> {
 public:
  UserValue(std::size_t& live, std::int32_t value) : HostObject(live), value_(value) {}

  zyresult GetInt(std::int32_t& value) override {
    value = value_;
    return ZYe_OK;
  }

 private:
  std::int32_t value_;
};

}  // namespace

zyresult SceneService::ItemTypeLookup(const char* name, std::uint32_t& type) {
  const std::uint32_t code = name ? host_.index.Types().Code(name) : 0;
  if (code == 0) return ZYe_FAILED;
  type = code;
  return ZYe_OK;
}

zyresult SceneService::ItemTypeName(std::uint32_t type, const char*& text) {
  const char* name = host_.index.Types().Name(type);
  if (!name) return ZYe_FAILED;
  text = name;
  return ZYe_OK;
}

zyresult SceneService::MeshInstanceSource(IZyItem* item, IZyObject*& source) {
  if (!item) return ZYe_FAILED;
  const ItemIndex instance = HostState::IndexOf(item);
  if (!host_.index.IsOfType(instance, host_.index.Types().Code("meshInst"))) return ZYe_FAILED;
  const ItemIndex mesh = host_.MeshBehind(instance);
  return host_.Give(mesh < 0 ? instance : mesh, source);  // an instance of no mesh has an empty one of its own
}

std::uint32_t SelectionService::LookupType(const char* name) {
  return name && std::string_view(name) == "item" ? kItemSelection : 0;
}

zyresult SelectionService::AllocatePacketTranslation(const char* name, IZyObject*& translation) {
  if (LookupType(name) == 0) return ZYe_FAILED;
  translation = new PacketTranslation(host_);
  return ZYe_OK;
}

void* SelectionService::NextPacket(std::uint32_t type, void* previous) {
  if (type != kItemSelection) return nullptr;
  ItemIndex* next = previous ? static_cast<ItemIndex*>(previous) + 1 : selection_.data();
  return next == selection_.data() + selection_.size() ? nullptr : next;
}

zyresult PlatformService::AppName(const char*& text) {
  text = data_.name.c_str();
  return ZYe_OK;
}

zyresult PlatformService::AppVersionParts(std::int32_t (&parts)[3]) {
  for (std::size_t part = 0; part < 3; ++part) parts[part] = data_.version[part];
  return ZYe_OK;
}

zyresult PlatformService::AppVersion(std::int32_t& version) {
  version = data_.version[0] * 100 + data_.version[1] * 10 + data_.version[2];
  return ZYe_OK;
}

zyresult PlatformService::AppBuild(std::int32_t& build) {
  build = data_.build;
  return ZYe_OK;
}

zyresult PlatformService::OsName(const char*& text) {
  text = data_.osName.c_str();
  return ZYe_OK;
}

zyresult PlatformService::OsVersion(const char*& text) {
  text = data_.osVersion.c_str();
  return ZYe_OK;
}

zyresult ValueService::Query(const char* name, IZyObject*& value) {
  if (!name) return ZYe_FAILED;
  const auto entry = values_.find(name);
  if (entry == values_.end()) return ZYe_FAILED;
  value = new UserValue(host_.live, entry->second);
  return ZYe_OK;
}

zyresult IOService::SetOptions(IZyObject* options) {
  options_.Set(options);
  return ZYe_OK;
}

zyresult IOService::Options(IZyObject*& options) {
  if (!options_) return ZYe_FAILED;
  options = options_.Raw();
  options->AddRef();
  return ZYe_OK;
}

}  // namespace headless
