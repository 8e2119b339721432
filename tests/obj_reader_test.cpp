#include "tests/support/obj_rig.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using headless::kNone;
using headless::MeshData;
using headless::MeshMapData;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

// In these files entry i of each stream has i as its first number, so that a corner shows what it refers to.
constexpr const char* kStreams =
    "v 1 0 0\nv 2 0 0\nv 3 1 0\nv 4 1 0\nvt 1 0\nvt 2 0\nvt 3 0\nvn 1 0 0\nvn 2 0 0\n";

template <class T>
std::vector<T> Values(const headless::Array<T>& array) {
  return {array.begin(), array.end()};
}

std::string Describe(const headless::SceneData& scene) {
  std::string text;
  const auto number = [](const std::vector<float>& value) {
    return value.empty() ? std::string() : std::to_string(static_cast<int>(value[0]));
  };
  for (const headless::ItemData* item : Meshes(scene)) {
    text += item->name + ":";
    for (const Polygon& polygon : Unfold(*item->mesh)) {
      text += " (" + polygon.material + (polygon.part.empty() ? "" : "|" + polygon.part);
      for (const Corner& corner : polygon.corners) {
        text += " " + number(corner.position) + "/" + number(corner.uv) + "/" + number(corner.normal);
      }
      text += ")";
    }
    text += "\n";
  }
  return text;
}

TEST(ObjReader, ReadsStatements) {
  const struct {
    std::string text;
    std::string expected;
  } kCases[] = {
      {"f 1 2 3", "model: (Default 1// 2// 3//)\n"},
      {"f 1/1 2/2 3/3\n", "model: (Default 1/1/ 2/2/ 3/3/)\n"},
      {"f 1/3/2 2//1 4", "model: (Default 1/3/2 2//1 4//)\n"},
      {"f 1 2/2 3\nf 4//1 3 2", "model: (Default 1// 2/2/ 3//) (Default 4//1 3// 2//)\n"},
      {"f 1/ 2// 3/1/ 4//", "model: (Default 1// 2// 3/1/ 4//)\n"},
      {"f -4 -3/-1 -1/-3/-2", "model: (Default 1// 2/3/ 4/1/1)\n"},
      {"f +1 +2 03", "model: (Default 1// 2// 3//)\n"},
      {"  f\t1\t 2  3  # a comment\n", "model: (Default 1// 2// 3//)\n"},
      {"f 1 2 \\\n  3 \\\r\n 4\\\n\nf 1 2 \\\n3", "model: (Default 1// 2// 3// 4//) (Default 1// 2// 3//)\n"},
      {"f \\\n1 2 3\r\nf 2 3 4\r", "model: (Default 1// 2// 3//) (Default 2// 3// 4//)\n"},
      {"# a path C:\\\nf 1 2 3", "model: (Default 1// 2// 3//)\n"},
      {"f 1 2 5\nf 1 5 6\nv 5 0 0\nv 6 0 0", "model: (Default 1// 2// 5//) (Default 1// 5// 6//)\n"},
      {"f 1/1\nf\nf 1 2\nf 1 2 3", "model: (Default 1// 2// 3//)\n"},
      {std::string("f 1 2 3\n\0\n", 10), "model: (Default 1// 2// 3//)\n"},

      {"usemtl a b \t\nf 1 2 3\nusemtl c#\nf 2 3 4\nusemtl\nf 3 4 1",
       "model: (a b 1// 2// 3//) (c# 2// 3// 4//) (Default 3// 4// 1//)\n"},
      {"usemtl a\nusemtl b\nf 1 2 3\nusemtl a\nusemtl b\nf 2 3 4", "model: (b 1// 2// 3//) (b 2// 3// 4//)\n"},
      {"f 1 2 3\nusemtl b\nf 2 3", "model: (Default 1// 2// 3//)\n"},
      {"usemtl \xE6\nf 1 2 3\nusemtl \xC3\xA6\nf 2 3 4", "model: (\xC3\xA6 1// 2// 3//) (\xC3\xA6 2// 3// 4//)\n"},
      {"usemtl a \\\n b\nf 1 2 3", "model: (a   b 1// 2// 3//)\n"},

      {"f 1 2 3\no A\nf 2 3 4\no B 1 \nf 1 2 3\no A\nf 3 4 1",
       "model: (Default 1// 2// 3//)\nA: (Default 2// 3// 4//) (Default 3// 4// 1//)\nB 1: (Default 1// 2// "
       "3//)\n"},
      {"g x\nf 1 2 3\ng y\nf 2 3 4\ng x\nf 3 4 1\ng\nf 4 1 2",
       "x: (Default 1// 2// 3//) (Default 3// 4// 1//)\ny: (Default 2// 3// 4//)\nmodel: (Default 4// 1// 2//)\n"},
      {"o A\nf 1 2 3\ng x\nf 2 3 4\ng y\nf 3 4 1\ng x\nf 4 1 2",
       "A: (Default 1// 2// 3//) (Default|x 2// 3// 4//) (Default|y 3// 4// 1//) (Default|x 4// 1// 2//)\n"},
      {"g A\nf 1 2 3\no A\nf 2 3 4", "A: (Default 1// 2// 3//)\nA: (Default|A 2// 3// 4//)\n"},
      {"o empty\no short\nf 1 2\no A\nf 1 2 3", "A: (Default 1// 2// 3//)\n"},
  };
  for (const auto& [text, expected] : kCases) {
    const Result result = ReadText(kStreams + text);
    EXPECT_EQ(result.error, "") << text;
    EXPECT_EQ(Describe(result.scene), expected) << text;
  }
}

TEST(ObjReader, ReadsFilesOfOtherSystems) {
  std::string text = std::string(kStreams) + "o A\nf 1 2 3\n";
  EXPECT_EQ(Describe(ReadText("\xEF\xBB\xBF" + text).scene), "A: (Default 1// 2// 3//)\n");
  std::string oldMac = text;
  std::replace(oldMac.begin(), oldMac.end(), '\n', '\r');
  EXPECT_EQ(Describe(ReadText(oldMac).scene), "A: (Default 1// 2// 3//)\n");
  EXPECT_EQ(ReadText(oldMac + "f 9").error.substr(0, 13), "model.obj:12:");
}

TEST(ObjReader, KeepsWhatAMeshUsesInTheOrderOfItsUse) {
  const Result result =
      ReadText(std::string(kStreams) + "o A\nf 3 1 4\nf 4 1 3\no B\nusemtl a\nf 1 2\nusemtl b\nf 2 1 4");
  const auto meshes = Meshes(result.scene);
  ASSERT_EQ(meshes.size(), 2u);
  EXPECT_THAT(Values(meshes[0]->mesh->points), ElementsAre(3, 1, 0, 1, 0, 0, 4, 1, 0));
  EXPECT_THAT(Values(meshes[0]->mesh->polygonPoints), ElementsAre(0, 1, 2, 2, 1, 0));
  EXPECT_THAT(Values(meshes[1]->mesh->points), ElementsAre(2, 0, 0, 1, 0, 0, 4, 1, 0));
  EXPECT_THAT(meshes[1]->mesh->material.texts, ElementsAre("b"));
  EXPECT_THAT(meshes[1]->mesh->maps, IsEmpty());
  EXPECT_TRUE(meshes[1]->mesh->part.perPolygon.empty());
}

// One colour in two shapes of lines, no colour, and a colour with alpha.
TEST(ObjReader, ReadsColors) {
  const struct {
    const char* text;
    std::uint32_t type;
    std::vector<float> colors;  // per point of the one face; -1 for none
  } kCases[] = {
      {"v 0 0 0 .5 .25 1\nv 1 0 0\nv 0 1 0 0 1 0\nf 1 2 3", kMapRgb, {.5, .25, 1, -1, 0, 1, 0}},
      {"v 0 0 0 1 0 .5\nv 1 0 0 1\nv 0 1 0 0 1 0 .5\nf 1 3 2", kMapRgba, {1, 0, .5, 1, 0, 1, 0, .5, -1}},
      {"v 0 0 0 1 .5 0 1 .25\nv 1 0 0\nv 0 1 0\nf 1 2 3", kMapRgba, {.5, 0, 1, .25, -1, -1}},
      {"v 0 0 0\nv 1 0 0\n#MRGB ffff0000\n#MRGB 0000ff0099887766\nv 0 1 0\n#MRGB 400000FFxx\nf 1 2 3",
       kMapRgb,
       {1, 0, 0, 0, 1, 0, 0, 0, 1}},
  };
  for (const auto& [text, type, colors] : kCases) {
    const Result result = ReadText(text);
    ASSERT_EQ(Meshes(result.scene).size(), 1u) << text << result.error;
    const MeshData& mesh = *Meshes(result.scene)[0]->mesh;
    ASSERT_EQ(mesh.maps.size(), 1u) << text;
    const MeshMapData& map = mesh.maps[0];
    EXPECT_EQ(map.type, type) << text;
    EXPECT_EQ(map.dimension, type == kMapRgba ? 4u : 3u);
    std::vector<float> found;
    for (const std::uint32_t value : map.pointValues) {
      if (value == kNone) found.push_back(-1);
      for (std::uint32_t i = 0; value != kNone && i < map.dimension; ++i) {
        found.push_back(map.values[std::size_t{value} * map.dimension + i]);
      }
    }
    EXPECT_EQ(found, colors) << text;
  }
}

TEST(ObjReader, TakesFacetsOnlyForWholeMeshes) {
  const Result result = ReadText(std::string(kStreams) +
                                 "o plain\nf 1 2 3\ns off\no flat\nf 1 2 3\no mixed\nf 1 2 3\ns 1\nf 2 3 4\n"
                                 "s 0\no zero\nf 1 2 3");
  std::vector<double> angles;
  for (const auto* item : Meshes(result.scene)) angles.push_back(item->mesh->smoothingAngle);
  const double usual = MeshData().smoothingAngle;
  EXPECT_THAT(angles, ElementsAre(usual, 0, usual, 0));
}

TEST(ObjReader, RefusesWrongLines) {
  const struct {
    const char* text;
    const char* error;
  } kCases[] = {
      {"f 1 2 5", "model.obj:10: point index 5 is out of range, there are 4 points"},
      {"f 1 2 9\nv 5 0 0\nf 1 2 99", "model.obj:10: point index 9 is out of range, there are 5 points"},
      {"f 1 2 5\nf 1 2 6\nv 5 0 0", "model.obj:11: point index 6 is out of range, there are 5 points"},
      {"f 1 2 0", "model.obj:10: point index 0 is out of range, there are 4 points"},
      {"\nf 1 2 -5\nv 5 0 0", "model.obj:11: point index -5 is out of range, there are 4 points so far"},
      {"f 1/1 2/2 3/4",
       "model.obj:10: texture coordinate index 4 is out of range, there are 3 texture coordinates"},
      {"f 1//1 2//2 3//3\n", "model.obj:10: normal index 3 is out of range, there are 2 normals"},
      {"f 1 2 \\\n 4294967299", "model.obj:11: point index 4294967299 is out of range, there are 4 points"},
      {"f 1 2 18446744073709551617", "model.obj:10: bad point index in \"18446744073709551617\""},
      {"f 1 2 x", "model.obj:10: bad point index in \"x\""},
      {"f 1 2 3.5", "model.obj:10: bad corner \"3.5\""},
      {"f 1/1/1/1 2 3", "model.obj:10: bad corner \"1/1/1/1\""},
      {"f 1 2 3/x", "model.obj:10: bad texture coordinate index in \"x\""},
      {"v 1 2", "model.obj:10: a point needs 3 numbers, found 2"},
      {"v\n", "model.obj:10: a point needs 3 numbers, found 0"},
      {"vt\nf 1 2 3", "model.obj:10: a texture coordinate needs 1 number, found 0"},
      {"vn 1 2 # 3", "model.obj:10: a normal needs 3 numbers, found 2"},
      {"v 1 2 three", "model.obj:10: bad number \"three\""},
      {"v 1 2 3,5", "model.obj:10: bad number \"3,5\""},
      {"v 1.0.0 2 3", "model.obj:10: bad number \"1.0.0\""},
      {"v +-1 2 3", "model.obj:10: bad number \"+-1\""},
      {"v 1 2 -", "model.obj:10: bad number \"-\""},
      {"v 1 nan 3", "model.obj:10: not a finite number \"nan\""},
      {"vn 1 2 -inf", "model.obj:10: not a finite number \"-inf\""},
      {"vt 1e39", "model.obj:10: not a finite number \"1e39\""},
  };
  for (const auto& [text, error] : kCases) EXPECT_EQ(ReadText(std::string(kStreams) + text).error, error) << text;
  EXPECT_EQ(ReadText("f 1 1 1").error, "model.obj:1: point index 1 is out of range, there are 0 points");
  EXPECT_EQ(ReadText("not a model\nat all").error, "model.obj: holds no OBJ statement");
}

TEST(ObjReader, RefusesWhatIsNoFile) {
  const HostDirectory directory;
  readers::ReadReport report;
  std::filesystem::create_directory(directory / "folder.obj");
  EXPECT_THROW(readers::ReadObj(directory / "folder.obj", report), readers::InputError);
  EXPECT_THROW(readers::ReadObj(directory / "missing.obj", report), readers::InputError);
}

TEST(ObjReader, WarnsOnceOfWhatItSkips) {
  const struct {
    std::string text;
    std::vector<std::string> warnings;
  } kCases[] = {
      {"f 1 2 3", {}},
      {"l 1 2\nl 2 \\\n3\np 1\nvp 0 0\ncurv 0 1 1 2\nend\nlod 1\ncall x\nfoo\nbar\nf 1 2\nf 1 2 3",
       {"model.obj: skipped 2 lines, 1 point statement, 3 curve or surface statements, 1 display statement, 1 "
        "call, "
        "1 face with fewer than 3 corners, 2 unknown statements (first \"foo\")"}},
      {"v 3.1+e2 2-E1 0\nf 1 2 3", {"model.obj: skipped 2 broken exponents"}},
      {"", {"model.obj: holds no polygons"}},
      {"mtllib none.mtl\nmtllib none.mtl\nusemtl a\nf 1 2 3", {"material library not found: none.mtl"}},
  };
  for (const auto& [text, warnings] : kCases) EXPECT_EQ(ReadText(kStreams + text).warnings, warnings) << text;

  const Result empty = ReadText("");
  EXPECT_EQ(empty.error, "");
  EXPECT_THAT(empty.warnings, ElementsAre("model.obj: holds no polygons"));
  EXPECT_THAT(Meshes(empty.scene), IsEmpty());
  EXPECT_EQ(Unfold(*Meshes(ReadText("v 3.1+e2 2-E1 0\nf 1 1 1").scene)[0]->mesh)[0].corners[0].position,
            (std::vector<float>{3.1f, 2, 0}));
}

}  // namespace
