// The exporter's share of a save, from SaveTarget to the closed file, beside the least work that gives such a
// file.
#include "bench/bench_scenes.h"
#include "bench/floor_mesh.h"
#include "headless/host.h"
#include "saver/module.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <benchmark/benchmark.h>

namespace {

using test_support::LoadedModule;

void CountCorners(benchmark::State& state) {
  state.counters["corners"] =
      benchmark::Counter(static_cast<double>(3 * state.range(0)), benchmark::Counter::kIsIterationInvariantRate);
}

// Arguments: triangles, UV maps, colour maps.
void Save(benchmark::State& state) {
  const test_support::TempDirectory directory;
  headless::Host host(bench::WavyScene(state.range(0), {state.range(1), state.range(2)}));
  const LoadedModule module(host);
  const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
  const std::string path = test_support::HostPath(directory.Path() / "waves.glb");
  for (auto _ : state) benchmark::DoNotOptimize(saver.Raw()->Save(host.Scene(), path.c_str(), nullptr));
  CountCorners(state);
}

// Arguments: triangles.
void Floor(benchmark::State& state) {
  const test_support::TempDirectory directory;
  const bench::FloorMesh mesh = bench::FloorGrid(state.range(0));
  for (auto _ : state) bench::WriteFolded(mesh, (directory.Path() / "waves.glb").c_str());
  CountCorners(state);
}

BENCHMARK(Floor)->Arg(100'000)->Arg(1'000'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)
    ->Args({100'000, 1, 0})
    ->Args({1'000'000, 1, 0})
    ->Args({5'000'000, 1, 0})
    ->Args({1'000'000, 0, 0})
    ->Args({1'000'000, 2, 0})
    ->Args({1'000'000, 3, 0})
    ->Args({1'000'000, 1, 1})
    ->Args({1'000'000, 1, 2})
    ->Unit(benchmark::kMillisecond);

}  // namespace
