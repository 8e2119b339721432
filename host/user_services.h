// Wrappers of the services, and the road to them.
#pragma once

#include "host/deform_api.h"
#include "host/module_api.h"
#include "host/service_api.h"
#include "host/user_deform.h"
#include "host/user_scene.h"

#include <cstring>
#include <string>
#include <vector>

// The host that this module was made for, set by the module entry.
IZyHost* ZyHost();
void SetZyHost(IZyHost* host);

// A wrapper that binds its service when it is constructed; it stays empty when the host lacks it.
template <class T>
class CZyService : public CountedRef<T> {
 public:
  CZyService() {
    if (IZyHost* host = ZyHost()) this->Set(host->Service(T::kId));
  }
};

class CZySceneService : public CZyService<IZySceneService> {
 public:
  zyresult ItemTypeLookup(const char* name, std::uint32_t& type) const {
    return Call(&IZySceneService::ItemTypeLookup, name, type);
  }
  zyresult ItemTypeName(std::uint32_t type, const char*& text) const {
    return Call(&IZySceneService::ItemTypeName, type, text);
  }
  zyresult MeshInstanceSource(const CZyUser_Item& item, CZyUser_Item& source) const {
    return CallFor(source, &IZySceneService::MeshInstanceSource, item.Raw());
  }
};

class CZyUser_ItemPacketTranslation : public CountedRef<IZyItemPacketTranslation> {
 public:
  zyresult Item(void* packet, CZyUser_Item& item) const {
    return CallFor(item, &IZyItemPacketTranslation::Item, packet);
  }
};

class CZySelectionService : public CZyService<IZySelectionService> {
 public:
  std::uint32_t LookupType(const char* name) const { return Raw() ? Raw()->LookupType(name) : 0; }
  zyresult AllocatePacketTranslation(const char* name, CZyUser_ItemPacketTranslation& translation) const {
    return CallFor(translation, &IZySelectionService::AllocatePacketTranslation, name);
  }
  void* NextPacket(std::uint32_t type, void* previous) const {
    return Raw() ? Raw()->NextPacket(type, previous) : nullptr;
  }
};

// The selected items.
class CZyItemSelection {
 public:
  // In selection order; an entry whose packet gives no item is an empty wrapper.
  void GetList(std::vector<CZyUser_Item>& list) const {
    list.clear();
    CZyUser_ItemPacketTranslation translation;
    selection_.AllocatePacketTranslation("item", translation);
    const std::uint32_t type = selection_.LookupType("item");
    for (void* packet = selection_.NextPacket(type, nullptr); packet; packet = selection_.NextPacket(type, packet))
      translation.Item(packet, list.emplace_back());
  }

 private:
  CZySelectionService selection_;
};

class CZyDeformerService : public CZyService<IZyDeformerService> {
 public:
  zyresult GroupDeformer(const CZyUser_Item& group, const CZyUser_ChannelRead& read,
                         CZyUser_GroupDeformer& deformer) const {
    return CallFor(deformer, &IZyDeformerService::GroupDeformer, group.Raw(), read.Raw());
  }
  zyresult MeshCount(const CZyUser_Item& group, std::uint32_t& count) const {
    return Call(&IZyDeformerService::MeshCount, group.Raw(), count);
  }
  zyresult MeshByIndex(const CZyUser_Item& group, std::uint32_t index, CZyUser_Item& mesh) const {
    return CallFor(mesh, &IZyDeformerService::MeshByIndex, group.Raw(), index);
  }
  zyresult DeformerDeformationItem(const CZyUser_Item& deformer, CZyUser_Item& item) const {
    return CallFor(item, &IZyDeformerService::DeformerDeformationItem, deformer.Raw());
  }
};

class CZyPlatformService : public CZyService<IZyPlatformService> {
 public:
  zyresult AppName(const char*& text) const { return Call(&IZyPlatformService::AppName, text); }
  zyresult AppVersionParts(std::int32_t (&parts)[3]) const {
    return Call(&IZyPlatformService::AppVersionParts, parts);
  }
  zyresult AppVersion(std::int32_t& version) const { return Call(&IZyPlatformService::AppVersion, version); }
  zyresult AppBuild(std::int32_t& build) const { return Call(&IZyPlatformService::AppBuild, build); }
  zyresult OsName(const char*& text) const { return Call(&IZyPlatformService::OsName, text); }
  zyresult OsVersion(const char*& text) const { return Call(&IZyPlatformService::OsVersion, text); }
};

class CZyUser_LogEntry : public CountedRef<IZyLogEntry> {
 public:
  zyresult AddChild(const CZyUser_LogEntry& child) const { return Call(&IZyLogEntry::AddChild, child.Raw()); }
};

class CZyUser_Log : public CountedRef<IZyLog> {
 public:
  zyresult AddEntry(const CZyUser_LogEntry& entry) const { return Call(&IZyLog::AddEntry, entry.Raw()); }
};

class CZyLogService : public CZyService<IZyLogService> {
 public:
  zyresult SubSystemLookup(const char* name, CZyUser_Log& log) const {
    return CallFor(log, &IZyLogService::SubSystemLookup, name);
  }
  zyresult NewEntry(zyresult severity, const char* text, CZyUser_LogEntry& entry) const {
    return CallFor(entry, &IZyLogService::NewEntry, severity, text);
  }
};

class CZyUser_Message : public CountedRef<IZyMessage> {
 public:
  zyresult Code() const { return Call(&IZyMessage::Code); }
  zyresult SetCode(zyresult code) const { return Call(&IZyMessage::SetCode, code); }
  zyresult SetMessage(const char* table, std::uint32_t number) const {
    return Call(&IZyMessage::SetMessage, table, number);
  }
  zyresult SetArgument(std::uint32_t index, const char* text) const {
    return Call(&IZyMessage::SetArgument, index, text);
  }
};

// Reads a host text of unknown length: `read(buffer, size)` is called with buffers of `firstSize`
// bytes and then twice the size as long as it answers ZYe_SHORT_BUFFER. `text` is set on success only.
template <class Read>
zyresult ReadHostText(Read read, std::string& text, std::uint32_t firstSize = 1024) {
  std::vector<char> buffer;
  zyresult result = ZYe_SHORT_BUFFER;
  for (std::uint32_t size = firstSize; result == ZYe_SHORT_BUFFER && size != 0; size *= 2) {
    buffer.assign(size, '\0');
    result = read(buffer.data(), size);
  }
  if (ZySucceeded(result)) text.assign(buffer.data(), strnlen(buffer.data(), buffer.size()));
  return result;
}

class CZyMessageService : public CZyService<IZyMessageService> {
 public:
  zyresult NewMessage(CZyUser_Message& message) const { return CallFor(message, &IZyMessageService::NewMessage); }
  zyresult TableText(const char* table, std::uint32_t number, std::string& text) const {
    return ReadHostText(
        [&](char* buffer, std::uint32_t size) {
          return Call(&IZyMessageService::TableText, table, number, buffer, size);
        },
        text);
  }
  zyresult MessageText(const CZyUser_Message& message, std::string& text) const {
    return ReadHostText(
        [&](char* buffer, std::uint32_t size) {
          return Call(&IZyMessageService::MessageText, message.Raw(), buffer, size);
        },
        text);
  }
};

class CZyStdDialogService : public CZyService<IZyStdDialogService> {
 public:
  zyresult ShowMessage(const CZyUser_Message& message) const {
    return Call(&IZyStdDialogService::ShowMessage, message.Raw());
  }
};

class CZyUser_UserValue : public CountedRef<IZyUserValue> {
 public:
  // -1 when the object can't give one.
  std::int32_t GetInt() const {
    std::int32_t value = -1;
    return ZySucceeded(Call(&IZyUserValue::GetInt, value)) ? value : -1;
  }
};

class CZyValueService : public CZyService<IZyValueService> {
 public:
  zyresult Query(const char* name, CZyUser_UserValue& value) const {
    return CallFor(value, &IZyValueService::Query, name);
  }
};
