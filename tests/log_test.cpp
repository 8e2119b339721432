// The saver's log against a host that keeps what it is told.
#include "host/counted_object.h"
#include "saver/log_message.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Entry {
  zyresult severity = 0;
  std::string text;
  std::vector<std::shared_ptr<Entry>> children;
};

// What the host was told, and how it answers. Each call counts, and call `failAt` fails.
struct LogRecord {
  std::map<std::string, std::vector<std::shared_ptr<Entry>>> subsystems = {{"io-status", {}}, {"logsys", {}}};
  std::map<std::uint32_t, std::string> titles = {{2401, "Trouble"}, {2402, "Files"}};
  struct Dialog {
    zyresult code = 0;
    std::string table;
    std::uint32_t number = 0;
    std::map<std::uint32_t, std::string> arguments;
  };
  std::vector<Dialog> dialogs;
  int titleCalls = 0;
  int calls = 0;
  int failAt = 0;
  int liveObjects = 0;

  bool Fails() { return ++calls == failAt; }
};

template <class Interface>
class FakeObject : public CountedObject<Interface> {
 public:
  explicit FakeObject(LogRecord& shared) : record(shared) { ++record.liveObjects; }
  ~FakeObject() override { --record.liveObjects; }

  LogRecord& record;
};

struct FakeEntry : FakeObject<IZyLogEntry> {
  using FakeObject::FakeObject;
  zyresult AddChild(IZyLogEntry* child) override {
    if (record.Fails()) return ZYe_FAILED;
    entry->children.push_back(static_cast<FakeEntry*>(child)->entry);
    return ZYe_OK;
  }
  std::shared_ptr<Entry> entry = std::make_shared<Entry>();
};

struct FakeLog : FakeObject<IZyLog> {
  using FakeObject::FakeObject;
  zyresult AddEntry(IZyLogEntry* added) override {
    if (record.Fails()) return ZYe_FAILED;
    record.subsystems[name].push_back(static_cast<FakeEntry*>(added)->entry);
    return ZYe_OK;
  }
  std::string name;
};

struct FakeMessage : FakeObject<IZyMessage> {
  using FakeObject::FakeObject;
  zyresult Code() override { return dialog.code; }
  zyresult SetCode(zyresult code) override {
    if (record.Fails()) return ZYe_FAILED;
    dialog.code = code;
    return ZYe_OK;
  }
  zyresult SetMessage(const char* table, std::uint32_t number) override {
    if (record.Fails()) return ZYe_FAILED;
    dialog.table = table;
    dialog.number = number;
    return ZYe_OK;
  }
  zyresult SetArgument(std::uint32_t index, const char* text) override {
    if (record.Fails()) return ZYe_FAILED;
    dialog.arguments[index] = text;
    return ZYe_OK;
  }
  LogRecord::Dialog dialog;
};

struct FakeLogService : FakeObject<IZyLogService> {
  using FakeObject::FakeObject;
  zyresult SubSystemLookup(const char* name, IZyObject*& log) override {
    if (record.Fails() || !record.subsystems.contains(name)) return ZYe_FAILED;
    auto* found = new FakeLog(record);
    found->name = name;
    log = found;
    return ZYe_OK;
  }
  zyresult NewEntry(zyresult severity, const char* text, IZyObject*& entry) override {
    if (record.Fails()) return ZYe_FAILED;
    auto* made = new FakeEntry(record);
    made->entry->severity = severity;
    made->entry->text = text;
    entry = made;
    return ZYe_OK;
  }
};

struct FakeMessageService : FakeObject<IZyMessageService> {
  using FakeObject::FakeObject;
  zyresult NewMessage(IZyObject*& message) override {
    if (record.Fails()) return ZYe_FAILED;
    message = new FakeMessage(record);
    return ZYe_OK;
  }
  zyresult TableText(const char*, std::uint32_t number, char* buffer, std::uint32_t size) override {
    ++record.titleCalls;
    if (record.Fails() || !record.titles.contains(number)) return ZYe_FAILED;
    const std::string& text = record.titles[number];
    if (text.size() + 1 > size) return ZYe_SHORT_BUFFER;
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return ZYe_OK;
  }
  zyresult MessageText(IZyMessage*, char*, std::uint32_t) override { return ZYe_FAILED; }
};

struct FakeDialogService : FakeObject<IZyStdDialogService> {
  using FakeObject::FakeObject;
  zyresult ShowMessage(IZyMessage* message) override {
    if (record.Fails()) return ZYe_FAILED;
    record.dialogs.push_back(static_cast<FakeMessage*>(message)->dialog);
    return ZYe_OK;
  }
};

struct FakePlatformService : FakeObject<IZyPlatformService> {
  using FakeObject::FakeObject;
  zyresult AppName(const char*& text) override { return Answer(text, "Orvo"); }
  zyresult AppVersionParts(std::int32_t (&parts)[3]) override {
    if (record.Fails()) return ZYe_FAILED;
    parts[0] = 10, parts[1] = 2, parts[2] = 3;
    return ZYe_OK;
  }
  zyresult AppVersion(std::int32_t& version) override { return Answer(version, 1023); }
  zyresult AppBuild(std::int32_t& build) override { return Answer(build, 77); }
  zyresult OsName(const char*& text) override { return Answer(text, "Linux"); }
  zyresult OsVersion(const char*& text) override { return Answer(text, "64 bit"); }

  template <class Out, class Value>
  zyresult Answer(Out& out, Value value) {
    if (record.Fails()) return ZYe_FAILED;
    out = value;
    return ZYe_OK;
  }
};

// Binds itself as the module's host for its lifetime.
class LogHost final : public IZyHost {
 public:
  LogHost() { SetZyHost(this); }
  ~LogHost() { SetZyHost(nullptr); }
  LogHost(const LogHost&) = delete;
  LogHost& operator=(const LogHost&) = delete;

  IZyObject* Service(std::uint32_t id) override {
    if (id == IZyLogService::kId) return &log_;
    if (id == IZyMessageService::kId) return &message_;
    if (id == IZyStdDialogService::kId) return &dialog_;
    if (id == IZyPlatformService::kId) return &platform_;
    return nullptr;
  }

  LogRecord record;
  const std::vector<std::shared_ptr<Entry>>& Blocks() { return record.subsystems["io-status"]; }
  // "severity:text" of each event of the log proper.
  std::vector<std::string> Events() {
    std::vector<std::string> events;
    for (const auto& event : record.subsystems["logsys"])
      events.push_back(std::to_string(event->severity) + ":" + event->text);
    return events;
  }

 private:
  FakeLogService log_{record};
  FakeMessageService message_{record};
  FakeDialogService dialog_{record};
  FakePlatformService platform_{record};
};

std::vector<std::string> Lines(const Entry& block) {
  std::vector<std::string> lines;
  for (const auto& child : block.children) lines.push_back(child->text);
  return lines;
}

TEST(Log, SetupOpensABlockAndInfoFillsIt) {
  LogHost host;
  GltfLogMsg log;
  log.Info("before %s", "setup");
  log.Setup("first");
  log.Info("   nested:%d\n", 7);
  log.Setup("second");
  log.Info("below");
  ASSERT_EQ(host.Blocks().size(), 3u);
  for (const auto& block : host.Blocks()) {
    EXPECT_EQ(block->text, "gltf: Files");
    EXPECT_EQ(block->severity, 1);
    for (const auto& line : block->children) EXPECT_EQ(line->severity, 1);
  }
  EXPECT_THAT(Lines(*host.Blocks()[0]), ElementsAre("before setup"));
  EXPECT_THAT(Lines(*host.Blocks()[1]), ElementsAre("first", "   nested:7\n"));
  EXPECT_THAT(Lines(*host.Blocks()[2]), ElementsAre("second", "below"));
  EXPECT_EQ(host.record.titleCalls, 1);
  EXPECT_THAT(host.Events(), IsEmpty());
}

TEST(Log, EventsAreCountedAndDialogsAreNot) {
  LogHost host;
  GltfLogMsg log;
  log.Warning("w%d", 1);
  log.Error("e%d", 1);
  log.Error("e%d", 2);
  log.WarningDialog("sum %d", 3);
  log.ErrorDialog("end");
  EXPECT_EQ(log.WarningCount(), 1u);
  EXPECT_EQ(log.ErrorCount(), 2u);
  EXPECT_THAT(host.Events(),
              ElementsAre("2:w1", "-2147483648:e1", "-2147483648:e2", "2:sum 3", "-2147483648:end"));
  EXPECT_THAT(host.Blocks(), IsEmpty());
  ASSERT_EQ(host.record.dialogs.size(), 2u);
  EXPECT_EQ(host.record.dialogs[0].code, 2);
  EXPECT_EQ(host.record.dialogs[1].code, ZYe_FAILED);
  EXPECT_EQ(host.record.dialogs[1].table, "common");
  EXPECT_EQ(host.record.dialogs[1].number, 2020u);
  EXPECT_EQ(host.record.dialogs[0].arguments, (std::map<std::uint32_t, std::string>{{1, "sum 3"}}));
  log.ResetCounters();
  EXPECT_EQ(log.WarningCount() + log.ErrorCount(), 0u);
}

TEST(Log, WithoutEventLogTheBlocksTakeOver) {
  LogHost host;
  host.record.subsystems.erase("logsys");
  GltfLogMsg log;
  log.Setup("start");
  log.WarningDialog("told");
  log.Warning("doubt");
  log.Info("after");
  log.Error("bad");
  ASSERT_EQ(host.Blocks().size(), 3u);
  EXPECT_THAT(Lines(*host.Blocks()[0]), ElementsAre("start", "told"));
  EXPECT_THAT(Lines(*host.Blocks()[1]), ElementsAre("doubt", "after"));
  EXPECT_EQ(host.Blocks()[1]->text, "gltf: Trouble");
  EXPECT_EQ(host.Blocks()[1]->severity, 2);
  EXPECT_EQ(host.Blocks()[1]->children[0]->severity, 2);
  EXPECT_THAT(Lines(*host.Blocks()[2]), ElementsAre("bad"));
  EXPECT_EQ(log.WarningCount(), 1u);
  EXPECT_EQ(log.ErrorCount(), 1u);
  EXPECT_EQ(host.record.dialogs.size(), 1u);
}

TEST(Log, TitlesFallBackAndGrow) {
  LogHost host;
  host.record.subsystems.erase("logsys");
  host.record.titles = {{2402, std::string(5000, 't')}};
  GltfLogMsg log;
  log.Setup("a");
  log.Error("b");
  ASSERT_EQ(host.Blocks().size(), 2u);
  EXPECT_EQ(host.Blocks()[0]->text, "gltf: " + std::string(5000, 't'));
  EXPECT_EQ(host.Blocks()[1]->text, "gltf: load/save error");
}

TEST(Log, LongTextsAreCut) {
  LogHost host;
  GltfLogMsg log;
  for (const std::size_t length : {1022u, 1023u, 1024u, 2000u}) log.Info("%s", std::string(length, 'x').c_str());
  ASSERT_EQ(host.Blocks().size(), 1u);
  std::vector<std::size_t> lengths;
  for (const std::string& line : Lines(*host.Blocks()[0])) lengths.push_back(line.size());
  EXPECT_THAT(lengths, ElementsAre(1022u, 1023u, 1023u, 1023u));
}

TEST(Log, VersionsAreReadOnce) {
  LogHost host;
  GltfLogMsg log;
  const std::string header = "Orvo 1023 [Build 77], Linux (64 bit)\n";
  EXPECT_EQ(log.GetVersion(), header);
  EXPECT_EQ(log.CZyTavrensyLogMessage::GetVersion(), std::string("10.2v3"));
  const int calls = host.record.calls;
  EXPECT_EQ(log.GetVersion(), header);
  EXPECT_EQ(log.CZyTavrensyLogMessage::GetVersion(), std::string("10.2v3"));
  EXPECT_EQ(host.record.calls, calls);
}

void UseEverything(GltfLogMsg& log) {
  log.Info("one");
  log.Setup("two");
  log.Info("three");
  log.Warning("four");
  log.Error("five");
  log.WarningDialog("six");
  log.ErrorDialog("seven");
  log.GetVersion();
  log.CZyTavrensyLogMessage::GetVersion();
}

TEST(Log, EachCallOfTheHostMayFail) {
  int callsOfAll = 0;
  for (int failAt = 0; failAt <= callsOfAll; ++failAt) {
    SCOPED_TRACE(failAt);
    LogHost host;
    const int services = host.record.liveObjects;
    host.record.failAt = failAt;
    {
      GltfLogMsg log;
      UseEverything(log);
      EXPECT_EQ(log.WarningCount(), 1u);
      EXPECT_EQ(log.ErrorCount(), 1u);
    }
    if (failAt == 0) callsOfAll = host.record.calls;
    EXPECT_EQ(host.record.liveObjects, services);
    // At most one dialog is lost.
    EXPECT_GE(host.record.dialogs.size(), 1u);
  }
  EXPECT_GT(callsOfAll, 20);
}

TEST(Log, AHostWithoutServicesIsSilent) {
  SetZyHost(nullptr);
  GltfLogMsg log;
  UseEverything(log);
  EXPECT_EQ(log.WarningCount(), 1u);
  EXPECT_EQ(log.ErrorCount(), 1u);
  EXPECT_EQ(log.CZyTavrensyLogMessage::GetVersion(), std::string("1.0v0"));
}

TEST(Log, WithoutItsSubsystemOnlyEventsAreLogged) {
  LogHost host;
  host.record.subsystems.erase("io-status");
  GltfLogMsg log;
  UseEverything(log);
  EXPECT_THAT(host.Events(), ElementsAre("2:four", "-2147483648:five", "2:six", "-2147483648:seven"));
}

}  // namespace
