// What InitSaver reads from the host: options, roots, masks, deform groups, IK, the actor.
#include "host/fourcc.h"
#include "tests/support/scan_rig.h"

#include <gmock/gmock.h>

namespace {

using headless::ItemIndex;
using headless::LogLine;
using test_support::NamesOf;
using test_support::ScanRig;
using test_support::SceneBuilder;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(Scan, OptionsHaveDefaultsAndTakeEveryInteger) {
  struct Row {
    const char* name;
    std::int32_t SaveOptions::*field;
    std::int32_t byDefault;
  };
  const Row rows[] = {
      {"exportType", &SaveOptions::exportType, 1},
      {"geometry", &SaveOptions::geometry, 1},
      {"materials", &SaveOptions::materials, 1},
      {"cameras", &SaveOptions::cameras, 1},
      {"animation", &SaveOptions::animation, 1},
      {"morphMaps", &SaveOptions::morphMaps, 1},
      {"skinnedMeshInWS", &SaveOptions::skinnedMeshInWS, 1},
      {"tangentsBitangents", &SaveOptions::tangentsBitangents, 0},
      {"indicesExport", &SaveOptions::indicesExport, 0},
      {"sampleAnimFpsMultiplier", &SaveOptions::sampleAnimFpsMultiplier, 0},
      {"exportActionType", &SaveOptions::exportActionType, 0},
  };
  ScanRig plain(headless::MakeScene());
  const SaveOptions defaults = plain.Scan().options;
  SceneBuilder scene;
  std::int32_t next = 100;
  for (const Row& row : rows) {
    EXPECT_EQ(defaults.*row.field, row.byDefault) << row.name;
    scene.Option(row.name, next++);
  }
  ScanRig rig(scene.data);
  const SaveOptions& read = rig.Scan().options;
  next = 100;
  for (const Row& row : rows) EXPECT_EQ(read.*row.field, next++) << row.name;
  EXPECT_EQ(rig.State().document->skinnedMeshInWS, static_cast<std::uint32_t>(read.skinnedMeshInWS));
  EXPECT_EQ(rig.State().document->indices32, static_cast<std::uint32_t>(read.indicesExport));
}

// The scene of the tables on roots: A > B > C, and alone a mask M and a camera D.
struct RootScene : SceneBuilder {
  ItemIndex a = Add("locator", "A"), b = Add("groupLocator", "B", a), c = Add("locator", "C", b);
  ItemIndex m = Add("mask", "M"), d = Add("camera", "D");
  ItemIndex s = 0;  // the scene item
};

TEST(Scan, RootsFollowExportType) {
  const RootScene ids;
  struct Row {
    std::int32_t exportType;
    std::vector<ItemIndex> selection;
    std::vector<std::string> roots;
  };
  const Row rows[] = {
      {0, {ids.c}, {"A", "D"}},
      {1, {}, {}},
      {1, {ids.b, ids.s, ids.a, ids.b}, {"B", "A", "B"}},
      {1, {ids.m}, {"M"}},
      {2, {ids.b}, {"B"}},
      {2, {ids.c, ids.b, ids.a}, {"A"}},
      {2, {ids.a, ids.c}, {"A", "C"}},
      {2, {ids.s, ids.b, ids.b, ids.d, ids.d}, {"B", "B", "D", "D"}},
      {3, {ids.a}, {}},
      {-1, {ids.a}, {}},
  };
  for (const Row& row : rows) {
    RootScene scene;
    scene.Option("exportType", row.exportType);
    scene.data.selection = row.selection;
    ScanRig rig(scene.data);
    EXPECT_EQ(NamesOf(rig.Scan().rootItems), row.roots)
        << "type " << row.exportType << ", selected " << ::testing::PrintToString(row.selection);
  }
}

// A skeleton Rig > Hip > Knee and a joint Loose, all driving the mesh Skin.
struct SkinScene : SceneBuilder {
  ItemIndex rig = Add("locator", "Rig"), hip = Add("locator", "Hip", rig), knee = Add("locator", "Knee", hip);
  ItemIndex loose = Add("locator", "Loose"), skin = AddTriangle("Skin"), group = Add("deformGroup", "Group");

  SkinScene() {
    Option("exportType", 2);
    Fill(group, {loose, knee, hip});
  }
  void Fill(ItemIndex deformGroup, const std::vector<ItemIndex>& drivers) {
    std::vector<ItemIndex> deformers;
    for (const ItemIndex driver : drivers) deformers.push_back(AddDeformer("Deformer", driver));
    Item(deformGroup).deformGroup->meshes = {skin};
    Item(deformGroup).deformGroup->deformers = deformers;
  }
};

TEST(Scan, SelectedMeshBringsItsSkeletonAlong) {
  const SkinScene ids;
  struct Row {
    std::vector<ItemIndex> selection;
    std::vector<std::string> roots;
  };
  const Row rows[] = {
      {{ids.skin}, {"Skin", "Rig", "Loose"}},
      {{ids.rig, ids.skin}, {"Rig", "Skin", "Loose"}},
      // A selected item without a parent isn't looked for among the roots, one with a parent is.
      {{ids.skin, ids.rig, ids.hip}, {"Skin", "Rig", "Loose", "Rig"}},
      {{ids.skin, ids.hip}, {"Skin", "Rig", "Loose"}},
      {{ids.knee}, {"Knee"}},
  };
  for (const Row& row : rows) {
    SkinScene scene;
    scene.data.selection = row.selection;
    ScanRig rig(scene.data);
    EXPECT_EQ(NamesOf(rig.Scan().rootItems), row.roots) << ::testing::PrintToString(row.selection);
  }
}

TEST(Scan, LastDeformGroupOfAMeshWins) {
  SkinScene scene;
  scene.data.selection = {scene.skin};
  const ItemIndex second = scene.Add("deformGroup", "Second");
  scene.Fill(second, {scene.loose});
  ScanRig two(scene.data);
  EXPECT_THAT(NamesOf(two.Scan().rootItems), ElementsAre("Skin", "Loose"));

  scene.Item(second).deformGroup->hasDeformer = false;
  ScanRig broken(scene.data);
  EXPECT_THAT(NamesOf(broken.Scan().rootItems), ElementsAre("Skin"));

  // A selected group is scanned a second time and then is the last.
  scene.data.selection = {scene.group, scene.skin};
  ScanRig selected(scene.data);
  EXPECT_THAT(NamesOf(selected.Scan().rootItems), ElementsAre("Group", "Skin", "Rig", "Loose"));
  EXPECT_THAT(NamesOf(selected.State().deformGroups), ElementsAre("Group", "Second", "Group"));

  scene.Option("geometry", 0);
  ScanRig flat(scene.data);
  EXPECT_THAT(NamesOf(flat.Scan().rootItems), ElementsAre("Group", "Skin"));
}

TEST(Scan, OptionsGateWhatIsScannedBeyondASelection) {
  struct Row {
    std::int32_t exportType, geometry, materials;
    std::size_t masks, groups;
  };
  const Row rows[] = {{0, 1, 1, 1, 1}, {0, 0, 0, 1, 1}, {1, 1, 1, 1, 1}, {1, 2, 0, 0, 1},
                      {1, 0, 1, 0, 0}, {2, 1, 1, 1, 1}, {2, 1, 0, 0, 1}, {3, 1, 1, 0, 0}};
  for (const Row& row : rows) {
    SkinScene scene;
    scene.Add("mask", "Mask");
    scene.Option("exportType", row.exportType);
    scene.Option("geometry", row.geometry);
    scene.Option("materials", row.materials);
    ScanRig rig(scene.data);
    const SaveState& state = rig.Scan();
    EXPECT_EQ(state.masksByPtag.size(), row.masks) << row.exportType << row.geometry << row.materials;
    EXPECT_EQ(state.deformGroups.size(), row.groups) << row.exportType << row.geometry << row.materials;
  }
}

TEST(Scan, EnabledMasksAreKnownByTheirTags) {
  SceneBuilder scene;
  const auto add = [&](const char* name, const char* ptag, std::int32_t enable) {
    const ItemIndex mask = scene.Add("mask", name);
    scene.Channel(mask, "ptag").setup = std::string(ptag);
    scene.Channel(mask, "enable").setup = enable;
    return mask;
  };
  add("First", "Red", 1);
  add("Later", "Red", 1);
  add("Off", "Blue", 0);
  add("Negative", "Green", -1);
  scene.Channel(add("Unreadable", "Grey", 1), "enable").extras.Make().readable = false;
  std::erase_if(scene.Item(add("Without", "", 1)).channels,
                [](const auto& channel) { return channel.name == "ptag"; });
  const ItemIndex noEnable = add("NoEnable", "White", 1);
  std::erase_if(scene.Item(noEnable).channels, [](const auto& channel) { return channel.name == "enable"; });
  ScanRig rig(scene.data);
  std::vector<std::string> found;
  for (const auto& [tag, item] : rig.Scan().masksByPtag)
    found.push_back(tag + "=" + test_support::NameOfRaw(item));
  EXPECT_THAT(found, ElementsAre("Red=First", "Green=Negative", "=Without"));
}

Matrix4 Placed(double x) {
  Matrix4 matrix;
  matrix.m[12] = x;
  return matrix;
}

TEST(Scan, BindMatricesAreKeptByName) {
  SceneBuilder scene;
  const auto addPlaced = [&](const char* name, double bind, double now) {
    const ItemIndex item = scene.Add("locator", name);
    scene.Item(item).world.emplace().bind = Placed(bind);
    scene.Item(item).world->keys = {{0, Placed(now)}};
    return item;
  };
  const ItemIndex group = scene.Add("deformGroup", "Group");
  addPlaced("Twin", 1, 10);
  addPlaced("Twin", 2, 20);
  const ItemIndex bone = addPlaced("Bone", 3, 30);
  const ItemIndex notALocator = scene.Add("mask", "Paint");
  scene.Item(addPlaced("Hollow", 4, 40)).hasLocator = false;
  scene.Item(group).deformGroup->deformers = {scene.AddDeformer("d", bone), scene.AddDeformer("d", notALocator),
                                              scene.AddDeformer("d", -1)};

  ScanRig rig(scene.data);
  std::vector<std::pair<std::string, double>> found;
  for (const auto& [name, matrix] : rig.Scan().setupMatricesByName) found.emplace_back(name, matrix.m[12]);
  EXPECT_EQ(found, (std::vector<std::pair<std::string, double>>{{"Bone", 3}, {"Paint", 0}, {"Twin", 1}}));
  EXPECT_THAT(rig.Texts(LogLine::Kind::Error), ElementsAre("Failed to obtain locator for item:Paint"));
  EXPECT_EQ(rig.State().log.ErrorCount(), 1u);
}

TEST(Scan, IkItemsAreTheWholeSubtreeOfTheRoots) {
  SceneBuilder scene;
  const ItemIndex root = scene.Add("locator", "Arm");
  const ItemIndex upper = scene.Add("locator", "Upper", root);
  const ItemIndex lower = scene.Add("locator", "Lower", upper);
  const ItemIndex prop = scene.AddTriangle("Prop", root);
  scene.Add("locator", "Elsewhere");
  scene.Item(upper).extras.Make().packages = scene.Item(lower).extras.Make().packages = {"ik.joint"};
  const ItemIndex solver = scene.Add("ikFullBody", "Solver", root);
  scene.Item(solver).extras.Make().packages = {"ik.joint"};  // no locator, so no joint
  ScanRig rig(scene.data);
  EXPECT_THAT(rig.Scan().ikItems,
              ElementsAre(rig.Item(root), rig.Item(upper), rig.Item(prop), rig.Item(solver), rig.Item(lower)));
  const std::vector<std::string> texts = rig.Texts();
  EXPECT_THAT(std::vector<std::string>(texts.end() - 3, texts.end()),
              ElementsAre("Processing IK root:Arm", "   IK joint:Upper", "   IK joint:Lower"));
  EXPECT_THAT(texts, Contains("IKSolver:Solver"));
  EXPECT_THAT(texts, Contains("IK root:Arm"));

  scene.Add("ikFullBody", "Second", root);
  ScanRig twice(scene.data);
  EXPECT_THAT(NamesOf(twice.Scan().ikRoots), ElementsAre("Arm", "Arm"));
  EXPECT_EQ(twice.State().ikItems.size(), 6u);
  const std::vector<std::string> lines = twice.Texts();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Processing IK root:Arm"), 2);
}

TEST(Scan, OnlyTheFirstActorIsLoaded) {
  SceneBuilder scene;
  const auto addGroup = [&](const char* name, const char* tag, const char* type = "group") {
    const ItemIndex group = scene.Add(type, name);
    if (tag) scene.Item(group).extras.Make().tags[kTagGroupType] = tag;
    scene.data.graphs["currentGroups"].emplace_back(0, group);
    return group;
  };
  addGroup("Plain", nullptr);
  addGroup("Other", "actors");
  addGroup("NoGroup", "actor", "locator");
  const ItemIndex hero = addGroup("Hero", "actor");
  const ItemIndex villain = addGroup("Villain", "actor");
  const ItemIndex clip = scene.Add("actionclip", "Walk");
  scene.Item(clip).clip->active = true;
  scene.Item(hero).group->items = {clip, scene.Add("locator", "Body")};
  scene.Item(hero).group->channels = {{scene.Add("locator", "Hand"), 0}};
  scene.Item(villain).group->items = {scene.Add("locator", "Cape")};
  ScanRig rig(scene.data);
  rig.Scan();
  EXPECT_THAT(rig.Texts(), Contains("---   Actor:Hero actions:1 items:1 chans:1"));
  EXPECT_THAT(rig.Texts(), Contains("Action:Walk active:1 enabled:1"));
  EXPECT_THAT(rig.Texts(), Not(Contains(::testing::HasSubstr("Villain"))));
  EXPECT_THAT(NamesOf(rig.State().animation.actor.actions), ElementsAre("Walk"));
}

TEST(Scan, ChannelNumbersComeFromTheLastLocatorWalked) {
  SceneBuilder scene;
  scene.Add("locator", "Bare");
  const ItemIndex settled = scene.Add("locator", "Settled");
  auto& channels = scene.Item(settled).channels;
  channels.insert(channels.begin(), headless::ChannelData{"extra", 0, {}});
  std::erase_if(channels, [](const auto& channel) { return channel.name == "wsclMatrix"; });
  // A position item without the wanted channels leaves the search to the rotation.
  const ItemIndex position = headless::AddTransform(scene.data, settled, "translation", "T");
  scene.Item(position).channels.clear();
  const ItemIndex rotation = headless::AddTransform(scene.data, settled, "rotation", "R");
  std::swap(scene.Item(rotation).channels[0], scene.Item(rotation).channels[2]);
  scene.Move(scene.Add("locator", "NotWalked"), 0, 0, 0);
  scene.Item(scene.Add("morphDeform", "Still")).channels.clear();
  const ItemIndex morph = scene.Add("morphDeform", "Morph");

  ScanRig rig(scene.data);
  const MatrixChannels& found = rig.Scan().channels;
  const auto number = [&](const char* name) { return headless::FindChannel(scene.Item(settled), name); };
  EXPECT_EQ(found.wposMatrix, number("wposMatrix"));
  EXPECT_EQ(found.wsclMatrix, -1);
  EXPECT_EQ(found.parentMatrix, number("parentMatrix"));
  EXPECT_EQ(found.vecX, 2);
  EXPECT_EQ(found.vecY, 1);
  EXPECT_EQ(found.vecZ, 0);
  EXPECT_EQ(found.morphEnable, headless::FindChannel(scene.Item(morph), "enable"));

  ScanRig empty(headless::MakeScene());
  const MatrixChannels& none = empty.Scan().channels;
  for (const std::int32_t channel :
       {none.wposMatrix, none.wrotMatrix, none.wsclMatrix, none.worldMatrix, none.localMatrix, none.parentMatrix,
        none.vecX, none.vecY, none.vecZ, none.morphEnable})
    EXPECT_EQ(channel, -1);
  EXPECT_THAT(empty.State().rootItems, IsEmpty());
}

}  // namespace
