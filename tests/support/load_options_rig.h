// What the load options are to be, and the module's command that serves them.
#pragma once

#include "headless/config_store.h"
#include "headless/host.h"
#include "options/options_command.h"
#include "tests/support/save_runner.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

// The arguments as they are to be: name, type, bit among the flags, and how to get and change the field.
struct Expected {
  const char* name;
  const char* type;
  int bit;
  std::function<double(const LoadOptions&)> get;
  std::function<void(LoadOptions&)> change;
};

#define LOAD_FLAG(field, bit)                                                                             \
  {                                                                                                       \
#field, "boolean", bit,                                                                               \
        [](const LoadOptions& o) { return double(o.field); }, [](LoadOptions & o) { o.field = !o.field; } \
  }

inline const std::vector<Expected> kExpected = {
    LOAD_FLAG(mergeWithExistingItems, 16),
    LOAD_FLAG(loadGeometry, 0),
    LOAD_FLAG(loadNormals, 8),
    LOAD_FLAG(loadMeshSmoothing, 4),
    LOAD_FLAG(loadBlendShapes, 5),
    LOAD_FLAG(loadPolygonParts, 11),
    LOAD_FLAG(loadSelectionSets, 12),
    LOAD_FLAG(loadMaterials, 1),
    LOAD_FLAG(invertMatTranAmt, 9),
    LOAD_FLAG(useMatTranColAsTranAmt, 10),
    LOAD_FLAG(changeTextureEffect, 17),
    LOAD_FLAG(loadCameras, 2),
    LOAD_FLAG(loadLights, 3),
    LOAD_FLAG(loadAnimation, 6),
    LOAD_FLAG(loadSampleAnimation, 7),
    {"loadSampleAnimationRate", "integer", 13, [](const LoadOptions& o) { return o.loadSampleAnimationRate; },
     [](LoadOptions& o) { o.loadSampleAnimationRate = 1; }},
    {"globalScalingFactor", "float", -1, [](const LoadOptions& o) { return o.globalScalingFactor; },
     [](LoadOptions& o) { o.globalScalingFactor = -0.1; }},
    {"importUnits", "integer", -1, [](const LoadOptions& o) { return o.importUnits; },
     [](LoadOptions& o) { o.importUnits = 7; }},
};

#undef LOAD_FLAG

// By argument.
inline const std::vector<double> kDefaults = {0, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 1.0, 0};
inline constexpr std::uint32_t kDefaultFlags = 0x19FF;  // of the stream record

inline std::vector<double> ValuesOf(const LoadOptions& options) {
  std::vector<double> values;
  for (const Expected& argument : kExpected) values.push_back(argument.get(options));
  return values;
}

// Every option alone changed, all of them, and none.
inline std::vector<LoadOptions> OptionSets() {
  std::vector<LoadOptions> sets(kExpected.size() + 2);
  for (std::size_t i = 0; i < kExpected.size(); ++i) {
    kExpected[i].change(sets[i]);
    kExpected[i].change(sets[kExpected.size()]);
  }
  return sets;
}

struct Server {
  CountedRef<IZyCommandServer> command;
  CountedRef<IZyServerAttributes> attributes;
  CountedRef<IZyAttributesUI> ui;

  explicit Server(IZyModule& module) {
    IZyObject* object = nullptr;
    IZyFactory* factory = module.Factory("loaderOptions.gltf");
    if (!factory || ZyFailed(factory->Spawn(object))) return;
    command.Take(object);
    attributes.Set(command.Raw());
    ui.Set(command.Raw());
  }
  std::vector<double> Values() const { return Values(*attributes.Raw()); }
  static std::vector<double> Values(IZyServerAttributes& attributes) {
    std::vector<double> values;
    for (std::uint32_t index = 0; index < attributes.Count(); ++index) {
      std::int32_t integer = -99;
      double number = -99;
      const bool isInteger = ZySucceeded(attributes.GetInt(index, integer));
      EXPECT_NE(isInteger, ZySucceeded(attributes.GetDouble(index, number))) << kExpected[index].name;
      values.push_back(isInteger ? integer : number);
    }
    return values;
  }
  void Set(const LoadOptions& options) const {
    for (std::uint32_t index = 0; index < kExpected.size(); ++index) {
      const double value = kExpected[index].get(options);
      const bool isFloat = std::string(kExpected[index].type) == "float";
      EXPECT_EQ(attributes.Raw()->SetInt(index, static_cast<std::int32_t>(value)), isFloat ? ZYe_FAILED : ZYe_OK);
      EXPECT_EQ(attributes.Raw()->SetDouble(index, value), isFloat ? ZYe_OK : ZYe_FAILED);
    }
  }
};

// A host with a module that is gone before the host is, as it has to be.
struct Rig {
  explicit Rig(std::shared_ptr<headless::ConfigStore> settings = std::make_shared<headless::ConfigStore>())
      : store(std::move(settings)), host(headless::MakeScene(), store), module(std::in_place, host) {}
  ~Rig() {
    CZyIOService().SetOptions(nullptr);
    module.reset();
    EXPECT_EQ(host.LiveObjects(), 0u);
  }
  Server NewServer() { return Server(**module); }
  // The options object that the host was handed, as one of its interfaces.
  template <class I>
  CountedRef<I> Handed() {
    CountedRef<IZyObject> object;
    CountedRef<I> options;
    CZyIOService().Options(object);
    options.Set(object.Raw());
    return options;
  }

  std::shared_ptr<headless::ConfigStore> store;
  headless::Host host;
  std::optional<LoadedModule> module;
};

}  // namespace test_support
