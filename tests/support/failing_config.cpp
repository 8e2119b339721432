// Stored settings and the I/O service of the failing host.
#include "host/config_api.h"
#include "host/stream_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

class PersistEntryPart final : public Part<IZyPersistEntry> {
 public:
  using Part<IZyPersistEntry>::Part;
  zyresult Select(const char* key) override { return Call(&IZyPersistEntry::Select, key); }
  zyresult Insert(const char* key) override { return Call(&IZyPersistEntry::Insert, key); }
  zyresult Append() override { return Call(&IZyPersistEntry::Append); }
};

class PersistValuePart final : public Part<IZyPersistValue> {
 public:
  using Part<IZyPersistValue>::Part;
  zyresult GetInt(std::int32_t& value) override { return Call(&IZyPersistValue::GetInt, value); }
  zyresult SetInt(std::int32_t value) override { return Call(&IZyPersistValue::SetInt, value); }
  zyresult GetDouble(double& value) override { return Call(&IZyPersistValue::GetDouble, value); }
  zyresult SetDouble(double value) override { return Call(&IZyPersistValue::SetDouble, value); }
};

class PersistenceServicePart final : public Part<IZyPersistenceService> {
 public:
  using Part<IZyPersistenceService>::Part;
  zyresult Configure(const char* domain, IZyVisitor* visitor) override {
    return Call(&IZyPersistenceService::Configure, domain, visitor);
  }
  zyresult StartEntry(const char* name, ZyEntryKind kind) override {
    return Call(&IZyPersistenceService::StartEntry, name, kind);
  }
  zyresult AddValue(const char* type, IZyObject*& value) override {
    return CallFor(value, &IZyPersistenceService::AddValue, type);
  }
  zyresult EndEntry(IZyObject*& entry) override { return CallFor(entry, &IZyPersistenceService::EndEntry); }
};

class IOServicePart final : public Part<IZyIOService> {
 public:
  using Part<IZyIOService>::Part;
  zyresult SetOptions(IZyObject* options) override { return Call(&IZyIOService::SetOptions, options); }
  zyresult Options(IZyObject*& options) override { return CallFor(options, &IZyIOService::Options); }
};

constexpr PartRow kParts[] = {RowOf<PersistEntryPart>(), RowOf<PersistValuePart>(),
                              RowOf<PersistenceServicePart>(), RowOf<IOServicePart>()};

}  // namespace

std::span<const PartRow> ConfigParts() { return kParts; }

}  // namespace test_support
