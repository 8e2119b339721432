// Skins and animations under a host of which one call fails, for each call in turn.

#include "tests/support/failing_host.h"
#include "tests/support/glb_reader.h"
#include "tests/support/motion_scene.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace motion;
using test_support::GltfFile;

void AddQuad(SceneData& scene, ItemIndex item) {
  auto mesh = std::make_shared<headless::MeshData>();
  mesh->points = std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0};
  mesh->polygonStarts = std::vector<std::uint32_t>{0, 3};
  mesh->polygonPoints = std::vector<std::uint32_t>{0, 1, 2};
  mesh->material.texts = {"Skin"};
  mesh->material.perPolygon = std::vector<std::uint32_t>{0};
  headless::MeshMapData map;
  map.type = kMapWeight;
  map.name = "w";
  map.values = std::vector<float>{1, 0.5F, 0.25F};
  map.pointValues = std::vector<std::uint32_t>{0, 1, 2};
  mesh->maps = {map};
  At(scene, item).mesh = std::move(mesh);
}

ItemIndex AddDeformer(SceneData& scene, const Mover& joint) {
  const ItemIndex deformer = headless::AddItem(scene, "genInfluence", "of " + At(scene, joint.item).name);
  At(scene, deformer).deformationItem = joint.item;
  At(scene, deformer).weightMap = "w";
  headless::SetChannel(At(scene, deformer), "type", 1);
  headless::SetChannel(At(scene, deformer), "name", std::string("w"));
  return deformer;
}

// Both kinds of deformers, an actor with two clips, a link and an item without node, all as small as can be.
SceneData FaultScene() {
  SceneData scene;
  const ItemIndex sceneItem = AddSceneItem(scene, 0, 1, 1);
  const Mover hip = AddMover(scene, "hip");
  const Mover knee = AddMover(scene, "knee", hip.item);
  const ItemIndex grouped = AddMover(scene, "grouped", -1, "mesh").item;
  const ItemIndex linked = AddMover(scene, "linked", -1, "mesh").item;
  AddQuad(scene, grouped);
  AddQuad(scene, linked);
  const ItemIndex group = headless::AddItem(scene, "deformGroup", "Leg");
  const std::vector<ItemIndex> deformers = {AddDeformer(scene, hip), AddDeformer(scene, knee)};
  At(scene, group).deformGroup->meshes = {grouped};
  At(scene, group).deformGroup->deformers = deformers;
  scene.graphs["deformers"].emplace_back(deformers[1], linked);

  const ItemIndex lamp = headless::AddItem(scene, "light", "lamp");
  headless::SetChannel(At(scene, lamp), "power", 1.0);
  Channel(scene, NamedChannel(scene, lamp, "power")).setupEnvelope = Line(0, 0, 1, 1);
  headless::ChannelLink link;
  link.from = Component(scene, hip.rotation, Axis::X);
  link.to = Component(scene, knee.rotation, Axis::X);
  scene.channelLinks.push_back(link);

  const ItemIndex actor = AddActor(scene, sceneItem, "actor");
  for (const char* name : {"walk", "run"}) {
    const ItemIndex clip = AddClip(scene, actor, name, "tag_");
    KeyInClip(scene, clip, Component(scene, hip.rotation, Axis::X), Line(0, 0, 1, 1));
  }
  At(scene, actor).group->items.push_back(lamp);
  At(scene, actor).group->channels.push_back(Component(scene, hip.rotation, Axis::X));
  scene.userValues["sceneio.gltf.save.exportActionType"] = 1;
  return scene;
}

// What holds for any file: rows for each vertex, joints that exist, finite keys.
void CheckFile(const GltfFile& file) {
  const auto count = [&](const rapidjson::Value& accessor) {
    return file.json["accessors"][accessor.GetUint()]["count"].GetUint();
  };
  for (const auto& mesh : file.json["meshes"].GetArray())
    for (const auto& primitive : mesh["primitives"].GetArray())
      for (const auto& attribute : primitive["attributes"].GetObject())
        EXPECT_EQ(count(attribute.value), count(primitive["attributes"]["POSITION"]))
            << attribute.name.GetString();
  if (!file.json.HasMember("animations")) return;
  for (const auto& animation : file.json["animations"].GetArray()) {
    for (const auto& channel : animation["channels"].GetArray())
      EXPECT_LT(channel["target"]["node"].GetUint(), file.json["nodes"].Size());
    for (const auto& sampler : animation["samplers"].GetArray()) {
      EXPECT_EQ(count(sampler["input"]), count(sampler["output"]));
      for (const double value : AccessorValues(file, sampler["output"].GetUint()))
        EXPECT_TRUE(std::isfinite(value));
    }
  }
}

// Saves with call `k` failing, none for 0. Returns the number of calls.
std::size_t SaveWithFault(const SceneData& scene, const std::filesystem::path& output, std::size_t k) {
  headless::Host inner(scene);
  test_support::FailingHost host(inner, *inner.Scene());
  {
    const test_support::LoadedModule module(host);
    const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
    host.FailCall(k);
    saver.Raw()->Save(host.Scene(), test_support::HostPath(output).c_str(), nullptr);
  }
  const std::size_t calls = host.Calls();
  host.FailCall(0);
  EXPECT_TRUE(host.AllReleased());
  return calls;
}

TEST(MotionFaults, EveryCallMayFail) {
  const test_support::TempDirectory directory;
  const std::filesystem::path output = directory.Path() / "fault.glb";
  const SceneData scene = FaultScene();
  const std::size_t calls = SaveWithFault(scene, output, 0);
  const GltfFile whole = test_support::ReadGltfFile(output);
  ASSERT_EQ(whole.json["skins"].Size(), 2u);
  ASSERT_EQ(whole.json["animations"].Size(), 2u);
  EXPECT_STREQ(whole.json["animations"][0]["name"].GetString(), "tag_walk");
  for (std::size_t k = 1; k <= calls && !HasFailure(); ++k) {
    SCOPED_TRACE("call " + std::to_string(k));
    std::filesystem::remove(output);
    SaveWithFault(scene, output, k);
    // A frame that isn't bound ends the save before a file is begun.
    if (std::filesystem::exists(output)) CheckFile(test_support::ReadGltfFile(output));
  }
}

}  // namespace
