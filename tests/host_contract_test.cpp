// The headless host's answers about items, channels, graphs, deformers and textures.
#include "headless/host_paths.h"
#include "host/fourcc.h"
#include "host/user_deform.h"
#include "host/user_mesh.h"
#include "tests/support/host_rig.h"
#include "tests/support/visitor.h"

#include <gmock/gmock.h>

namespace {

using namespace headless;
using test_support::At;
using test_support::HostRig;
using test_support::State;
using testing::ElementsAre;

std::uint32_t TypeCode(const char* name) {
  std::uint32_t code = 0;
  CZySceneService().ItemTypeLookup(name, code);
  return code;
}

bool IsOfType(const CZyUser_Item& item, const char* type) { return item.TestType(TypeCode(type)) == ZYe_OK; }

std::vector<std::string> NamesOfType(const HostRig& rig, std::uint32_t type) {
  std::vector<std::string> names;
  std::uint32_t count = 0;
  rig.scene.ItemCount(type, count);
  for (std::uint32_t index = 0; index < count; ++index) {
    CZyUser_Item item;
    const char* name = "?";
    if (ZySucceeded(rig.scene.ItemByIndex(type, index, item))) item.Name(name);
    names.emplace_back(name);
  }
  return names;
}

TEST(ItemTypes, Hierarchy) {
  struct Case {
    const char* type;
    std::vector<const char*> is, isNot;
  };
  const Case cases[] = {
      {"mesh", {"mesh", "locator"}, {"meshInst", "groupLocator"}},
      {"spotLight", {"light", "locator"}, {"pointLight"}},
      {"txtrLocator", {"locator"}, {"textureLayer"}},
      {"lightMaterial", {"textureLayer"}, {"locator", "light"}},
      {"glTFShader", {"textureLayer"}, {"advancedMaterial", "locator"}},
      {"morphDeform", {"deformer"}, {"locator"}},
      {"translation", {}, {"locator", "transform"}},
      {"deformGroup", {}, {"locator", "group", "deformer"}},
      {"cloth", {"softBody", "deformer"}, {"locator"}},
      {"loop", {"loop"}, {"locator"}},
      {"neverNamed", {"neverNamed"}, {"locator"}},
  };
  SceneData scene = MakeScene();
  scene.types = {{"cloth", "softBody"}, {"softBody", "deformer"}, {"loop", "loop2"}, {"loop2", "loop"}};
  std::vector<ItemIndex> items;
  for (const Case& given : cases) items.push_back(AddItem(scene, given.type, given.type));
  const HostRig rig(scene);
  for (std::size_t place = 0; place < items.size(); ++place) {
    const Case& given = cases[place];
    const CZyUser_Item item = rig.Item(items[place]);
    EXPECT_EQ(item.Type(), TypeCode(given.type));
    for (const char* type : given.is) EXPECT_TRUE(IsOfType(item, type)) << given.type << " is " << type;
    for (const char* type : given.isNot) EXPECT_FALSE(IsOfType(item, type)) << given.type << " is no " << type;
    EXPECT_TRUE(ZyFailed(item.TestType(0)));
  }
  EXPECT_EQ(TypeCode("noSuchType"), 0u);
}

TEST(ItemTypes, ListsInSceneOrder) {
  SceneData scene = MakeScene();
  for (const char* type : {"mesh", "mask", "spotLight", "locator", "mesh"})
    AddItem(scene, type, std::string(type) + std::to_string(scene.items.size()));
  const HostRig rig(scene);
  EXPECT_THAT(NamesOfType(rig, TypeCode("locator")), ElementsAre("mesh1", "spotLight3", "locator4", "mesh5"));
  EXPECT_THAT(NamesOfType(rig, TypeCode("light")), ElementsAre("spotLight3"));
  EXPECT_THAT(NamesOfType(rig, TypeCode("camera")), ElementsAre());
  EXPECT_EQ(NamesOfType(rig, kAllItems).size(), 6u);
  std::uint32_t count = 77;
  EXPECT_TRUE(ZyFailed(rig.scene.ItemCount(0, count)));
  EXPECT_EQ(count, 77u);
  CZyUser_Item item;
  EXPECT_EQ(rig.scene.AnyItemOfType(TypeCode("mesh"), item), ZYe_OK);
  EXPECT_EQ(item.Raw(), rig.Item(1).Raw());
  EXPECT_TRUE(ZyFailed(rig.scene.AnyItemOfType(TypeCode("polyRender"), item)));
}

TEST(Items, IdentityAndHierarchy) {
  SceneData scene = MakeScene();
  const ItemIndex parent = AddItem(scene, "locator", "same");
  const ItemIndex first = AddItem(scene, "locator", "same", parent),
                  second = AddItem(scene, "camera", "c", parent);
  At(scene, second).extras.Make().packages = {"ik.joint"};
  At(scene, second).extras.Make().tags[kTagGroupType] = "actor";
  HostRig rig(scene);
  std::uint32_t count = 0;
  CZyUser_Item item;
  EXPECT_EQ(rig.Item(parent).SubCount(count), ZYe_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(rig.Item(parent).SubByIndex(1, item), ZYe_OK);
  EXPECT_EQ(item.Raw(), rig.Item(second).Raw()) << "one pointer per item";
  EXPECT_TRUE(ZyFailed(rig.Item(parent).SubByIndex(2, item)));
  EXPECT_EQ(rig.Item(first).Parent(item), ZYe_OK);
  EXPECT_EQ(item.Raw(), rig.Item(parent).Raw());
  EXPECT_TRUE(ZyFailed(rig.Item(parent).Parent(item)));
  EXPECT_LT(rig.Item(first).Raw(), rig.Item(second).Raw()) << "pointers ascend in scene order";

  const char *ident = nullptr, *again = nullptr, *other = nullptr;
  rig.Item(parent).Ident(ident);
  rig.Item(parent).Ident(again);
  rig.Item(first).Ident(other);
  EXPECT_EQ(static_cast<const void*>(ident), again);
  EXPECT_NE(static_cast<const void*>(ident), other);

  EXPECT_EQ(rig.Item(second).PackageTest("ik.joint"), ZYe_OK);
  EXPECT_NE(rig.Item(first).PackageTest("ik.joint"), ZYe_OK);
  EXPECT_STREQ(rig.Item(second).GetTag(kTagGroupType), "actor");
  EXPECT_EQ(rig.Item(second).GetTag(kTagMaterial), nullptr);
  CZyUser_Scene context;
  EXPECT_EQ(rig.Item(second).Context(context), ZYe_OK);
  EXPECT_EQ(context.Raw(), rig.host.Scene());
}

TEST(Items, InterfacesFollowTypeAndData) {
  SceneData scene = MakeScene();
  const std::pair<const char*, std::uint32_t> cases[] = {
      {"mesh", IZyLocator::kId},    {"imageMap", IZyTexture::kId},    {"actionclip", IZyActionClip::kId},
      {"group", IZyGroupItem::kId}, {"txtrLocator", IZyLocator::kId}, {"rotation", 0}};
  for (const auto& [type, own] : cases) AddItem(scene, type, type);
  const ItemIndex without = AddItem(scene, "locator", "without");
  At(scene, without).hasLocator = false;
  const ItemIndex noClip = AddItem(scene, "actionclip", "noClip");
  At(scene, noClip).clip.reset();
  const HostRig rig(scene);
  const auto has = [&](ItemIndex item, std::uint32_t id) {
    return rig.Item(item).Raw()->Interface(id) != nullptr;
  };
  ItemIndex item = 0;
  for (const auto& [type, own] : cases) {
    ++item;
    for (const std::uint32_t id :
         {IZyLocator::kId, IZyTexture::kId, IZyActionClip::kId, IZyGroupItem::kId, IZyScene::kId})
      EXPECT_EQ(has(item, id), id == own) << type << " and interface " << id;
  }
  EXPECT_FALSE(has(without, IZyLocator::kId));
  EXPECT_FALSE(has(noClip, IZyActionClip::kId));
}

// Each row: a channel's value, and what the three reads make of it; nothing where the read fails.
TEST(Channels, Conversions) {
  struct Case {
    ChannelValue value;
    std::optional<std::int32_t> integer;
    std::optional<double> number;
    std::optional<std::string> text;
    bool readable = true;
  };
  const Case cases[] = {
      {std::int32_t{7}, 7, 7.0, {}},        {-2.9, -2, -2.9, {}},
      {1e300, 2147483647, 1e300, {}},       {std::string("12"), {}, {}, "12"},
      {std::int32_t{7}, {}, {}, {}, false}, {std::string("12"), {}, {}, {}, false},
  };
  for (const Case& given : cases) {
    SceneData scene = MakeScene();
    SetChannel(At(scene, 0), "value", given.value);
    At(scene, 0).channels.back().extras.Make().readable = given.readable;
    const HostRig rig(scene);
    const CZyUser_ChannelRead read = rig.Read(State::Edit);
    const std::int32_t channel = rig.Channel(0, "value");
    std::int32_t integer = -77;
    double number = -77;
    const char* text = "untouched";
    EXPECT_EQ(ZySucceeded(read.Integer(rig.Item(0), channel, integer)), given.integer.has_value());
    EXPECT_EQ(integer, given.integer.value_or(-77));
    EXPECT_EQ(ZySucceeded(read.Double(rig.Item(0), channel, number)), given.number.has_value());
    EXPECT_EQ(number, given.number.value_or(-77));
    EXPECT_EQ(ZySucceeded(read.String(rig.Item(0), channel, text)), given.text.has_value());
    EXPECT_EQ(text, given.text.value_or("untouched"));
  }
}

TEST(Channels, ObjectsAndMatricesAreNoValues) {
  SceneData scene = MakeScene();
  const ItemIndex mesh = AddItem(scene, "mesh", "mesh"), surface = AddItem(scene, "triSurf", "surface");
  ItemData bare;
  bare.id = bare.name = "bare";
  bare.type = "mesh";
  scene.items.push_back(bare);
  const HostRig rig(scene);
  const CZyUser_ChannelRead read = rig.Read(State::Setup);
  double number = 0;
  EXPECT_TRUE(ZyFailed(read.Double(rig.Item(mesh), rig.Channel(mesh, "worldMatrix"), number)));
  EXPECT_TRUE(ZyFailed(read.Double(rig.Item(mesh), rig.Channel(mesh, "mesh"), number)));
  for (const ItemIndex item : {mesh, surface + 1}) {
    CZyUser_Mesh object;
    std::uint32_t points = 77;
    EXPECT_EQ(read.ValueObject(rig.Item(item), rig.Channel(item, "mesh"), object), ZYe_OK) << "item " << item;
    EXPECT_EQ(object.PointCount(points), ZYe_OK);
    EXPECT_EQ(points, 0u) << "a mesh without data is an empty one";
  }
  CountedRef<IZyTriangleSurface> triangles;
  EXPECT_EQ(read.ValueObject(rig.Item(surface), rig.Channel(surface, "surf"), triangles), ZYe_OK);
  EXPECT_TRUE(ZyFailed(read.ValueObject(rig.Item(mesh), 0, triangles)));
}

TEST(Channels, NullAndOutOfRangeFail) {
  const HostRig rig(MakeScene());
  const CZyUser_ChannelRead read = rig.Read(State::Evaluated);
  const CZyUser_Item none, scene = rig.Item(0);
  double number = 5;
  std::int32_t index = 5;
  const char* text = "kept";
  for (const std::int32_t channel : {-1, 4, 1000}) {
    EXPECT_TRUE(ZyFailed(read.Double(scene, channel, number)));
    EXPECT_TRUE(ZyFailed(scene.ChannelName(channel, text)));
    EXPECT_EQ(read.IsAnimated(scene, channel), 0);
  }
  EXPECT_TRUE(ZyFailed(read.Double(none, 0, number)));
  EXPECT_TRUE(ZyFailed(scene.ChannelLookup(nullptr, index)));
  EXPECT_TRUE(ZyFailed(scene.ChannelLookup("nothing", index)));
  EXPECT_TRUE(ZyFailed(scene.PackageTest(nullptr)));
  CZyUser_ChannelRead other;
  EXPECT_TRUE(ZyFailed(rig.scene.Channels("noSuchAction", 0, other)));
  CZyUser_ItemGraph graph;
  EXPECT_TRUE(ZyFailed(rig.scene.GraphLookup<IZyItemGraph>(nullptr, graph)));
  EXPECT_EQ(number, 5);
  EXPECT_EQ(index, 5);
  EXPECT_STREQ(text, "kept");
}

TEST(Graphs, LinksInOrderBothWays) {
  SceneData scene = MakeScene();
  const ItemIndex locator = AddItem(scene, "locator", "l");
  std::vector<ItemIndex> stack;
  for (const char* type : {"translation", "rotation", "shear", "rotation"})
    stack.push_back(AddTransform(scene, locator, type, type));
  scene.graphs["xfrmCore"].emplace_back(locator, 4000);
  scene.graphs.erase("chanLinks");
  const HostRig rig(scene);
  CZyUser_ItemGraph graph;
  ASSERT_EQ(rig.scene.GraphLookup("xfrmCore", graph), ZYe_OK);
  std::uint32_t count = 0;
  EXPECT_EQ(graph.RevCount(rig.Item(locator), count), ZYe_OK);
  ASSERT_EQ(count, 4u);
  CZyUser_Item item;
  for (std::uint32_t place = 0; place < count; ++place) {
    EXPECT_EQ(graph.RevByIndex(rig.Item(locator), place, item), ZYe_OK);
    EXPECT_EQ(item.Raw(), rig.Item(stack[place]).Raw());
    EXPECT_EQ(graph.FwdByIndex(item, 0, item), ZYe_OK);
    EXPECT_EQ(item.Raw(), rig.Item(locator).Raw());
  }
  EXPECT_TRUE(ZyFailed(graph.RevByIndex(rig.Item(locator), count, item)));
  EXPECT_EQ(graph.FwdCount(rig.Item(locator), count), ZYe_OK);
  EXPECT_EQ(count, 0u) << "a link to nowhere is none";
  EXPECT_TRUE(ZyFailed(graph.RevCount(CZyUser_Item(), count)));
  CZyUser_Locator transforms;
  transforms.Set(rig.Item(locator).Raw());
  EXPECT_EQ(transforms.TransformItem(TransformKind::Rotation, item), ZYe_OK);
  EXPECT_EQ(item.Raw(), rig.Item(stack[1]).Raw()) << "the first of a kind is the main one";
  EXPECT_TRUE(ZyFailed(transforms.TransformItem(TransformKind::Scale, item)));
  for (const char* missing : {"deformers", "chanLinks"})
    EXPECT_TRUE(ZyFailed(rig.scene.GraphLookup(missing, graph))) << missing;
}

TEST(Graphs, ChannelLinkCounts) {
  SceneData scene = MakeScene();
  const ItemIndex a = AddItem(scene, "locator", "a"), b = AddItem(scene, "locator", "b");
  At(scene, b).channels[2].extras.Make().linkCount = 9;
  scene.channelLinks = {{{a, 0}, {b, 3}}, {{a, 1}, {b, 3}}, {{a, 3}, {b, 2}}, {{a, 99}, {b, 4}}};
  const HostRig rig(scene);
  CZyUser_ChannelGraph graph;
  ASSERT_EQ(rig.scene.GraphLookup("chanLinks", graph), ZYe_OK);
  const auto count = [&](ItemIndex item, std::int32_t channel) {
    std::uint32_t links = 77;
    return ZySucceeded(graph.RevCount(rig.Item(item), channel, links)) ? static_cast<int>(links) : -1;
  };
  EXPECT_EQ(count(b, 3), 2);
  EXPECT_EQ(count(a, 3), 0);
  EXPECT_EQ(count(b, 2), 9) << "a recorded number stands";
  EXPECT_EQ(count(b, 4), 0) << "a link from nowhere is none";
  EXPECT_EQ(count(b, 6), -1);
  EXPECT_EQ(count(b, -1), -1);
}

std::shared_ptr<const MeshData> WeightedMesh() {
  auto mesh = std::make_shared<MeshData>();
  mesh->points = std::vector<float>(9, 0.0f);
  mesh->pointIds = std::vector<std::uint64_t>{100, 7, 55};
  mesh->maps = {
      {kMapWeight, "left", 1, std::vector<float>{0.25f, 1.0f}, std::vector<std::uint32_t>{0, kNone, 1}, {}},
      {kMapWeight, "right", 1, std::vector<float>{0.75f}, std::vector<std::uint32_t>{0, kNone, kNone}, {}}};
  return mesh;
}

using Influences = std::vector<std::pair<std::uint32_t, float>>;

std::optional<Influences> WeightsOf(const CZyUser_GroupDeformer& deformer, std::uint32_t mesh, ZyPointId point) {
  std::uint32_t deformers[3] = {}, count = 0;
  float weights[3] = {};
  if (ZyFailed(deformer.PointWeights(mesh, point, deformers, weights, count))) return std::nullopt;
  Influences list;
  for (std::uint32_t place = 0; place < count; ++place) list.emplace_back(deformers[place], weights[place]);
  return list;
}

TEST(Deformers, WeightsFromMapsAndRecordings) {
  SceneData scene = MakeScene();
  const ItemIndex mesh = AddItem(scene, "mesh", "mesh");
  At(scene, mesh).mesh = WeightedMesh();
  const ItemIndex group = AddItem(scene, "deformGroup", "group");
  std::vector<ItemIndex> deformers;
  for (const char* map : {"right", "", "left"}) {
    deformers.push_back(AddItem(scene, "weightMapDeformer", map));
    At(scene, deformers.back()).extras.Make().weightMap = map;
  }
  DeformGroupData& data = *At(scene, group).deformGroup;
  data.meshes = {mesh, mesh};
  data.deformers = deformers;
  RecordedInfluences recorded{std::vector<std::uint32_t>{0, 1, 5, 5}, std::vector<std::uint32_t>{2, 0, 1, 2, 0},
                              std::vector<float>{0.5f, 0.1f, 0.2f, 0.3f, 0.4f}};
  data.influences = {std::nullopt, recorded};

  const HostRig rig(scene);
  const CZyDeformerService service;
  const CZyUser_ChannelRead bind = rig.Read(State::Bind);
  CZyUser_GroupDeformer deformer;
  ASSERT_EQ(service.GroupDeformer(rig.Item(group), bind, deformer), ZYe_OK);
  EXPECT_EQ(deformer.DeformerCount(), 3u);
  EXPECT_EQ(WeightsOf(deformer, 0, 100), (Influences{{0, 0.75f}, {2, 0.25f}}));
  EXPECT_EQ(WeightsOf(deformer, 0, 7), Influences());
  EXPECT_EQ(WeightsOf(deformer, 0, 55), (Influences{{2, 1.0f}}));
  EXPECT_EQ(WeightsOf(deformer, 0, 1), std::nullopt) << "no point has the id";
  EXPECT_EQ(WeightsOf(deformer, 2, 100), std::nullopt) << "no such mesh";
  EXPECT_EQ(WeightsOf(deformer, 1, 100), (Influences{{2, 0.5f}}));
  EXPECT_EQ(WeightsOf(deformer, 1, 7)->size(), 3u) << "the arrays hold one entry per point of the mesh";
  EXPECT_TRUE(ZyFailed(service.GroupDeformer(rig.Item(mesh), bind, deformer)));
  EXPECT_TRUE(ZyFailed(service.GroupDeformer(rig.Item(group), CZyUser_ChannelRead(), deformer)));
}

TEST(Textures, PathsInTheHostsForm) {
  struct Case {
    const char *directory, *path, *expected;
  };
  const Case cases[] = {
      {"/home/x", "tex/a.png", "\\home\\x\\tex\\a.png"}, {"/home/x/", "a.png", "\\home\\x\\a.png"},
      {"scenes", "../a.png", "scenes\\..\\a.png"},       {"", "tex/a.png", "tex\\a.png"},
      {"/home/x", "/img/a.png", "\\img\\a.png"},         {"/home/x", "C:\\img\\a.png", "C:\\img\\a.png"}};
  for (const Case& given : cases) {
    SceneData scene = MakeScene();
    scene.directory = given.directory;
    const ItemIndex map = AddItem(scene, "imageMap", "map"), empty = AddItem(scene, "imageMap", "empty");
    At(scene, map).imagePath = given.path;
    At(scene, map).textureLocator = AddItem(scene, "txtrLocator", "locator");
    const HostRig rig(scene);
    CZyUser_Texture texture;
    CZyUser_Item locator;
    ASSERT_TRUE(texture.Set(rig.Item(map).Raw()));
    EXPECT_STREQ(texture.ImagePath(), given.expected);
    EXPECT_EQ(texture.LocatorItem(locator), ZYe_OK);
    ASSERT_TRUE(texture.Set(rig.Item(empty).Raw()));
    EXPECT_EQ(texture.ImagePath(), nullptr);
    EXPECT_TRUE(ZyFailed(texture.LocatorItem(locator)));
  }
  EXPECT_EQ(FromHostPath("\\home\\x\\a b.png"), "/home/x/a b.png");
}

TEST(Groups, EnumerateItemsAndCarriersOfChannels) {
  SceneData scene = MakeScene();
  const ItemIndex a = AddItem(scene, "locator", "a"), b = AddItem(scene, "locator", "b");
  const ItemIndex group = AddItem(scene, "group", "g");
  At(scene, group).group = GroupData{{b, a}, {{a, 1}, {a, 2}, {b, 0}}};
  const HostRig rig(scene);
  CZyUser_GroupItem item;
  CZyUser_GroupEnumerator members;
  ASSERT_TRUE(item.Set(rig.Item(group).Raw()));
  ASSERT_EQ(item.Enumerator(members), ZYe_OK);
  CZyUser_Item none;
  EXPECT_TRUE(ZyFailed(members.Item(none))) << "before the walk there is no item";
  const auto walk = [&](GroupMembers kind, std::size_t limit, zyresult result) {
    std::vector<std::string> names;
    test_support::Visitor note([&] {
      const char* name = "?";
      CZyUser_Item member;
      if (ZySucceeded(members.Item(member))) member.Name(name);
      names.emplace_back(name);
      return names.size() < limit ? ZYe_OK : ZYe_ABORTED;
    });
    EXPECT_EQ(members.Enumerate(kind, note), result);
    return names;
  };
  EXPECT_THAT(walk(GroupMembers::Items, 100, ZYe_OK), ElementsAre("b", "a"));
  EXPECT_THAT(walk(GroupMembers::Channels, 100, ZYe_OK), ElementsAre("a", "a", "b"));
  EXPECT_THAT(walk(GroupMembers::Channels, 2, ZYe_ABORTED), ElementsAre("a", "a"));
}

}  // namespace
