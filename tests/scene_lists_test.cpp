// Long lists of numbers in scene files, which are read from the text and not from the tree.
#include "readers/read_scene.h"
#include "tests/support/host_directory.h"

#include <gmock/gmock.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using headless::SceneData;
using test_support::HostDirectory;
using testing::HasSubstr;

SceneData Read(const HostDirectory& directory, const std::string& json) {
  directory.WriteFile("scene.orvo", json);
  readers::ReadReport report;
  return readers::ReadSceneFile(directory / "scene.orvo", report);
}

// The message behind the file's name, empty when the file is read.
std::string Fault(const std::string& json) {
  const HostDirectory directory;
  try {
    Read(directory, json);
  } catch (const readers::InputError& error) {
    return std::string(error.what()).substr((directory / "scene.orvo").string().size());
  }
  return {};
}

std::string Repeat(int count, const std::string& text) {
  std::string list;
  for (int i = 0; i < count; ++i) list += text;
  return list;
}

// A list of 100 entries with `odd` in the place of the 90th one.
std::string Odd(const std::string& entry, const std::string& odd) {
  return "[" + Repeat(89, entry + ", ") + odd + ", " + Repeat(9, entry + ",") + entry + "]";
}

std::string Item(const std::string& keys) { return R"({"orvo": 1, "items": [{"id": "a", )" + keys + "}]}"; }
std::string Mesh(const std::string& keys) { return Item("\"mesh\": {" + keys + "}"); }
std::string Points(const std::string& keys) { return Mesh("\"points\": " + Odd("[1, 2, 3]", "[4,5,6]") + keys); }

TEST(LongLists, TellTheirFaultsAsShortOnesDo) {
  const struct {
    std::string json, message;
  } kCases[] = {
      {Mesh("\"points\": " + Odd("[1,2,3]", "[1,2]")), ": /items/0/mesh/points/89: expected 3 numbers, found 2"},
      {Mesh("\"points\": " + Odd("[1,2,3]", "[1,null,2]")), ": /items/0/mesh/points/89/1: expected a number"},
      {Mesh("\"points\": " + Odd("[1,2,3]", "[1,2,1e39]")),
       ": /items/0/mesh/points/89/2: the number is too big for 32 bits"},
      {Mesh("\"points\": " + Odd("1", "[[3]]")), ": /items/0/mesh/points/89: expected 3 numbers, found 1"},
      {Mesh("\"points\": [" + Odd("1", "2") + "]"), ": /items/0/mesh/points/0: expected 3 numbers, found 100"},
      {Mesh("\"points\": " + Odd("1", "2")), ": /items/0/mesh/points: holds 100 numbers, not a multiple of 3"},
      {Mesh("\"points\": " + Odd("1", "\"2\"")),
       ": /items/0/mesh/points/89: expected a number, null or a list, found \"2\""},
      {Mesh("\"points\": [1.5, [[2]], " + Odd("1", "2").substr(1)),
       ": /items/0/mesh/points/1/0: expected a number or null, found a list of 1"},
      {Mesh("\"points\": [1, " + Odd("1", "{}") + "]"),
       ": /items/0/mesh/points/1/89: expected a number or null, found an object"},
      {Points(", \"polygons\": " + Odd("[0,1,2]", "[0,1,100]")),
       ": /items/0/mesh/polygons/89/2: point 100 of 100"},
      {Points(", \"polygons\": [" + Odd("1", "-2") + "]"), ": /items/0/mesh/polygons/0/89: point -2 of 100"},
      {Points(", \"polygons\": [[0,1,2.5]," + Odd("[0,1,2]", "[0,1,2]").substr(1)),
       ": /items/0/mesh/polygons/0/2: expected a whole number, found a number with a fraction"},
      {Points(", \"maps\": [{\"type\": \"WGHT\", \"per\": \"point\", \"values\": " + Odd("null", "[1, 2]") + "}]"),
       ": /items/0/mesh/maps/0/values/89: expected 1 entries, found 2"},
      {Item("\"channels\": {\"b\": {\"keys\": [[0,0], " + Odd("[1,2]", "[1,3]").substr(1) + "}}"),
       ": /items/0/channels/b/keys/2: time 1 doesn't come after 1"},
      {Item("\"channels\": {\"b\": " + Odd("1", "2") + "}"),
       ": /items/0/channels/b: expected 3 entries, found 100"},
      {R"({"orvo": 1, "selection": )" + Odd("1", "2") + "}", ": /selection/0: expected a text, found 1"},
      {R"({"orvo": )" + Odd("1", "2") + "}", ": /orvo: expected 1, found a list of 100"},
      {Odd("1", "2"), ": expected an object, found a list of 100"},
  };
  for (const auto& one : kCases) EXPECT_EQ(Fault(one.json), one.message) << one.json;
}

// What isn't JSON is told by line and column, wherever in a long list it stands.
TEST(LongLists, TellWhatIsNoJson) {
  for (const std::string& wrong :
       std::vector<std::string>{"01",    "1.",   ".5",    "+1",  "1e",   "-",   "--1",
                                "1e999", "nul",  "nullx", "1 2", "[",    "]",   "1,",
                                "[1,]",  "[,1]", "0x1",   "NaN", "1e5x", "tru", std::string(400, '9')}) {
    const std::string before = "{\"orvo\": 1,\n\"selection\": [" + Repeat(80, "1,");
    const std::string message = Fault(before + wrong + Repeat(10, ",1") + "]}");
    EXPECT_THAT(message, testing::StartsWith(":2:")) << wrong;
    EXPECT_THAT(message, testing::Not(HasSubstr("/selection"))) << wrong;
  }
  const std::string good = Points("");
  for (std::size_t size = 0; size < good.size(); size += 7)
    EXPECT_THAT(Fault(good.substr(0, size)), testing::StartsWith(":1:"));
}

TEST(LongLists, BoundTheirNesting) {
  const auto nested = [](int levels, const std::string& inner) {
    return "{\"orvo\": " + std::string(static_cast<std::size_t>(levels), '[') + inner +
           std::string(static_cast<std::size_t>(levels), ']') + "}";
  };
  const std::string longList = Odd("1", "[2]");
  EXPECT_THAT(Fault(nested(1997, longList)), HasSubstr("/orvo: expected 1, found a list"));
  EXPECT_THAT(Fault(nested(1998, longList)), HasSubstr("nested deeper than 2000 levels"));
  EXPECT_THAT(Fault(nested(1000000, longList)), HasSubstr("nested deeper than 2000 levels"));
}

TEST(LongLists, HoldWhatShortOnesHold) {
  const HostDirectory directory;
  std::string keys;
  for (int key = 0; key < 100; ++key) keys += (key ? "," : "") + ("[" + std::to_string(key)) + ", -0]";
  const SceneData scene = Read(
      directory, R"({"orvo": 1, "items": [{"id": "m", "channels": {"b": {"keys": [)" + keys +
                     "]}}, \"mesh\": {\"points\": " + Odd("[1,\n 2\t,3 ]", "[-0, 1e-400, 16777217]") +
                     ", \"pointIds\": " + Odd("7", "18446744073709551615") +
                     ", \"polygons\": " + Odd("[0, 1, 2]", "[]") + ", \"triangles\": " + Odd("[[0,1,2]]", "[]") +
                     R"(, "maps": [{"type": "WGHT", "per": "point", "values": )" + Odd("0.5", "null") +
                     R"(}, {"type": "WGHT", "values": [1, 2], "points": )" + Odd("1", "null") + "}]}}," +
                     R"({"type": "deformer", "id": "d"}, {"type": "deformGroup", "deformGroup": {"meshes": ["m"],
                     "deformers": ["d"], "influences": [)" +
                     Odd("[[0, 0.25]]", "[]") + "]}}]}");
  const headless::ItemData& item = scene.items[1];
  const headless::MeshData& mesh = *item.mesh;
  EXPECT_EQ(mesh.PointCount(), 100u);
  EXPECT_TRUE(std::signbit(mesh.points[3 * 89]));
  EXPECT_EQ(mesh.points[3 * 89 + 2], 16777216.0f);
  EXPECT_EQ(mesh.pointIds[89], ~std::uint64_t{0});
  EXPECT_EQ(mesh.polygonPoints.size(), 3u * 99);
  EXPECT_EQ(mesh.polygonStarts[90], mesh.polygonStarts[89]);
  EXPECT_EQ(mesh.trianglePoints.size(), 3u * 99);
  EXPECT_EQ(mesh.maps[0].values.size(), 99u);
  EXPECT_EQ(mesh.maps[0].pointValues[89], headless::kNone);
  EXPECT_EQ(mesh.maps[1].pointValues[89], headless::kNone);
  EXPECT_EQ(mesh.maps[1].pointValues[99], 1u);
  const headless::EnvelopeData& envelope = *item.channels.back().extras->envelope;
  ASSERT_EQ(envelope.keys.size(), 100u);
  EXPECT_TRUE(std::signbit(envelope.keys[99].value));
  const headless::RecordedInfluences& influences = *scene.items[3].deformGroup->influences.at(0);
  EXPECT_EQ(influences.starts[100], 99u);
  EXPECT_EQ(influences.weights[98], 0.25f);
}

}  // namespace
