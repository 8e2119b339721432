// Scenes of many items: making the host, saving the nodes, and following links from channel to channel.
#include "headless/host.h"
#include "host/user_scene.h"
#include "host/user_services.h"
#include "saver/module.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>

namespace {

using namespace headless;

constexpr int kDepth = 1000;

ItemData& At(SceneData& scene, ItemIndex item) { return scene.items[static_cast<std::size_t>(item)]; }

std::shared_ptr<const MeshData> Triangle() {
  MeshData mesh;
  mesh.points = std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0};
  mesh.polygonStarts = std::vector<std::uint32_t>{0, 3};
  mesh.polygonPoints = std::vector<std::uint32_t>{0, 1, 2};
  mesh.material.texts = {"Default"};
  mesh.material.perPolygon = std::vector<std::uint32_t>{0};
  return std::make_shared<const MeshData>(std::move(mesh));
}

// Chains of nodes, each moved against the one above it, with a triangle that all share.
SceneData NodeScene(std::int64_t nodes) {
  SceneData scene = MakeScene();
  const auto mesh = Triangle();
  ItemIndex parent = -1;
  for (std::int64_t node = 0; node < nodes; ++node) {
    if (node % kDepth == 0) parent = -1;
    const ItemIndex item = AddItem(scene, "mesh", "Node" + std::to_string(node), parent);
    At(scene, item).mesh = mesh;
    SetChannel(At(scene, AddTransform(scene, item, "translation", "Position")), "pos.X", 0.5);
    parent = item;
  }
  scene.userValues["sceneio.gltf.save.exportType"] = 0;
  return scene;
}

void CountNodes(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * state.range(0)); }

void MakeHost(benchmark::State& state) {
  const SceneData scene = NodeScene(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    SceneData copy = scene;
    state.ResumeTiming();
    const Host host(std::move(copy));
    benchmark::DoNotOptimize(host.LiveObjects());
  }
  CountNodes(state);
}

void SaveNodes(benchmark::State& state) {
  const test_support::TempDirectory directory;
  Host host(NodeScene(state.range(0)));
  const test_support::LoadedModule module(host);
  const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
  const std::string path = test_support::HostPath(directory.Path() / "nodes.glb");
  for (auto _ : state) benchmark::DoNotOptimize(saver.Raw()->Save(host.Scene(), path.c_str(), nullptr));
  CountNodes(state);
}

// All channels of a row of links, at one time after the other.
void ReadLinks(benchmark::State& state) {
  SceneData scene = MakeScene();
  const ItemIndex item = AddItem(scene, "locator", "driven");
  const auto length = static_cast<std::int32_t>(state.range(0));
  const auto first = static_cast<std::int32_t>(At(scene, item).channels.size());
  for (std::int32_t place = 0; place <= length; ++place) {
    ChannelData& channel = At(scene, item).channels.emplace_back();
    channel.name = "c" + std::to_string(place);
    channel.setup = 0.0;
    if (place > 0) scene.channelLinks.push_back({{item, first + place - 1}, {item, first + place}, 1, 1});
  }
  At(scene, item).channels[static_cast<std::size_t>(first)].extras.Make().envelope =
      EnvelopeData{{{0, 0}, {100, 1}}};
  Host host(std::move(scene));
  SetZyHost(&host);
  {
    CZyUser_Scene asked;
    CZyUser_Item driven;
    asked.Set(host.Scene());
    asked.ItemByIndex(kAllItems, static_cast<std::uint32_t>(item), driven);
    double time = 0;
    for (auto _ : state) {
      CZyUser_ChannelRead read;
      asked.Channels(nullptr, time += 0.01, read);
      double value = 0;
      for (std::int32_t place = length; place > 0; --place) read.Double(driven, first + place, value);
      benchmark::DoNotOptimize(value);
    }
  }
  SetZyHost(nullptr);
  CountNodes(state);
}

BENCHMARK(MakeHost)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveNodes)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadLinks)->Arg(1'000)->Arg(8'000)->Arg(64'000)->Unit(benchmark::kMicrosecond);

}  // namespace
