#include "readers/scene_writer.h"

#include "host/fourcc.h"
#include "readers/read_scene.h"
#include "tests/support/host_directory.h"
#include "tests/support/scene_difference.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using headless::ItemData;
using headless::ItemIndex;
using headless::kNone;
using headless::MeshData;
using headless::SceneData;
using readers::ArrayForm;
using test_support::FindDifference;
using test_support::HostDirectory;

std::string ReadBytes(const std::filesystem::path& file) {
  std::ostringstream bytes;
  bytes << std::ifstream(file, std::ios::binary).rdbuf();
  return bytes.str();
}

SceneData Read(const std::filesystem::path& file) {
  readers::ReadReport report;
  return readers::ReadScene(file, report);
}

// Reads what is written of the scene, in both forms, and compares; a scene read back is written as the same bytes.
void ExpectComesBack(const SceneData& scene) {
  for (const ArrayForm form : {ArrayForm::Text, ArrayForm::Binary}) {
    const HostDirectory directory;
    WriteSceneFile(scene, directory / "one.orvo", form);
    SCOPED_TRACE(ReadBytes(directory / "one.orvo").substr(0, 4000));
    const SceneData again = Read(directory / "one.orvo");
    EXPECT_EQ(FindDifference(scene, again), "");
    std::filesystem::create_directory(directory / "again");
    WriteSceneFile(again, directory / "again/one.orvo", form);
    for (const char* name : {"one.orvo", "one.bin"})
      EXPECT_EQ(ReadBytes(directory / name), ReadBytes(directory / "again" / name));
  }
}

TEST(SceneWriter, GivesBackEveryExampleAndGolden) {
  int count = 0;
  for (const char* folder : {"examples", "tests/golden"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(VORNEL_SOURCE_DIR) / folder)) {
      if (entry.path().extension() != ".orvo" && entry.path().extension() != ".obj") continue;
      SCOPED_TRACE(entry.path());
      ExpectComesBack(Read(entry.path()));
      ++count;
    }
  }
  EXPECT_GE(count, 15);
}

ItemData& At(SceneData& scene, ItemIndex index) { return scene.items[static_cast<std::size_t>(index)]; }

Matrix4 OddMatrix(double first) {
  Matrix4 matrix;
  matrix.m[0] = first;
  matrix.m[13] = -0.0;
  return matrix;
}

// Numbers at the ends of their ranges, gaps, empty polygons and everything recorded.
std::shared_ptr<const MeshData> OddMesh() {
  using Floats = std::numeric_limits<float>;
  MeshData mesh;
  mesh.points =
      std::vector<float>{-0.0f, Floats::max(), Floats::denorm_min(), 0.1f, 16777216.0f, 1e-10f, 7, -8, 9};
  mesh.pointIds = std::vector<std::uint64_t>{~std::uint64_t{0}, 0, std::uint64_t{1} << 53 | 1};
  mesh.polygonStarts = std::vector<std::uint32_t>{0, 3, 3, 5};
  mesh.polygonPoints = std::vector<std::uint32_t>{0, 1, 2, 2, 2};
  mesh.material = {{"a", "a", "not used"}, std::vector<std::uint32_t>{1, kNone, 0}};
  mesh.part = {{"left"}, {}};
  mesh.maps = {{kMapUv, "Texture", 2, std::vector<float>{0.3f, 0.7f}, std::vector<std::uint32_t>{0, kNone, 0},
                std::vector<std::uint32_t>{kNone, 0, 0, 0, kNone}},
               {kMapWeight, "", 1, std::vector<float>{1, 2, 3}, std::vector<std::uint32_t>{0, 1, 2}, {}},
               {0x00FF2041, "odd", 100, {}, {}, {}}};
  mesh.smoothingAngle = 0.5000000000000001;
  mesh.triangleStarts = std::vector<std::uint32_t>{0, 1, 1, 1};
  mesh.trianglePoints = std::vector<std::uint32_t>{2, 1, 0};
  mesh.cornerNormals = std::vector<double>(15, -0.1);
  return std::make_shared<const MeshData>(std::move(mesh));
}

void AddOddChannels(ItemData& item) {
  using Doubles = std::numeric_limits<double>;
  headless::EnvelopeData envelope;
  envelope.keys = {{-0.0, Doubles::max(), headless::Interpolation::Cubic, -0.0, 0},
                   {0.1, Doubles::denorm_min(), headless::Interpolation::Linear, 0, 0},
                   {2, -1, headless::Interpolation::Step, 0, 0}};
  envelope.before = headless::Extrapolation::Oscillate;
  headless::SetChannel(item, "glow.R", 1.0);
  headless::SetChannel(item, "glow.G", -0.0);
  headless::SetChannel(item, "glow.B", 1e300);
  headless::SetChannel(item, "whole float", 9007199254740993.0);
  headless::SetChannel(item, "integer", std::numeric_limits<std::int32_t>::min());
  headless::SetChannel(item, "text \"\\\n\x01/", std::string("\t\xE2\x82\xAC"));
  headless::SetChannel(item, "all", 3.0);
  auto& all = item.channels.back();
  headless::ChannelExtras& extras = all.extras.Make();
  extras.edit = -0.0;
  extras.envelope = extras.setupEnvelope = envelope;
  extras.readable = false;
  extras.linkCount = 0xFFFFFFFFu;
}

SceneData OddScene() {
  SceneData scene = headless::MakeScene();
  scene.types = {{"bone", "joint"}, {"joint", "locator"}};
  const ItemIndex first = headless::AddItem(scene, "mesh", "Same");
  const ItemIndex second = headless::AddItem(scene, "mesh", "Same", first);
  const ItemIndex bone = headless::AddItem(scene, "bone", "", first);
  const ItemIndex turn = headless::AddTransform(scene, bone, "rotation", "Turn");
  const ItemIndex move = headless::AddTransform(scene, bone, "translation", "Move");
  const ItemIndex group = headless::AddItem(scene, "deformGroup", "Group");
  const ItemIndex deformer = headless::AddItem(scene, "deformer", "Pull");
  const ItemIndex actor = headless::AddItem(scene, "group", "Actor");
  const ItemIndex clip = headless::AddItem(scene, "actionclip", "Clip");
  const ItemIndex image = headless::AddItem(scene, "imageMap", "Image");
  const ItemIndex matrix = headless::AddItem(scene, "transform", "Inverse");
  At(scene, first).mesh = At(scene, second).mesh = OddMesh();
  At(scene, first).extras.Make().childOrder = {bone, second};
  At(scene, first).hasLocator = false;
  At(scene, second).world.emplace().keys = {{0.1, OddMatrix(1e-310)}, {0.2, OddMatrix(3)}};
  At(scene, second).world->linear = true;
  At(scene, bone).world.emplace().bind = OddMatrix(2);
  At(scene, bone).extras.Make().packages = {"ik.joint", "ik.joint"};
  At(scene, bone).extras.Make().tags = {{kTagGroupType, "x"}, {0x000000FF, "odd"}, {FourCC("A   "), ""}};
  At(scene, bone).mainTransforms = {-1, move, -1};
  AddOddChannels(At(scene, turn));
  At(scene, move).channels.erase(At(scene, move).channels.begin());
  At(scene, move).channels.push_back(At(scene, move).channels.front());
  At(scene, group).deformGroup = headless::DeformGroupData{{first, first}, {deformer}, {}, false};
  At(scene, group).deformGroup->influences.resize(2);
  At(scene, group).deformGroup->influences[1] = {std::vector<std::uint32_t>{0, 1, 1, 1},
                                                 std::vector<std::uint32_t>{0}, std::vector<float>{0.1f}};
  At(scene, deformer).deformationItem = bone;
  At(scene, deformer).extras.Make().weightMap = "w";
  At(scene, actor).group = headless::GroupData{{clip, clip}, {{turn, 1}, {move, 2}}};
  At(scene, clip).clip->exportTag = "T";
  At(scene, clip).clip->enabled = false;
  At(scene, clip).clip->channels = {{{turn, 0}, headless::ChannelValue(2.0)},
                                    {{turn, 1}, *At(scene, turn).channels.back().extras->envelope},
                                    {{image, headless::FindChannel(At(scene, image), "effect")},
                                     headless::ChannelValue(std::string("dissolve"))}};
  At(scene, image).imagePath = "";
  At(scene, image).textureLocator = bone;
  At(scene, matrix).matrix = OddMatrix(5);
  At(scene, matrix).inverseOf = matrix;
  scene.graphs.erase("targets");
  scene.graphs["empty"];
  scene.graphs["xfrmLocal"] = {{move, bone}, {move, bone}};
  scene.channelLinks = {{{turn, 0}, {turn, 1}, 1, 0}, {{move, 2}, {bone, 3}, -0.0, -0.0}};
  scene.selection = {image, first, image};
  scene.renderCameras = {bone};
  scene.userValues = {{"a\"b", -1}, {"", std::numeric_limits<std::int32_t>::min()}};
  scene.application = {"App", {1, 2, -3}, 7, "Os", ""};
  scene.exportTagsCommand = headless::CommandState::Fails;
  return scene;
}

TEST(SceneWriter, GivesBackEveryField) { ExpectComesBack(OddScene()); }

// f32 and f64 of random bits, small indices and large ones, past the size from which arrays are binary.
TEST(SceneWriter, GivesBackRandomNumbers) {
  std::mt19937_64 random(20240607);
  SceneData scene = headless::MakeScene();
  const ItemIndex item = headless::AddItem(scene, "mesh", "M");
  MeshData mesh;
  std::vector<float> points;
  std::vector<double> normals;
  std::vector<std::uint32_t> corners, places;
  while (points.size() < 30000) {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (std::isfinite(value)) points.push_back(value);
  }
  for (std::uint32_t corner = 0; corner < 999; ++corner)
    corners.push_back(static_cast<std::uint32_t>(random() % 10000));
  while (normals.size() < 3 * corners.size()) {
    const auto value = std::bit_cast<double>(random());
    if (std::isfinite(value)) normals.push_back(value);
  }
  for (std::size_t i = 0; i < corners.size(); ++i) places.push_back(random() % 4 == 0 ? kNone : random() % 10);
  mesh.points = points;
  mesh.polygonStarts = std::vector<std::uint32_t>{0, 0, 1, 999};
  mesh.polygonPoints = corners;
  mesh.cornerNormals = normals;
  mesh.maps = {{kMapUv, "uv", 2, std::vector<float>(points.begin(), points.begin() + 20), {}, places}};
  At(scene, item).mesh = std::make_shared<const MeshData>(mesh);
  ExpectComesBack(scene);
}

// Names of foreign files: no bytes make a file that can't be read.
TEST(SceneWriter, WritesWhateverBytesNamesHold) {
  SceneData scene = headless::MakeScene();
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  for (const std::string& name : {bytes, std::string("a\0b", 3), std::string("\xED\xA0\x80"),
                                  std::string("\xC3\xA9"), std::string("\xE9"), std::string()}) {
    const ItemIndex item = headless::AddItem(scene, "mask", name);
    At(scene, item).id = name;
    headless::SetChannel(At(scene, item), "ptag", name);
  }
  const HostDirectory directory;
  WriteSceneFile(scene, directory / "names.orvo", ArrayForm::Text);
  const SceneData again = Read(directory / "names.orvo");
  ASSERT_EQ(again.items.size(), 7u);
  const auto nameAndId = [&](std::size_t item) { return again.items[item].name + "|" + again.items[item].id; };
  EXPECT_EQ(nameAndId(2), "a|a");
  EXPECT_EQ(nameAndId(4), "\xC3\xA9|\xC3\xA9");
  EXPECT_EQ(nameAndId(5), "\xC3\xA9|\xC3\xA9#1");  // read as Latin-1, and then no longer the only one
  EXPECT_EQ(nameAndId(6), "|");
}

TEST(SceneWriter, RefusesWhatNoFileCanSay) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* message;
    std::function<void(SceneData&)> spoil;
  } kCases[] = {
      {": a scene has one item of type \"scene\"", [](SceneData& scene) { scene.items.clear(); }},
      {": item \"m\": holds a number that is not finite",
       [&](SceneData& scene) { headless::SetChannel(scene.items[1], "x", infinity); }},
      {": item \"m\": refers to item 9 of 2", [](SceneData& scene) { scene.items[1].parent = 9; }},
      {": refers to item -1 of 2", [](SceneData& scene) { scene.selection = {-1}; }},
      {": refers to channel 8 of 7 of item \"m\"",
       [](SceneData& scene) {
         scene.channelLinks = {{{1, 8}, {1, 0}, 1, 0}};
       }},
      {": item \"m\": point 0, y: not finite",
       [&](SceneData& scene) {
         MeshData mesh;
         mesh.points = std::vector<float>{0, static_cast<float>(infinity), 0};
         scene.items[1].mesh = std::make_shared<const MeshData>(mesh);
       }},
      {": item \"m\": has a clip, which an item of type \"mesh\" can't have",
       [](SceneData& scene) { scene.items[1].clip.emplace(); }},
      {": item \"m\": records a world matrix that is not finite",
       [&](SceneData& scene) {
         scene.items[1].world.emplace().keys = {{0, OddMatrix(-infinity)}};
       }},
  };
  for (const auto& one : kCases) {
    SceneData scene = headless::MakeScene();
    headless::AddItem(scene, "mesh", "m");
    scene.items[1].id = "m";
    one.spoil(scene);
    const HostDirectory directory;
    try {
      WriteSceneFile(scene, directory / "bad.orvo", ArrayForm::Text);
      ADD_FAILURE() << one.message;
    } catch (const readers::SceneWriteError& error) {
      EXPECT_EQ(error.what(), (directory / "bad.orvo").string() + one.message);
    }
  }
}

TEST(SceneWriter, TellsOfFilesItCannotWrite) {
  const SceneData scene = headless::MakeScene();
  const HostDirectory directory;
  EXPECT_THROW(WriteSceneFile(scene, directory / "no/scene.orvo", ArrayForm::Text), readers::SceneWriteError);
  EXPECT_THROW(WriteSceneFile(scene, "/dev/full", ArrayForm::Text), readers::SceneWriteError);
}

}  // namespace
