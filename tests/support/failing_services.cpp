// Services and commands of the failing host.
#include "host/command_api.h"
#include "host/service_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

struct SceneServicePart final : Part<IZySceneService> {
  zyresult ItemTypeLookup(const char* name, std::uint32_t& type) override {
    return Call(&Host::ItemTypeLookup, name, type);
  }
  zyresult ItemTypeName(std::uint32_t type, const char*& text) override {
    return Call(&Host::ItemTypeName, type, text);
  }
  zyresult MeshInstanceSource(IZyItem* item, IZyObject*& source) override {
    return CallFor(source, &Host::MeshInstanceSource, item);
  }
};

struct PacketTranslationPart final : Part<IZyItemPacketTranslation> {
  zyresult Item(void* packet, IZyObject*& item) override { return CallFor(item, &Host::Item, packet); }
};

struct SelectionServicePart final : Part<IZySelectionService> {
  std::uint32_t LookupType(const char* name) override { return Call(&Host::LookupType, name); }
  zyresult AllocatePacketTranslation(const char* name, IZyObject*& translation) override {
    return CallFor(translation, &Host::AllocatePacketTranslation, name);
  }
  void* NextPacket(std::uint32_t type, void* previous) override { return Call(&Host::NextPacket, type, previous); }
};

struct PlatformServicePart final : Part<IZyPlatformService> {
  zyresult AppName(const char*& text) override { return Call(&Host::AppName, text); }
  zyresult AppVersionParts(std::int32_t (&parts)[3]) override { return Call(&Host::AppVersionParts, parts); }
  zyresult AppVersion(std::int32_t& version) override { return Call(&Host::AppVersion, version); }
  zyresult AppBuild(std::int32_t& build) override { return Call(&Host::AppBuild, build); }
  zyresult OsName(const char*& text) override { return Call(&Host::OsName, text); }
  zyresult OsVersion(const char*& text) override { return Call(&Host::OsVersion, text); }
};

struct LogEntryPart final : Part<IZyLogEntry> {
  zyresult AddChild(IZyLogEntry* child) override { return Call(&Host::AddChild, child); }
};

struct LogPart final : Part<IZyLog> {
  zyresult AddEntry(IZyLogEntry* entry) override { return Call(&Host::AddEntry, entry); }
};

struct LogServicePart final : Part<IZyLogService> {
  zyresult SubSystemLookup(const char* name, IZyObject*& log) override {
    return CallFor(log, &Host::SubSystemLookup, name);
  }
  zyresult NewEntry(zyresult severity, const char* text, IZyObject*& entry) override {
    return CallFor(entry, &Host::NewEntry, severity, text);
  }
};

struct MessagePart final : Part<IZyMessage> {
  zyresult Code() override { return Call(&Host::Code); }
  zyresult SetCode(zyresult code) override { return Call(&Host::SetCode, code); }
  zyresult SetMessage(const char* table, std::uint32_t number) override {
    return Call(&Host::SetMessage, table, number);
  }
  zyresult SetArgument(std::uint32_t index, const char* text) override {
    return Call(&Host::SetArgument, index, text);
  }
};

struct MessageServicePart final : Part<IZyMessageService> {
  zyresult NewMessage(IZyObject*& message) override { return CallFor(message, &Host::NewMessage); }
  zyresult TableText(const char* table, std::uint32_t number, char* buffer, std::uint32_t size) override {
    return Call(&Host::TableText, table, number, buffer, size);
  }
  zyresult MessageText(IZyMessage* message, char* buffer, std::uint32_t size) override {
    return Call(&Host::MessageText, message, buffer, size);
  }
};

struct DialogServicePart final : Part<IZyStdDialogService> {
  zyresult ShowMessage(IZyMessage* message) override { return Call(&Host::ShowMessage, message); }
};

struct UserValuePart final : Part<IZyUserValue> {
  zyresult GetInt(std::int32_t& value) override { return Call(&Host::GetInt, value); }
};

struct ValueServicePart final : Part<IZyValueService> {
  zyresult Query(const char* name, IZyObject*& value) override { return CallFor(value, &Host::Query, name); }
};

struct CommandPart final : Part<IZyCommand> {
  zyresult Message(IZyObject*& message) override { return CallFor(message, &Host::Message); }
};

struct AttributesPart final : Part<IZyAttributes> {
  zyresult Lookup(const char* name, std::int32_t& index) override { return Call(&Host::Lookup, name, index); }
  zyresult Value(std::int32_t index, IZyObject*& value) override { return CallFor(value, &Host::Value, index); }
  zyresult SetString(std::int32_t index, const char* text) override { return Call(&Host::SetString, index, text); }
  zyresult SetInt(std::int32_t index, std::int32_t value) override { return Call(&Host::SetInt, index, value); }
};

struct ValueReferencePart final : Part<IZyValueReference> {
  zyresult SetObject(IZyObject* object) override { return Call(&Host::SetObject, object); }
};

struct ValueArrayPart final : Part<IZyValueArray> {
  std::uint32_t Count() override { return Call(&Host::Count); }
  zyresult String(std::uint32_t index, char* buffer, std::uint32_t size) override {
    return Call(&Host::String, index, buffer, size);
  }
};

struct CommandServicePart final : Part<IZyCommandService> {
  zyresult NewCommand(const char* name, IZyObject*& command) override {
    return CallFor(command, &Host::NewCommand, name);
  }
  zyresult QueryArgument(IZyCommand* command, std::int32_t argument, IZyObject*& values) override {
    return CallFor(values, &Host::QueryArgument, command, argument);
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
