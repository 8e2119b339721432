// The exporter's share of a save: the scan of a mesh, the fold of its corners, and a whole save.
#include "bench/bench_scenes.h"
#include "geometry/vertex_fold.h"
#include "headless/host.h"
#include "saver/module.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <benchmark/benchmark.h>

namespace {

using test_support::LoadedModule;

void CountCorners(benchmark::State& state, std::int64_t triangles) {
  state.counters["corners"] =
      benchmark::Counter(static_cast<double>(3 * triangles), benchmark::Counter::kIsIterationInvariantRate);
}

// Only the geometry: without the writing, through a path that can't be opened.
void SaveWaves(benchmark::State& state, bool write) {
  const test_support::TempDirectory directory;
  headless::Host host(bench::WavyScene(state.range(0)));
  const LoadedModule module(host);
  const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
  const std::string path =
      test_support::HostPath(write ? directory.Path() / "waves.glb" : directory.Path() / "none" / "waves.glb");
  for (auto _ : state) benchmark::DoNotOptimize(saver.Raw()->Save(host.Scene(), path.c_str(), nullptr));
  CountCorners(state, state.range(0));
}

void SaveWithoutFile(benchmark::State& state) { SaveWaves(state, false); }
void Save(benchmark::State& state) { SaveWaves(state, true); }

void Fold(benchmark::State& state) {
  const headless::MeshData mesh = bench::WavyMesh(state.range(0));
  const std::vector<std::uint32_t> points(mesh.polygonPoints.begin(), mesh.polygonPoints.end());
  std::vector<std::uint32_t> triangles;
  for (std::uint32_t triangle = 0; triangle < mesh.PolygonCount(); ++triangle) triangles.push_back(triangle);
  const CornerTables tables{points, mesh.PointCount(), {points, points}};
  for (auto _ : state) benchmark::DoNotOptimize(FoldCorners(triangles, tables).indices.data());
  CountCorners(state, state.range(0));
}

BENCHMARK(Fold)->Arg(100'000)->Arg(1'000'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithoutFile)->Arg(100'000)->Arg(1'000'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->Arg(100'000)->Arg(1'000'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
