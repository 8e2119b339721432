// The node tree: who gets a node, in which order, with which matrix, and what is known of its transforms.
#include "saver/transform_analysis.h"
#include "tests/support/scan_rig.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using headless::ItemIndex;
using headless::LogLine;
using namespace test_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(Nodes, TypesAndNamesDecideWhatIsExported) {
  struct Row {
    const char* type;
    const char* name;
    const char* tree;
  };
  const Row rows[] = {
      {"locator", "P", "R(P(K))"},
      {"groupLocator", "P", "R(P(K))"},
      {"replicator", "P", "R(P(K))"},
      {"mesh", "P", "R(P(K))"},
      {"mesh", "morphgroup", "R(morphgroup(K))"},
      {"meshInst", "P", "R(P(K))"},
      {"triSurf", "P", "R(P(K))"},
      {"camera", "P", "R(P(K))"},
      {"mask", "P", "R(P(K))"},
      {"locator", "MorphGroup2", "R(MorphGroup2(K))"},
      {"locator", "MorphGroup", "R"},
      {"mesh", "TextureGroup", "R"},
      {"light", "P", "R"},
      {"pointLight", "P", "R"},
      {"lightMaterial", "P", "R"},
      {"txtrLocator", "P", "R"},
      {"morphDeform", "P", "R"},
  };
  for (const Row& row : rows) {
    SceneBuilder scene;
    const ItemIndex root = scene.Add("locator", "R");
    scene.AddTriangle("K", scene.Add(row.type, row.name, root));
    ScanRig rig(scene.data);
    EXPECT_EQ(TreeText(*rig.Build().gltfScene), row.tree) << row.type << " " << row.name;
  }
}

TEST(Nodes, OptionsGateMeshesAndCameras) {
  SceneBuilder scene;
  const ItemIndex camera = scene.Add("camera", "Camera");
  const ItemIndex mesh = scene.AddTriangle("Mesh", camera);
  const ItemIndex plain = scene.AddTriangle("Alone");
  ScanRig all(scene.data);
  all.Build();
  ASSERT_TRUE(all.Node(camera) && all.Node(camera)->camera && all.Node(mesh));
  EXPECT_EQ(all.Node(camera)->camera->name, "Camera");
  EXPECT_EQ(all.Node(camera)->camera->node, all.Node(camera));
  EXPECT_NE(all.Node(mesh)->mesh, nullptr);

  scene.Option("geometry", 0);
  scene.Option("cameras", 0);
  ScanRig none(scene.data);
  EXPECT_EQ(TreeText(*none.Build().gltfScene), "Alone");
  EXPECT_EQ(none.Node(plain)->mesh, nullptr);
  EXPECT_THAT(none.State().gltfScene->cameras, IsEmpty());
}

TEST(Nodes, InstancesAreEmptyNodes) {
  SceneBuilder scene;
  const ItemIndex mesh = scene.AddTriangle("Source");
  for (const char* name : {"One", "Two"}) scene.Item(scene.Add("meshInst", name)).instanceSource = mesh;
  ScanRig rig(scene.data);
  const GltfScene& built = *rig.Build().gltfScene;
  EXPECT_EQ(TreeText(built), "Source,One,Two");
  EXPECT_THAT(built.meshes, SizeIs(1));
  EXPECT_NE(built.children[0]->mesh, nullptr);
  EXPECT_EQ(built.children[1]->mesh, nullptr);
  EXPECT_EQ(built.children[2]->mesh, nullptr);
}

TEST(Nodes, OrderIsThatOfTheHost) {
  SceneBuilder scene;
  const ItemIndex a = scene.Add("locator", "A");
  const ItemIndex b = scene.Add("locator", "B", a);
  scene.Add("locator", "C", a);
  scene.Add("locator", "D", b);
  scene.Add("locator", "E", b);
  scene.Add("locator", "A");  // a name may stand twice
  ScanRig rig(scene.data);
  EXPECT_EQ(TreeText(*rig.Build().gltfScene), "A(B(D,E),C),A");
  std::vector<std::string> inOrder;
  for (const auto& [item, node] : rig.State().nodesByItem) inOrder.push_back(node->name);
  EXPECT_THAT(inOrder, ElementsAre("A", "B", "D", "E", "C", "A"));
}

TEST(Nodes, AnItemReachedTwiceHasTwoNodesAndKeepsTheFirst) {
  SceneBuilder scene;
  scene.Option("exportType", 1);
  const ItemIndex mesh = scene.AddTriangle("M");
  scene.data.selection = {mesh, mesh};
  ScanRig rig(scene.data);
  const GltfScene& built = *rig.Build().gltfScene;
  ASSERT_EQ(TreeText(built), "M,M");
  EXPECT_EQ(rig.Node(mesh), built.children[0]);
  EXPECT_THAT(rig.State().transformInfoByItem, SizeIs(1));
}

Matrix4 Affine(double scale, double x, double y, double z) {
  Matrix4 matrix;
  const double c = std::cos(0.3), s = std::sin(0.3);
  matrix.m = {scale * c, scale * s, 0, 0, -scale * s, scale * c, 0, 0, 0, 0, scale * 1.5, 0, x, y, z, 1};
  return matrix;
}

// A > B > C with recorded world matrices.
struct ChainScene : SceneBuilder {
  explicit ChainScene(double parentScale = 2) {
    worldA = Affine(parentScale, 1, 2, 3);
    Item(a).world.emplace().keys = {{0, worldA}};
    Item(b).world.emplace().keys = {{0, worldB}};
    Item(c).world.emplace().keys = {{0, worldC}};
  }
  ItemIndex a = Add("locator", "A"), b = Add("locator", "B", a), c = Add("locator", "C", b);
  Matrix4 worldA, worldB = Affine(0.5, -4, 5, 6), worldC = Affine(3, 7, 8, -9);
};

TEST(Nodes, MatricesAreLocalBelowAnExportedParent) {
  ChainScene all;
  ScanRig allRig(all.data);
  allRig.Build();
  EXPECT_EQ(allRig.Node(all.a)->matrix, all.worldA);
  EXPECT_EQ(allRig.Node(all.b)->matrix, all.worldB * Inverse(all.worldA));
  EXPECT_EQ(allRig.Node(all.c)->matrix, all.worldC * Inverse(all.worldB));
  EXPECT_TRUE(allRig.Node(all.c)->useMatrix);
  EXPECT_THAT(allRig.Texts(), Contains("   Using Local matrix").Times(2));
  EXPECT_THAT(allRig.Texts(), Contains("   Using World matrix").Times(1));

  ChainScene selected;
  selected.Option("exportType", 1);
  selected.data.selection = {selected.a, selected.b};
  ScanRig selectedRig(selected.data);
  selectedRig.Build();
  EXPECT_EQ(TreeText(*selectedRig.State().gltfScene), "A,B");
  EXPECT_EQ(selectedRig.Node(selected.b)->matrix, selected.worldB);

  ChainScene below;
  below.Option("exportType", 2);
  below.data.selection = {below.b};
  ScanRig belowRig(below.data);
  belowRig.Build();
  EXPECT_EQ(TreeText(*belowRig.State().gltfScene), "B(C)");
  EXPECT_EQ(belowRig.Node(below.b)->matrix, below.worldB);
  EXPECT_EQ(belowRig.Node(below.c)->matrix, below.worldC * Inverse(below.worldB));
}

TEST(Nodes, ASingularParentIsTakenAsItIs) {
  ChainScene flat(0);
  ScanRig rig(flat.data);
  rig.Build();
  EXPECT_EQ(rig.Node(flat.b)->matrix, flat.worldB * flat.worldA);
}

TEST(Nodes, MatricesHoldAtTheTimeOfTheScene) {
  SceneBuilder scene;
  scene.Channel(0, "time").setup = 2.0;
  const ItemIndex parent = scene.Add("locator", "Parent");
  scene.Move(parent, 10, 0, 0);
  const ItemIndex child = scene.Add("locator", "Child", parent);
  headless::EnvelopeData rise;
  rise.keys = {{0, 0}, {4, 8}};
  scene.Channel(scene.Move(child, 1, 0, 3), "pos.Y").extras.Make().envelope = rise;
  ScanRig rig(scene.data);
  rig.Build();
  Matrix4 expected;
  expected.m[12] = 1, expected.m[13] = 4, expected.m[14] = 3;
  EXPECT_EQ(rig.Node(child)->matrix, expected);
}

TEST(Nodes, WithoutLocatorThereIsNoMatrix) {
  SceneBuilder scene;
  const ItemIndex root = scene.Add("locator", "Root");
  const ItemIndex mask = scene.Add("mask", "Mask", root);
  const ItemIndex hollow = scene.Add("locator", "Hollow", root);
  scene.Item(hollow).hasLocator = false;
  const ItemIndex child = scene.Add("locator", "Child", hollow);
  scene.Item(child).world.emplace().keys = {{0, Affine(2, 1, 2, 3)}};
  ScanRig rig(scene.data);
  const SaveState& state = rig.Build();
  EXPECT_EQ(TreeText(*state.gltfScene), "Root(Mask,Hollow(Child))");
  for (const ItemIndex item : {mask, hollow}) {
    EXPECT_FALSE(rig.Node(item)->useMatrix);
    EXPECT_EQ(rig.Node(item)->matrix, Matrix4());
    EXPECT_FALSE(state.transformInfoByItem.contains(rig.Item(item)));
  }
  EXPECT_EQ(rig.Node(child)->matrix, Affine(2, 1, 2, 3));
  EXPECT_THAT(rig.Texts(), Contains("   !!! No locator !!!").Times(2));
  EXPECT_THAT(rig.Texts(LogLine::Kind::Error), IsEmpty());
}

TransformInfo Analyse(const SceneBuilder& scene, ItemIndex item) {
  ScanRig rig(scene.data);
  CZyUser_Item wrapped;
  wrapped.Set(rig.Item(item));
  TransformInfo info;
  EXPECT_EQ(AnalyseTransforms(rig.Scan(), wrapped, info), ZYe_OK);
  return info;
}

TEST(Nodes, TransformItemsAreKnownByTheirNames) {
  struct Row {
    const char* type;
    const char* name;
    std::int32_t TransformInfo::*place;  // null: no place at all
  };
  const Row rows[] = {
      {"translation", "RotationOffset", &TransformInfo::rotationOffsetIndex},
      {"translation", "my_RotOff.1", &TransformInfo::rotationOffsetIndex},
      {"translation", "RotationPiv", &TransformInfo::rotationPivotIndex},
      {"translation", "RotPvt", &TransformInfo::rotationPivotIndex},
      {"translation", "ScalingOff", &TransformInfo::scaleOffsetIndex},
      {"translation", "SclOffset", &TransformInfo::scaleOffsetIndex},
      {"translation", "ScalePvt", &TransformInfo::scalePivotIndex},
      {"translation", "SclPiv", &TransformInfo::scalePivotIndex},
      {"translation", "ScalingPivot", &TransformInfo::scalePivotIndex},
      // The first row of needles wins, wherever in the name.
      {"translation", "SclPivotRotOff", &TransformInfo::rotationOffsetIndex},
      {"translation", "SclPivotRotPiv", &TransformInfo::rotationPivotIndex},
      {"translation", "rotpivot", nullptr},
      {"translation", "Pivot", nullptr},
      {"transform", "RotPivot Inverse", &TransformInfo::rotationPivotCompensationIndex},
      {"transform", "SclPivotRotPvt", &TransformInfo::rotationPivotCompensationIndex},
      {"transform", "ScalingPvt", &TransformInfo::scalePivotCompensationIndex},
      {"transform", "RotationOffset", nullptr},
      {"shear", "RotPivot", nullptr},
  };
  static constexpr std::int32_t TransformInfo::*kPlaces[] = {&TransformInfo::positionIndex,
                                                             &TransformInfo::rotationIndex,
                                                             &TransformInfo::scaleIndex,
                                                             &TransformInfo::rotationOffsetIndex,
                                                             &TransformInfo::rotationPivotIndex,
                                                             &TransformInfo::rotationAfterIndex,
                                                             &TransformInfo::rotationBeforeIndex,
                                                             &TransformInfo::rotationPivotCompensationIndex,
                                                             &TransformInfo::scaleOffsetIndex,
                                                             &TransformInfo::scalePivotIndex,
                                                             &TransformInfo::scalePivotCompensationIndex};
  for (const Row& row : rows) {
    SceneBuilder scene;
    const ItemIndex item = scene.Add("locator", "L");
    scene.Move(item, 0, 0, 0);
    headless::AddTransform(scene.data, item, row.type, row.name);
    const TransformInfo info = Analyse(scene, item);
    for (const auto place : kPlaces) {
      const std::int32_t expected = place == row.place ? 1 : place == &TransformInfo::positionIndex ? 0 : -1;
      EXPECT_EQ(info.*place, expected) << row.type << " " << row.name;
    }
  }
}

TEST(Nodes, MainTransformsSplitTheRotations) {
  SceneBuilder scene;
  const ItemIndex item = scene.Add("locator", "L");
  const auto add = [&](const char* type, const char* name) {
    return headless::AddTransform(scene.data, item, type, name);
  };
  add("rotation", "first");                                   // 0
  add("rotation", "second");                                  // 1
  const ItemIndex position = add("translation", "RotPivot");  // 2, main and named
  const ItemIndex rotation = add("rotation", "main");         // 3
  add("rotation", "third");                                   // 4
  add("rotation", "fourth");                                  // 5
  add("scale", "extra");                                      // 6
  const ItemIndex scale = add("scale", "main");               // 7
  scene.Item(item).mainTransforms = {scale, rotation, position};
  const TransformInfo info = Analyse(scene, item);
  EXPECT_EQ(info.rotationBeforeIndex, 1);
  EXPECT_EQ(info.rotationIndex, 3);
  EXPECT_EQ(info.rotationAfterIndex, 5);
  EXPECT_EQ(info.scaleIndex, 7);
  EXPECT_EQ(info.positionIndex, 2);
  EXPECT_EQ(info.rotationPivotIndex, 2);

  scene.Item(item).mainTransforms = {-1, -1, -1};
  const TransformInfo none = Analyse(scene, item);
  EXPECT_EQ(none.rotationBeforeIndex, 5);
  EXPECT_EQ(none.rotationAfterIndex, -1);
  EXPECT_EQ(none.scaleIndex, -1);
  EXPECT_EQ(none.positionIndex, -1);
}

TEST(Nodes, LinksAreCounted) {
  SceneBuilder scene;
  const ItemIndex item = scene.Add("locator", "L");
  const ItemIndex position = scene.Move(item, 0, 0, 0);
  scene.Channel(item, "wposMatrix").extras.Make().linkCount = 1;
  scene.Channel(item, "worldMatrix").extras.Make().linkCount = 3;
  scene.Channel(item, "parentMatrix").extras.Make().linkCount = 2;
  scene.Channel(position, "pos.Y").extras.Make().linkCount = 1;
  ScanRig rig(scene.data);
  const TransformInfo& info = rig.Build().transformInfoByItem.begin()->second;
  EXPECT_EQ(info.drivenWpos, 1);
  EXPECT_EQ(info.drivenWrot, 0);
  EXPECT_EQ(info.drivenWscl, 0);
  EXPECT_EQ(info.drivenWorld, 3);
  EXPECT_EQ(info.drivenLocal, 0);
  EXPECT_EQ(info.drivenParent, 2);
  EXPECT_EQ(info.drivenChannels, 3);
  EXPECT_EQ(info.drivenXformChannels, 1);
  // The number of the position's channel, with the locator's name for it.
  const std::string wrongName = scene.Item(item).channels[1].name;
  EXPECT_THAT(rig.Texts(), Contains("   Driven channel:worldMatrix"));
  EXPECT_THAT(rig.Texts(), Contains("   Driven xform channel:Position." + wrongName));
  EXPECT_THAT(rig.Texts(), Contains("   driven:3 xformDriven:1"));
}

TEST(Nodes, DeepHierarchiesAreSaved) {
  SceneBuilder scene;
  scene.Option("animation", 0);
  ItemIndex item = -1;
  for (int depth = 0; depth < 100000; ++depth) item = scene.Add("locator", "L", item);
  scene.Move(item, 1, 2, 3);
  const SaveRun run = RunSave(std::move(scene.data));
  EXPECT_EQ(run.result, ZYe_OK);
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::Error), IsEmpty());
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::Info), Contains("   Using Local matrix").Times(99999));
}

}  // namespace
