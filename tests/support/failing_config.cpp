// Stored settings and the I/O service of the failing host.
#include "host/config_api.h"
#include "host/stream_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

struct PersistEntryPart final : Part<IZyPersistEntry> {
  zyresult Select(const char* key) override { return Call(&Host::Select, key); }
  zyresult Insert(const char* key) override { return Call(&Host::Insert, key); }
  zyresult Append() override { return Call(&Host::Append); }
};

struct PersistValuePart final : Part<IZyPersistValue> {
  zyresult GetInt(std::int32_t& value) override { return Call(&Host::GetInt, value); }
  zyresult SetInt(std::int32_t value) override { return Call(&Host::SetInt, value); }
  zyresult GetDouble(double& value) override { return Call(&Host::GetDouble, value); }
  zyresult SetDouble(double value) override { return Call(&Host::SetDouble, value); }
};

struct PersistenceServicePart final : Part<IZyPersistenceService> {
  zyresult Configure(const char* domain, IZyVisitor* visitor) override {
    return Call(&Host::Configure, domain, visitor);
  }
  zyresult StartEntry(const char* name, ZyEntryKind kind) override { return Call(&Host::StartEntry, name, kind); }
  zyresult AddValue(const char* type, IZyObject*& value) override { return CallFor(value, &Host::AddValue, type); }
  zyresult EndEntry(IZyObject*& entry) override { return CallFor(entry, &Host::EndEntry); }
};

struct IOServicePart final : Part<IZyIOService> {
  zyresult SetOptions(IZyObject* options) override { return Call(&Host::SetOptions, options); }
  zyresult Options(IZyObject*& options) override { return CallFor(options, &Host::Options); }
};

constexpr PartRow kParts[] = {RowOf<PersistEntryPart>(), RowOf<PersistValuePart>(),
                              RowOf<PersistenceServicePart>(), RowOf<IOServicePart>()};

}  // namespace

std::span<const PartRow> ConfigParts() { return kParts; }

}  // namespace test_support
