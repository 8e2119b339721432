// The load options in the configuration, and the object that is handed to a loader.
#include "tests/support/failing_host.h"
#include "tests/support/load_options_rig.h"
#include "tests/support/temp_directory.h"

#include <gmock/gmock.h>

namespace {

using headless::ConfigStore;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> kStoredAt = {"gltfLoader", "gltfLoadOptions", "LoadOptions"};

std::vector<std::string> StoredAt(const char* name) {
  std::vector<std::string> path = kStoredAt;
  path.push_back(name);
  return path;
}

TEST(LoadOptionsConfig, EachOptionIsStoredAndShownAgain) {
  const TempDirectory directory;
  for (const LoadOptions& options : OptionSets()) {
    {
      Rig rig(std::make_shared<ConfigStore>(directory.Path() / "config.json"));
      const Server server = rig.NewServer();
      server.Set(options);
      EXPECT_EQ(server.command.Raw()->Execute(), ZYe_OK);
      EXPECT_EQ(Server::Values(*rig.Handed<IZyServerAttributes>().Raw()), ValuesOf(options));
      for (std::size_t i = 0; i < kExpected.size(); ++i) {
        const bool isFloat = i == 16;
        const double stored =
            isFloat ? rig.store->Number(StoredAt(kExpected[i].name)).value()
                    : rig.store->Integer(StoredAt(kExpected[i].name), ConfigStore::Integers::Any).value();
        EXPECT_EQ(stored, kExpected[i].get(options)) << kExpected[i].name;
      }
      rig.store->Save();
    }
    Rig rig(std::make_shared<ConfigStore>(directory.Path() / "config.json"));
    const Server server = rig.NewServer();
    EXPECT_EQ(server.command.Raw()->DialogInit(), ZYe_OK);
    EXPECT_EQ(server.Values(), ValuesOf(options));
  }
}

TEST(LoadOptionsConfig, UnitsKeepTheirValueThere) {
  Rig rig;
  LoadOptions options;
  for (const std::uint32_t units : {8u, 9u, 400u, 0xFFFFFFFFu}) {
    options.importUnits = units;
    const Server server = rig.NewServer();
    server.attributes.Raw()->SetInt(17, static_cast<std::int32_t>(units));
    server.command.Raw()->Execute();
    LoadOptions stored;
    FetchStoredLoadOptions(stored);
    EXPECT_EQ(stored.importUnits, units);
  }
}

TEST(LoadOptionsConfig, WhatIsStoredOverlaysTheDefaults) {
  Rig rig;
  const Server server = rig.NewServer();
  std::int32_t unset = 0;
  EXPECT_EQ(server.attributes.Raw()->GetInt(0, unset), ZYe_FAILED) << "before the dialog starts";
  server.command.Raw()->DialogInit();
  EXPECT_EQ(server.Values(), kDefaults) << "a first run";

  rig.store->SetInteger(StoredAt("loadLights"), 0);
  rig.store->SetInteger(StoredAt("changeTextureEffect"), -7);
  rig.store->SetInteger(StoredAt("mergeWithExistingItems"), 3);
  rig.store->SetNumber(StoredAt("importUnits"), 2.5);
  server.command.Raw()->DialogInit();
  std::vector<double> expected = kDefaults;
  expected[0] = expected[10] = 1;
  expected[12] = 0;
  EXPECT_EQ(server.Values(), expected);
  EXPECT_THAT(rig.store->Warnings(), ElementsAre(testing::HasSubstr("LoadOptions.importUnits is not an integer")));

  LoadOptions fetched;
  fetched.importUnits = 5;
  FetchStoredLoadOptions(fetched);
  EXPECT_EQ(fetched.importUnits, 5u) << "what can't be read stays";
  rig.store->Remove(kStoredAt);
  fetched.loadLights = false;
  FetchStoredLoadOptions(fetched);
  EXPECT_FALSE(fetched.loadLights);
  EXPECT_EQ(fetched.mergeWithExistingItems, 1u) << "as it was fetched before";
}

TEST(LoadOptionsConfig, ALoaderAsksForTheHandedOptionsFirst) {
  Rig rig;
  rig.store->SetInteger(StoredAt("importUnits"), 9);
  LoadOptions options;
  FetchCurrentLoadOptions(options);
  EXPECT_EQ(options.importUnits, 9u) << "none handed over: the configuration";

  const Server server = rig.NewServer();
  server.command.Raw()->Execute();  // nothing was set, so these are the defaults
  const CountedRef<IZyStreamIO> first = rig.Handed<IZyStreamIO>();
  rig.store->SetInteger(StoredAt("importUnits"), 9);
  FetchCurrentLoadOptions(options);
  EXPECT_EQ(ValuesOf(options), kDefaults);
  FetchStoredLoadOptions(options);
  EXPECT_EQ(options.importUnits, 9u);

  server.command.Raw()->Execute();
  EXPECT_NE(rig.Handed<IZyStreamIO>().Raw(), first.Raw()) << "one object an execution";
  rig.store->SetInteger(StoredAt("importUnits"), 9);
  CZyIOService().SetOptions(server.command.Raw());
  options = {};
  FetchCurrentLoadOptions(options);
  EXPECT_EQ(options.importUnits, 9u) << "an object of another kind: the configuration";
}

// Notes what the module declares, and how often.
class DeclarationSpy final : public IZyHost, public CountedObject<IZyPersistenceService> {
 public:
  explicit DeclarationSpy(headless::Host& host) : host_(host) {
    service_.Set(host.Service(IZyPersistenceService::kId));
  }
  IZyObject* Service(std::uint32_t id) override {
    return id == IZyPersistenceService::kId ? static_cast<IZyPersistenceService*>(this) : host_.Service(id);
  }
  zyresult Configure(const char* domain, IZyVisitor* visitor) override {
    lines.emplace_back(domain);
    return service_.Raw()->Configure(domain, visitor);
  }
  zyresult StartEntry(const char* name, ZyEntryKind kind) override {
    lines.push_back((kind == ZyEntryKind::Keyed ? "keyed " : "plain ") + std::string(name));
    return service_.Raw()->StartEntry(name, kind);
  }
  zyresult AddValue(const char* type, IZyObject*& value) override {
    lines.back() += std::string(" ") + type;
    return service_.Raw()->AddValue(type, value);
  }
  zyresult EndEntry(IZyObject*& entry) override {
    ++ended;
    return service_.Raw()->EndEntry(entry);
  }

  std::vector<std::string> lines;
  int ended = 0;

 private:
  headless::Host& host_;
  CountedRef<IZyPersistenceService> service_;
};

TEST(LoadOptionsConfig, TheTreeIsDeclaredOnce) {
  headless::Host host(headless::MakeScene());
  DeclarationSpy spy(host);
  {
    const LoadedModule module(spy);
    EXPECT_THAT(spy.lines, IsEmpty()) << "not before there is a command";
    const Server first(*module), second(*module);
  }
  std::vector<std::string> expected = {"gltfLoader", "keyed gltfLoadOptions"};
  for (const Expected& argument : kExpected)
    expected.push_back(std::string("plain ") + argument.name + " " + argument.type);
  EXPECT_EQ(spy.lines, expected);
  EXPECT_EQ(spy.ended, 19);
  EXPECT_EQ(host.LiveObjects(), 0u);
}

TEST(LoadOptionsConfig, NoFailingCallBreaksTheCommand) {
  headless::Host inner(headless::MakeScene());
  FailingHost host(inner, *inner.Scene());
  const auto use = [&] {
    bool isServed = false;
    {
      const LoadedModule module(host);
      const Server server(*module);
      isServed = !server.command.Empty();
      if (isServed) {
        EXPECT_EQ(server.command.Raw()->DialogInit(), ZYe_OK);
        EXPECT_EQ(server.command.Raw()->Execute(), ZYe_OK);
        EXPECT_EQ(server.Values().size(), 18u);
      }
      static_cast<IZyIOService*>(inner.Service(IZyIOService::kId)->Interface(IZyIOService::kId))
          ->SetOptions(nullptr);
    }
    return isServed;
  };
  host.FailCall(0);
  EXPECT_TRUE(use());
  const std::size_t calls = host.Calls();
  EXPECT_GT(calls, 90u);
  for (std::size_t k = 1; k <= calls; ++k) {
    host.FailCall(k);
    EXPECT_TRUE(use()) << "call " << k;
    EXPECT_TRUE(host.AllReleased()) << "call " << k;
    EXPECT_EQ(inner.LiveObjects(), 0u) << "call " << k;
  }
}

}  // namespace
