// Joints, weights and inverse bind matrices from both kinds of deformers.

#include "geometry/skins.h"

#include "tests/support/motion_scene.h"

#include <gmock/gmock.h>

namespace {

using namespace motion;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Pairs = std::vector<std::pair<std::uint32_t, float>>;  // deformer or point, weight

std::shared_ptr<const headless::MeshData> MakeMesh(std::vector<headless::MeshMapData> maps = {}) {
  auto mesh = std::make_shared<headless::MeshData>();
  mesh->points = std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0, 2, 1, 0};
  mesh->pointIds = std::vector<std::uint64_t>{60, 50, 40, 30, 20, 10};
  mesh->polygonStarts = std::vector<std::uint32_t>{0, 4, 8};
  mesh->polygonPoints = std::vector<std::uint32_t>{0, 1, 2, 3, 1, 4, 5, 2};
  mesh->maps = std::move(maps);
  return mesh;
}

// A weight map that holds values at the given points.
headless::MeshMapData WeightMap(const std::string& name, const Pairs& weights) {
  headless::MeshMapData map;
  map.type = kMapWeight;
  map.name = name;
  std::vector<float> values;
  std::vector<std::uint32_t> places(6, headless::kNone);
  for (const auto& [point, weight] : weights) {
    places[point] = static_cast<std::uint32_t>(values.size());
    values.push_back(weight);
  }
  map.values = std::move(values);
  map.pointValues = std::move(places);
  return map;
}

headless::RecordedInfluences Influences(const std::vector<Pairs>& perPoint) {
  std::vector<std::uint32_t> starts = {0}, deformers;
  std::vector<float> weights;
  for (std::size_t point = 0; point < 6; ++point) {
    const Pairs pairs = point < perPoint.size() ? perPoint[point] : Pairs();
    for (const auto& [deformer, weight] : pairs) {
      deformers.push_back(deformer);
      weights.push_back(weight);
    }
    starts.push_back(static_cast<std::uint32_t>(deformers.size()));
  }
  headless::RecordedInfluences influences;
  influences.starts = std::move(starts);
  influences.deformers = std::move(deformers);
  influences.weights = std::move(weights);
  return influences;
}

// A mesh "body" and a chain of joints "j0", "j1", ..., each a unit along X from the one before.
struct SkinScene {
  SceneData scene;
  ItemIndex body = -1;
  std::vector<Mover> joints;

  explicit SkinScene(std::size_t jointCount, std::shared_ptr<const headless::MeshData> mesh = MakeMesh()) {
    AddSceneItem(scene, 0, 1, 1);
    body = AddMover(scene, "body", -1, "mesh").item;
    At(scene, body).mesh = std::move(mesh);
    for (std::size_t place = 0; place < jointCount; ++place) {
      const ItemIndex parent = joints.empty() ? -1 : joints.back().item;
      joints.push_back(AddMover(scene, "j" + std::to_string(place), parent));
      Place(scene, joints.back().position, 1, 0, 0);
    }
  }

  ItemIndex AddDeformer(const std::string& name, ItemIndex driver) {
    const ItemIndex deformer = headless::AddItem(scene, "genInfluence", name);
    At(scene, deformer).deformationItem = driver;
    return deformer;
  }
  // A group with a deformer for each joint.
  ItemIndex AddGroup(const std::string& name, std::vector<ItemIndex> meshes,
                     std::vector<std::optional<headless::RecordedInfluences>> influences) {
    const ItemIndex group = headless::AddItem(scene, "deformGroup", name);
    std::vector<ItemIndex> deformers;
    for (const Mover& joint : joints)
      deformers.push_back(AddDeformer("of " + At(scene, joint.item).name, joint.item));
    auto& data = *At(scene, group).deformGroup;
    data.meshes = std::move(meshes);
    data.deformers = std::move(deformers);
    data.influences = std::move(influences);
    return group;
  }
  // A deformer in the graph, reading the map of the name.
  ItemIndex LinkDeformer(const std::string& name, ItemIndex driver, const std::string& map,
                         std::int32_t type = 1) {
    const ItemIndex deformer = AddDeformer(name, driver);
    headless::SetChannel(At(scene, deformer), "type", type);
    headless::SetChannel(At(scene, deformer), "name", map);
    scene.graphs["deformers"].emplace_back(deformer, body);
    return deformer;
  }
};

// Makes the skins of a scene.
struct SkinSave : Save {
  explicit SkinSave(SceneData data) : Save(std::move(data)) {
    for (const auto& [item, mesh] : state->meshesByItem) CreateDeformers(*state, mesh, item);
  }
  const std::vector<std::unique_ptr<GltfSkin>>& Skins() const { return state->gltfScene->meshes.at(0)->skins; }
};

std::vector<std::string> JointNames(const GltfSkin& skin) {
  std::vector<std::string> names;
  for (const GltfNode* joint : skin.joints) names.push_back(joint->name);
  return names;
}

Pairs InfluencesOf(const GltfSkin& skin, std::size_t point) {
  Pairs pairs;
  for (std::uint32_t place = 0; place < skin.influenceCount.at(point); ++place)
    pairs.emplace_back(static_cast<std::uint32_t>(skin.jointIndices[point][place]),
                       static_cast<float>(skin.jointWeights[point][place]));
  return pairs;
}

constexpr const char* kOverflow =
    "Warning - Skin: %s Node: body has more then four joints affecting at least one vertex. This skin may not "
    "properly display animation for some vertices.";

std::string Overflow(const std::string& skin) {
  std::string text = kOverflow;
  return text.replace(text.find("%s"), 2, skin);
}

TEST(GroupSkin, TakesJointsAndWeights) {
  SkinScene s(2);
  // The bind pose is that of the setup, whatever the edit layer holds.
  Channel(s.scene, Component(s.scene, s.joints[0].position, Axis::Y)).extras.Make().edit = 50.0;
  s.AddGroup("Arm", {s.body}, {Influences({{{1, 0.5F}, {0, 2}}, {}, {{1, 0}}, {{0, 1}}})});
  const SkinSave save(std::move(s.scene));
  ASSERT_EQ(save.Skins().size(), 1u);
  const GltfSkin& skin = *save.Skins()[0];
  EXPECT_EQ(skin.name, "Arm_Skin");
  EXPECT_THAT(JointNames(skin), ElementsAre("j0", "j1"));
  EXPECT_EQ(InfluencesOf(skin, 0), (Pairs{{0, 2}, {1, 0.5F}}));  // joint by joint, not normalised
  EXPECT_THAT(InfluencesOf(skin, 1), IsEmpty());
  EXPECT_EQ(InfluencesOf(skin, 2), (Pairs{{1, 0}}));
  EXPECT_EQ(InfluencesOf(skin, 3), (Pairs{{0, 1}}));
  ASSERT_EQ(skin.inverseBindMatrices.size(), 2u);
  for (std::size_t joint = 0; joint < 2; ++joint) {
    const Matrix4& inverse = skin.inverseBindMatrices[joint];
    EXPECT_THAT((std::vector<double>{inverse(3, 0), inverse(3, 1), inverse(3, 2)}),
                ElementsAre(-1.0 - static_cast<double>(joint), 0, 0));
  }
  EXPECT_EQ(save.CountLog("Creating deformers for mesh:body"), 1u);
  EXPECT_EQ(save.CountLog("   deformer:j0 ident:"), 1u);
  EXPECT_EQ(save.CountLog(" weights:2"), 2u);
  EXPECT_EQ(save.state->log.WarningCount() + save.state->log.ErrorCount(), 0u);
}

TEST(GroupSkin, FirstFourJointsStay) {
  SkinScene s(7);
  Pairs heavyLast;
  for (std::uint32_t joint = 0; joint < 4; ++joint) heavyLast.emplace_back(joint, 0.025F);
  heavyLast.emplace_back(6, 0.9F);
  s.AddGroup("Arm", {s.body}, {Influences({heavyLast, {{6, 1}}, {}, {}})});
  const SkinSave save(std::move(s.scene));
  const GltfSkin& skin = *save.Skins().at(0);
  EXPECT_EQ(InfluencesOf(skin, 0), (Pairs{{0, 0.025F}, {1, 0.025F}, {2, 0.025F}, {3, 0.025F}}));
  EXPECT_EQ(InfluencesOf(skin, 1), (Pairs{{6, 1}}));
  EXPECT_EQ(save.CountLog(Overflow("Arm_Skin")), 1u);
  EXPECT_EQ(save.state->log.WarningCount(), 1u);
}

TEST(GroupSkin, EachNamingMakesASkin) {
  SkinScene s(1);
  const ItemIndex other = AddMover(s.scene, "other", -1, "mesh").item;
  const auto first = Influences({{{0, 1}}, {}, {}, {}}), second = Influences({{{0, 2}}, {}, {}, {}});
  s.AddGroup("A", {s.body}, {first});
  s.AddGroup("B", {other, s.body, s.body}, {std::nullopt, first, second});
  const SkinSave save(std::move(s.scene));
  ASSERT_EQ(save.Skins().size(), 3u);
  for (const auto& skin : save.Skins()) EXPECT_EQ(skin->name, "body_Skin");
  // The last place found, 2, serves the group "A" too, which has no such mesh.
  EXPECT_THAT(InfluencesOf(*save.Skins()[0], 0), IsEmpty());
  EXPECT_EQ(InfluencesOf(*save.Skins()[1], 0), (Pairs{{0, 2}}));
  EXPECT_EQ(InfluencesOf(*save.Skins()[2], 0), (Pairs{{0, 2}}));
}

TEST(GroupSkin, PlaceOfALargerMeshHasRoom) {
  SkinScene s(1);
  auto large = std::make_shared<headless::MeshData>(*MakeMesh());
  large->points = std::vector<float>(24, 0.0F);
  large->pointIds = std::vector<std::uint64_t>{60, 50, 40, 30, 20, 10, 8, 9};
  const ItemIndex other = AddMover(s.scene, "other", -1, "mesh").item;
  At(s.scene, other).mesh = std::move(large);
  s.AddGroup("A", {s.body, other}, {std::nullopt, Influences({Pairs(8, {0, 1})})});
  s.AddGroup("B", {other, s.body}, {});
  const SkinSave save(std::move(s.scene));
  // The last place found, 1, is that of the other mesh in "A", for whose eight points the host may give more
  // weights than the body has points.
  EXPECT_EQ(save.CountLog(" weights:8"), 1u);
  EXPECT_EQ(InfluencesOf(*save.Skins().at(0), 0), Pairs(4, {0, 1}));
}

TEST(GroupSkin, StopsAtAJointThatIsNoNode) {
  SkinScene s(3);
  s.AddGroup("Arm", {s.body}, {Influences({{{0, 1}, {1, 1}, {2, 1}}, {}, {}, {}})});
  s.scene.userValues["sceneio.gltf.save.exportType"] = 1;
  s.scene.selection = {s.body, s.joints[0].item, s.joints[2].item};
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(JointNames(*save.Skins().at(0)), ElementsAre("j0"));
  EXPECT_EQ(InfluencesOf(*save.Skins()[0], 0), (Pairs{{0, 1}}));
  EXPECT_EQ(save.CountLog("Failed to find node:j1"), 1u);
  EXPECT_EQ(save.state->log.ErrorCount(), 1u);
}

TEST(GroupSkin, PassesOverDeformersWithoutDriver) {
  SkinScene s(2);
  const ItemIndex group = s.AddGroup("Arm", {s.body}, {Influences({{{0, 1}, {1, 1}}, {}, {}, {}})});
  At(s.scene, At(s.scene, group).deformGroup->deformers[0]).deformationItem = -1;
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(JointNames(*save.Skins().at(0)), ElementsAre("j1"));
  EXPECT_EQ(InfluencesOf(*save.Skins()[0], 0), (Pairs{{0, 1}}));
}

TEST(GroupSkin, SingularBindMatrixStaysAsItIs) {
  SkinScene s(1);
  Place(s.scene, s.joints[0].scale, 0, 1, 1);
  s.AddGroup("Arm", {s.body}, {Influences({{}, {}, {}, {}})});
  const SkinSave save(std::move(s.scene));
  const Matrix4& matrix = save.Skins().at(0)->inverseBindMatrices.at(0);
  EXPECT_EQ(matrix(0, 0), 0);
  EXPECT_EQ(matrix(3, 0), 1);  // not -1: nothing was inverted
}

TEST(GroupSkin, ReadsWeightMaps) {
  SkinScene s(2, MakeMesh({WeightMap("w0", {{0, 0.25F}, {3, 1}}), WeightMap("w1", {{0, 0.75F}})}));
  const ItemIndex group = s.AddGroup("Arm", {s.body}, {});
  const auto& deformers = At(s.scene, group).deformGroup->deformers;
  At(s.scene, deformers[0]).extras.Make().weightMap = "w0";
  At(s.scene, deformers[1]).extras.Make().weightMap = "w1";
  const SkinSave save(std::move(s.scene));
  EXPECT_EQ(InfluencesOf(*save.Skins().at(0), 0), (Pairs{{0, 0.25F}, {1, 0.75F}}));
  EXPECT_EQ(InfluencesOf(*save.Skins()[0], 3), (Pairs{{0, 1}}));
  EXPECT_THAT(InfluencesOf(*save.Skins()[0], 1), IsEmpty());
}

TEST(GraphSkin, TakesLinkedDeformers) {
  SkinScene s(3, MakeMesh({WeightMap("left", {{0, 0.5F}, {2, 3}}), WeightMap("right", {{2, 1}}),
                           WeightMap("", {{1, 1}})}));
  s.LinkDeformer("B", s.joints[1].item, "left");
  s.LinkDeformer("free", -1, "right");  // drives nothing
  s.LinkDeformer("A", s.joints[0].item, "right");
  s.LinkDeformer("B", s.joints[2].item, "right");        // the name is taken
  s.LinkDeformer("whole", s.joints[2].item, "left", 0);  // not by a map
  s.LinkDeformer("lost", s.joints[2].item, "nowhere");
  const SkinSave save(std::move(s.scene));
  ASSERT_EQ(save.Skins().size(), 1u);
  const GltfSkin& skin = *save.Skins()[0];
  EXPECT_EQ(skin.name, "body_Skin");
  EXPECT_THAT(JointNames(skin), ElementsAre("j1", "j0", "j2", "j2"));
  EXPECT_EQ(skin.inverseBindMatrices.size(), 4u);
  EXPECT_EQ(InfluencesOf(skin, 0), (Pairs{{0, 0.5F}}));
  EXPECT_THAT(InfluencesOf(skin, 1), IsEmpty());
  EXPECT_EQ(InfluencesOf(skin, 2), (Pairs{{0, 3}, {1, 1}}));
  EXPECT_EQ(skin.influenceCount.size(), 6u);
  for (const char* line :
       {"   deformers:4", "   name:\"B\" loc:j1 map:\"left\" count:2",
        "   name:\"A\" loc:j0 map:\"right\" count:1", "   name:\"whole\" loc:j2 map:\"\" count:0",
        "   name:\"lost\" loc:j2 map:\"nowhere\" count:0"})
    EXPECT_EQ(save.CountLog(line), 1u) << line;
}

TEST(GraphSkin, WarnsForEachJointThatIsDropped) {
  SkinScene s(6, MakeMesh({WeightMap("w", {{1, 0.1F}})}));
  for (const Mover& joint : s.joints) s.LinkDeformer("of " + At(s.scene, joint.item).name, joint.item, "w");
  const SkinSave save(std::move(s.scene));
  EXPECT_EQ(InfluencesOf(*save.Skins().at(0), 1).size(), 4u);
  EXPECT_EQ(save.CountLog(Overflow("body_Skin")), 2u);
}

TEST(GraphSkin, MissingNodeMeansNoSkin) {
  SkinScene s(2, MakeMesh({WeightMap("w", {{1, 1}})}));
  s.LinkDeformer("A", s.joints[0].item, "w");
  s.LinkDeformer("B", s.joints[1].item, "w");
  s.scene.userValues["sceneio.gltf.save.exportType"] = 1;
  s.scene.selection = {s.body, s.joints[0].item};
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(save.Skins(), IsEmpty());
  EXPECT_EQ(save.CountLog("Failed to find node:j1 (for skin deformer)"), 1u);
}

TEST(GraphSkin, WithoutUsableJointStillMakesItsSkin) {
  SkinScene s(0);
  s.LinkDeformer("free", -1, "w");
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(save.Skins().at(0)->joints, IsEmpty());
  EXPECT_EQ(save.Skins()[0]->influenceCount.size(), 6u);
}

TEST(GraphSkin, JointsThatWereNotScannedHaveNoBindMatrix) {
  SkinScene s(2, MakeMesh({WeightMap("w", {{1, 1}})}));
  s.LinkDeformer("A", s.joints[1].item, "w");
  s.scene.userValues["sceneio.gltf.save.exportType"] = 2;  // scans what is selected, not what hangs below it
  s.scene.selection = {s.body, s.joints[0].item};
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(JointNames(*save.Skins().at(0)), ElementsAre("j1"));
  EXPECT_THAT(save.Skins()[0]->inverseBindMatrices, IsEmpty());
}

TEST(Skins, NoDeformersNoSkin) {
  SkinScene s(1);
  s.AddGroup("of another mesh", {}, {});
  const SkinSave save(std::move(s.scene));
  EXPECT_THAT(save.Skins(), IsEmpty());
  EXPECT_EQ(save.state->log.WarningCount() + save.state->log.ErrorCount(), 0u);
}

}  // namespace
