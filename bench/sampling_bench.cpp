// The animation step of a save: joints, samples and clips against time.

#include "tests/support/motion_scene.h"

#include <benchmark/benchmark.h>

namespace {

using namespace motion;

// A limb every ten joints, all keyed on the three paths, sampled 100 times a second.
SceneData RigScene(std::int64_t joints, std::int64_t samples, std::int64_t clips) {
  SceneData scene;
  const ItemIndex sceneItem = AddSceneItem(scene, 0, static_cast<double>(samples - 1) / 100, 100);
  const ItemIndex actor = clips == 0 ? -1 : AddActor(scene, sceneItem, "Actor");
  std::vector<ItemIndex> clipItems;
  for (std::int64_t clip = 0; clip < clips; ++clip)
    clipItems.push_back(AddClip(scene, actor, "clip " + std::to_string(clip)));
  ItemIndex parent = -1;
  for (std::int64_t joint = 0; joint < joints; ++joint) {
    const Mover mover = AddMover(scene, "joint " + std::to_string(joint), joint % 10 == 0 ? -1 : parent);
    parent = mover.item;
    const std::pair<ItemIndex, Axis> keyed[] = {
        {mover.position, Axis::X}, {mover.rotation, Axis::Y}, {mover.scale, Axis::Z}};
    for (const auto& [transform, axis] : keyed) {
      if (clips == 0) Key(scene, transform, axis, Line(0, 0.5, 60, 2.5));
      for (const ItemIndex clip : clipItems)
        KeyInClip(scene, clip, Component(scene, transform, axis), Line(0, 0.5, 60, 2.5));
    }
  }
  scene.userValues["sceneio.gltf.save.exportActionType"] = clips == 0 ? 0 : 1;
  return scene;
}

// Arguments: joints, samples, clips (0: the scene itself).
void Sampling(benchmark::State& bench) {
  const SceneData scene = RigScene(bench.range(0), bench.range(1), bench.range(2));
  std::size_t keys = 0;
  for (auto _ : bench) {
    bench.PauseTiming();
    {
      const Save save(scene);
      bench.ResumeTiming();
      ExportAnimation(*save.state);
      bench.PauseTiming();
      keys = 0;
      for (const auto& animation : save.Animations())
        for (const auto& sampler : animation->samplers) keys += sampler->keyframes.size();
    }
    bench.ResumeTiming();
  }
  bench.counters["keys"] = static_cast<double>(keys);
  bench.counters["keys/s"] =
      benchmark::Counter(static_cast<double>(keys), benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(Sampling)
    ->Unit(benchmark::kMillisecond)
    ->Args({200, 100, 0})
    ->Args({200, 1000, 0})
    ->Args({200, 10000, 0})
    ->Args({20, 10000, 0})
    ->Args({100, 100, 1})
    ->Args({100, 100, 51});

}  // namespace
