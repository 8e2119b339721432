// Saves under a host of which one call fails, for each call in turn.
#include "host/mesh_api.h"
#include "readers/read_scene.h"
#include "tests/support/failing_host.h"
#include "tests/support/glb_reader.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using headless::LogLine;
using test_support::GltfFile;

// Small scenes that together bring up every kind of item; the format's saver by the extension.
constexpr const char* kOutputs[] = {"nodes.glb",       "selection.gltf", "meshes.glb",       "tangents.gltf",
                                    "materials.glb",   "textures.glb",   "animation.glb",    "skin_graph.glb",
                                    "skin_groups.glb", "actions.gltf",   "active_action.glb"};

struct FaultyRun {
  bool hasSaver = false;
  zyresult result = ZYe_OK;
  std::size_t calls = 0;
  std::vector<LogLine> log;
};

enum class ValueKeys { Offered, Hidden };

// Loads the module and saves, with call `k` of both together failing, none for 0.
FaultyRun SaveWithFault(const headless::SceneData& scene, const fs::path& output, std::size_t k,
                        ValueKeys keys = ValueKeys::Offered) {
  FaultyRun run;
  {
    headless::Host inner(scene);
    inner.SetLogSink([&](const LogLine& line) { run.log.push_back(line); });
    {
      test_support::FailingHost host(inner, *inner.Scene());
      IZyScene* target = host.Scene();
      if (keys == ValueKeys::Hidden) host.HideInterface(IZyValueKeys::kId);
      host.FailCall(k);
      {
        const test_support::LoadedModule module(host);
        const CountedRef<IZySaver> saver =
            module.NewSaver(output.extension() == ".gltf" ? "gltf.gltf" : "gltf.bin");
        run.hasSaver = saver.Raw() != nullptr;
        if (run.hasSaver) run.result = saver.Raw()->Save(target, test_support::HostPath(output).c_str(), nullptr);
      }
      run.calls = host.Calls();
      EXPECT_TRUE(host.AllReleased());
    }
    EXPECT_EQ(inner.LiveObjects(), 0u);
  }
  return run;
}

// Whatever is missing, what is there fits together.
void CheckPrimitive(const GltfFile& file, const rapidjson::Value& primitive) {
  const auto countOf = [&](const rapidjson::Value& accessor) {
    return file.json["accessors"][accessor.GetUint()]["count"].GetUint();
  };
  const rapidjson::Value& attributes = primitive["attributes"];
  const std::uint32_t vertices = countOf(attributes["POSITION"]);
  for (const auto& attribute : attributes.GetObject()) EXPECT_EQ(countOf(attribute.value), vertices);
  for (const double index : AccessorValues(file, primitive["indices"].GetUint())) EXPECT_LT(index, vertices);
  EXPECT_LT(primitive["material"].GetUint(), file.json["materials"].Size());
}

// A save whose file could be written ends in one of three ways: with success, with a code that the frame kept
// while the save went on to its end, or before anything was done, with a scene that couldn't be bound.
void CheckRun(const FaultyRun& run, const fs::path& output) {
  ASSERT_TRUE(run.hasSaver);
  EXPECT_TRUE(test_support::TextsOf(run.log, LogLine::Kind::ErrorDialog).empty());
  if (run.result == ZYe_NO_FRAME) {
    EXPECT_TRUE(run.log.empty());
    EXPECT_FALSE(fs::exists(output));
    return;
  }
  const zyresult results[] = {ZYe_OK, ZYe_FAILED, ZYe_NO_INTERFACE};
  EXPECT_NE(std::count(std::begin(results), std::end(results), run.result), 0) << run.result;
  try {
    const GltfFile file = test_support::ReadGltfFile(output);
    for (const auto& mesh : file.json["meshes"].GetArray())
      for (const auto& primitive : mesh["primitives"].GetArray()) CheckPrimitive(file, primitive);
  } catch (const std::runtime_error& fault) {
    FAIL() << fault.what();
  }
}

headless::SceneData GoldenScene(const fs::path& output) {
  readers::ReadReport report;
  return readers::ReadScene(fs::path(VORNEL_SOURCE_DIR) / "tests" / "golden" / output.stem().concat(".orvo"),
                            report);
}

void Sweep(const char* name, ValueKeys keys) {
  const test_support::TempDirectory directory;
  const fs::path output = directory.Path() / name;
  const headless::SceneData scene = GoldenScene(output);
  const FaultyRun sound = SaveWithFault(scene, output, 0, keys);
  EXPECT_EQ(sound.result, ZYe_OK);
  std::size_t changed = 0;
  for (std::size_t k = 0; k <= sound.calls && !testing::Test::HasFailure(); ++k) {
    SCOPED_TRACE("call " + std::to_string(k));
    fs::remove(output);
    const FaultyRun run = SaveWithFault(scene, output, k, keys);
    CheckRun(run, output);
    changed += run.result != ZYe_OK || run.log.size() != sound.log.size();
  }
  EXPECT_GT(changed, 0u) << "no call failed";
}

class FaultSweep : public testing::TestWithParam<const char*> {};

TEST_P(FaultSweep, EveryCallMayFail) { Sweep(GetParam(), ValueKeys::Offered); }

TEST(HostWithoutValueKeys, EveryCallMayFail) { Sweep("meshes.glb", ValueKeys::Hidden); }

INSTANTIATE_TEST_SUITE_P(Scenes, FaultSweep, testing::ValuesIn(kOutputs),
                         [](const auto& scene) { return fs::path(scene.param).stem().string(); });

}  // namespace
