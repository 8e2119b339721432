// Services and commands of the failing host.
#include "host/command_api.h"
#include "host/service_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

class SceneServicePart final : public Part<IZySceneService> {
 public:
  using Part<IZySceneService>::Part;
  zyresult ItemTypeLookup(const char* name, std::uint32_t& type) override {
    return Call(&IZySceneService::ItemTypeLookup, name, type);
  }
  zyresult ItemTypeName(std::uint32_t type, const char*& text) override {
    return Call(&IZySceneService::ItemTypeName, type, text);
  }
  zyresult MeshInstanceSource(IZyItem* item, IZyObject*& source) override {
    return CallFor(source, &IZySceneService::MeshInstanceSource, item);
  }
};

class PacketTranslationPart final : public Part<IZyItemPacketTranslation> {
 public:
  using Part<IZyItemPacketTranslation>::Part;
  zyresult Item(void* packet, IZyObject*& item) override {
    return CallFor(item, &IZyItemPacketTranslation::Item, packet);
  }
};

class SelectionServicePart final : public Part<IZySelectionService> {
 public:
  using Part<IZySelectionService>::Part;
  std::uint32_t LookupType(const char* name) override { return Call(&IZySelectionService::LookupType, name); }
  zyresult AllocatePacketTranslation(const char* name, IZyObject*& translation) override {
    return CallFor(translation, &IZySelectionService::AllocatePacketTranslation, name);
  }
  void* NextPacket(std::uint32_t type, void* previous) override {
    return Call(&IZySelectionService::NextPacket, type, previous);
  }
};

class PlatformServicePart final : public Part<IZyPlatformService> {
 public:
  using Part<IZyPlatformService>::Part;
  zyresult AppName(const char*& text) override { return Call(&IZyPlatformService::AppName, text); }
  zyresult AppVersionParts(std::int32_t (&parts)[3]) override {
    return Call(&IZyPlatformService::AppVersionParts, parts);
  }
  zyresult AppVersion(std::int32_t& version) override { return Call(&IZyPlatformService::AppVersion, version); }
  zyresult AppBuild(std::int32_t& build) override { return Call(&IZyPlatformService::AppBuild, build); }
  zyresult OsName(const char*& text) override { return Call(&IZyPlatformService::OsName, text); }
  zyresult OsVersion(const char*& text) override { return Call(&IZyPlatformService::OsVersion, text); }
};

class LogEntryPart final : public Part<IZyLogEntry> {
 public:
  using Part<IZyLogEntry>::Part;
  zyresult AddChild(IZyLogEntry* child) override { return Call(&IZyLogEntry::AddChild, child); }
};

class LogPart final : public Part<IZyLog> {
 public:
  using Part<IZyLog>::Part;
  zyresult AddEntry(IZyLogEntry* entry) override { return Call(&IZyLog::AddEntry, entry); }
};

class LogServicePart final : public Part<IZyLogService> {
 public:
  using Part<IZyLogService>::Part;
  zyresult SubSystemLookup(const char* name, IZyObject*& log) override {
    return CallFor(log, &IZyLogService::SubSystemLookup, name);
  }
  zyresult NewEntry(zyresult severity, const char* text, IZyObject*& entry) override {
    return CallFor(entry, &IZyLogService::NewEntry, severity, text);
  }
};

class MessagePart final : public Part<IZyMessage> {
 public:
  using Part<IZyMessage>::Part;
  zyresult Code() override { return Call(&IZyMessage::Code); }
  zyresult SetCode(zyresult code) override { return Call(&IZyMessage::SetCode, code); }
  zyresult SetMessage(const char* table, std::uint32_t number) override {
    return Call(&IZyMessage::SetMessage, table, number);
  }
  zyresult SetArgument(std::uint32_t index, const char* text) override {
    return Call(&IZyMessage::SetArgument, index, text);
  }
};

class MessageServicePart final : public Part<IZyMessageService> {
 public:
  using Part<IZyMessageService>::Part;
  zyresult NewMessage(IZyObject*& message) override { return CallFor(message, &IZyMessageService::NewMessage); }
  zyresult TableText(const char* table, std::uint32_t number, char* buffer, std::uint32_t size) override {
    return Call(&IZyMessageService::TableText, table, number, buffer, size);
  }
  zyresult MessageText(IZyMessage* message, char* buffer, std::uint32_t size) override {
    return Call(&IZyMessageService::MessageText, message, buffer, size);
  }
};

class DialogServicePart final : public Part<IZyStdDialogService> {
 public:
  using Part<IZyStdDialogService>::Part;
  zyresult ShowMessage(IZyMessage* message) override { return Call(&IZyStdDialogService::ShowMessage, message); }
};

class UserValuePart final : public Part<IZyUserValue> {
 public:
  using Part<IZyUserValue>::Part;
  zyresult GetInt(std::int32_t& value) override { return Call(&IZyUserValue::GetInt, value); }
};

class ValueServicePart final : public Part<IZyValueService> {
 public:
  using Part<IZyValueService>::Part;
  zyresult Query(const char* name, IZyObject*& value) override {
    return CallFor(value, &IZyValueService::Query, name);
  }
};

class CommandPart final : public Part<IZyCommand> {
 public:
  using Part<IZyCommand>::Part;
  zyresult Message(IZyObject*& message) override { return CallFor(message, &IZyCommand::Message); }
};

class AttributesPart final : public Part<IZyAttributes> {
 public:
  using Part<IZyAttributes>::Part;
  zyresult Lookup(const char* name, std::int32_t& index) override {
    return Call(&IZyAttributes::Lookup, name, index);
  }
  zyresult Value(std::int32_t index, IZyObject*& value) override {
    return CallFor(value, &IZyAttributes::Value, index);
  }
  zyresult SetString(std::int32_t index, const char* text) override {
    return Call(&IZyAttributes::SetString, index, text);
  }
  zyresult SetInt(std::int32_t index, std::int32_t value) override {
    return Call(&IZyAttributes::SetInt, index, value);
  }
};

class ValueReferencePart final : public Part<IZyValueReference> {
 public:
  using Part<IZyValueReference>::Part;
  zyresult SetObject(IZyObject* object) override { return Call(&IZyValueReference::SetObject, object); }
};

class ValueArrayPart final : public Part<IZyValueArray> {
 public:
  using Part<IZyValueArray>::Part;
  std::uint32_t Count() override { return Call(&IZyValueArray::Count); }
  zyresult String(std::uint32_t index, char* buffer, std::uint32_t size) override {
    return Call(&IZyValueArray::String, index, buffer, size);
  }
};

class CommandServicePart final : public Part<IZyCommandService> {
 public:
  using Part<IZyCommandService>::Part;
  zyresult NewCommand(const char* name, IZyObject*& command) override {
    return CallFor(command, &IZyCommandService::NewCommand, name);
  }
  zyresult QueryArgument(IZyCommand* command, std::int32_t argument, IZyObject*& values) override {
    return CallFor(values, &IZyCommandService::QueryArgument, command, argument);
  }
};

constexpr PartRow kParts[] = {
    RowOf<SceneServicePart>(),    RowOf<PacketTranslationPart>(), RowOf<SelectionServicePart>(),
    RowOf<PlatformServicePart>(), RowOf<LogEntryPart>(),          RowOf<LogPart>(),
    RowOf<LogServicePart>(),      RowOf<MessagePart>(),           RowOf<MessageServicePart>(),
    RowOf<DialogServicePart>(),   RowOf<UserValuePart>(),         RowOf<ValueServicePart>(),
    RowOf<CommandPart>(),         RowOf<AttributesPart>(),        RowOf<ValueReferencePart>(),
    RowOf<ValueArrayPart>(),      RowOf<CommandServicePart>()};

}  // namespace

std::span<const PartRow> ServiceParts() { return kParts; }

}  // namespace test_support
