#include "headless/scene_data.h"
#include "host/fourcc.h"
#include "host/scene_api.h"
#include "readers/read_scene.h"
#include "tests/support/glb_reader.h"
#include "tests/support/host_directory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <numbers>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using headless::ItemData;
using headless::ItemIndex;
using headless::kNone;
using headless::SceneData;
using test_support::HostDirectory;
using testing::ElementsAre;

SceneData ReadJson(const HostDirectory& directory, const std::string& json) {
  directory.WriteFile("scene.orvo", json);
  readers::ReadReport report;
  return readers::ReadSceneFile(directory / "scene.orvo", report);
}

SceneData ReadJson(const std::string& json) { return ReadJson(HostDirectory(), json); }

// The message without the directory, empty when the file is read.
std::string Fault(const HostDirectory& directory, const std::string& json) {
  try {
    ReadJson(directory, json);
  } catch (const readers::InputError& error) {
    const std::string text = error.what();
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    const std::string path = (directory / "scene.orvo").string();
    EXPECT_EQ(text.substr(0, path.size()), path);
    return text.substr(std::min(path.size(), text.size()));
  }
  return {};
}

const ItemData& Item(const SceneData& scene, const std::string& id) {
  for (const ItemData& item : scene.items)
    if (item.id == id) return item;
  throw std::runtime_error("no item " + id);
}

std::string IdOf(const SceneData& scene, ItemIndex index) {
  return index < 0 ? "-" : scene.items[static_cast<std::size_t>(index)].id;
}

std::vector<std::string> Ids(const SceneData& scene) {
  std::vector<std::string> ids;
  for (const ItemData& item : scene.items) ids.push_back(item.id);
  return ids;
}

std::vector<std::string> IdsOf(const SceneData& scene, const std::vector<ItemIndex>& items) {
  std::vector<std::string> ids;
  for (const ItemIndex item : items) ids.push_back(IdOf(scene, item));
  return ids;
}

const headless::ChannelData& Channel(const ItemData& item, const std::string& name) {
  return item.channels.at(static_cast<std::size_t>(headless::FindChannel(item, name)));
}

template <class T>
std::vector<T> Values(const headless::Array<T>& array) {
  return {array.begin(), array.end()};
}

template <class T>
std::string Bytes(const std::vector<T>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

std::string Items(const std::string& items) { return R"({"orvo": 1, "items": [)" + items + "]}"; }
std::string Mesh(const std::string& keys) { return Items(R"({"name": "M", "mesh": {)" + keys + "}}"); }

const std::string kTriangle = R"("points": [[0,0,0],[1,0,0],[0,1,0]], "polygons": [[0,1,2]])";

// Keys that name the next each; the last names nothing.
std::string Chain(int count) {
  std::string keys;
  for (int i = 1; i < count; ++i) keys += "\"t" + std::to_string(i) + "\": \"t" + std::to_string(i + 1) + "\", ";
  return keys + "\"t" + std::to_string(count) + "\": \"\"";
}

struct WrongInput {
  std::string json;
  const char* message;
};

const WrongInput kWrongInputs[] = {
    {"", ":1:1: The document is empty."},
    {"{\"orvo\": 1,\n \"items\": [", ":2:12: Invalid value."},
    {"{\"orvo\": 1}\n}", ":2:1: The document root must not be followed by other values."},
    {R"({"orvo": 1, "comment": "a\u0000b"})", ":1:34: a text holds a zero character"},
    {"{\"orvo\": 1, \"comment\": \"\xff\"}", ":1:25: Invalid encoding in string."},
    {std::string("{\"orvo\": 1}\0 ", 13), ":1:12: unexpected zero byte"},
    {"[]", ": expected an object, found a list of 0"},
    {"{}", ": key \"orvo\" is missing"},
    {R"({"orvo": 2})", ": /orvo: expected 1, found 2"},
    {R"({"orvo": 1, "items": 3})", ": /items: expected a list, found 3"},
    {R"({"orvo": 1, "tyme": {}})", ": /tyme: unknown key \"tyme\"; is \"time\" meant?"},
    {R"({"orvo": 1, "time": {"fps": 1, "fps": 2}})", ": /time: key \"fps\" stands twice"},
    {R"({"orvo": 1, "time": {"fps": "fast"}})", ": /time/fps: expected a number, found \"fast\""},
    {R"({"orvo": 1, "userValues": {"a/b~": 1.5}})",
     ": /userValues/a~1b~0: expected a whole number or null, found a number with a fraction"},
    {R"({"orvo": 1, "exportTagsCommand": "on"})",
     ": /exportTagsCommand: expected \"works\", \"absent\" or \"fails\", found \"on\""},
    {R"({"orvo": 1, "types": {)" + Chain(18) + "}}", ": /types/t1: has more than 16 types above it"},
    {R"({"orvo": 1, "types": {"mesh": "locator"}})", ": /types/mesh: the host has a type \"mesh\" of its own"},
    {Items(R"("x")"), ": /items/0: expected an item, an object"},
    {Items(R"({"postion": [0,0,0]})"), ": /items/0/postion: unknown key \"postion\"; is \"position\" meant?"},
    {Items(R"({"type": "mehs"})"), ": /items/0/type: unknown type \"mehs\"; \"types\" can add it"},
    {Items(R"({"type": "a\n\u001b\u007f"})"), ": /items/0/type: unknown type \"a???\"; \"types\" can add it"},
    {Items(R"({"channels": {)" + Chain(4097) + "}}"), ": /items/0/channels: holds more than 4096 channels"},
    {Items(R"({"id": "a", "children": [{"parent": "b"}]}, {"id": "b"})"),
     ": /items/0/children/0/parent: the item stands among the children of another one"},
    {Items(R"({"id": "a", "children": ["b", "b"]}, {"id": "b"})"),
     ": /items/0/children/1: the item stands here twice"},
    {Items(R"({"children": [{"type": "scene"}]})"),
     ": /items/0/children/0: a scene has one scene item, which stands at the top of \"items\""},
    {Items(R"({"position": [0, 1]})"), ": /items/0/position: expected 3 entries, found 2"},
    {Items(R"({"position": [0, 0, 0], "transforms": []})"),
     ": /items/0/position: is short for an entry of \"transforms\", which stands here too"},
    {Items(R"({"transforms": [{"type": "scale", "main": true}, {"type": "scale", "main": true}]})"),
     ": /items/0/transforms/1/main: the locator has a main scale already"},
    {Items(R"({"rotationOrder": "xyz"})"), ": /items/0/rotationOrder: needs a \"rotation\" beside it"},
    {Items(R"({"tags": {"LONGER": ""}})"), ": /items/0/tags/LONGER: expected a code of one to four characters"},
    {Items(R"({"world": [1, 0]})"), ": /items/0/world: expected 16 entries, found 2"},
    {Items(R"({"world": {"times": [0, 1], "matrices": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}})"),
     ": /items/0/world/matrices: 1 matrices for 2 times"},
    {Items(R"({"channels": {"a": {"keys": []}}})"), ": /items/0/channels/a/keys: needs at least one key"},
    {Items(R"({"channels": {"a": {"keys": [[1, 0], [1, 0]]}}})"),
     ": /items/0/channels/a/keys/1: time 1 doesn't come after 1"},
    {Items(R"({"channels": {"a": {"keys": [[1, 0, "fast"]]}}})"),
     ": /items/0/channels/a/keys/0/2: expected \"step\", \"linear\" or \"cubic\", found \"fast\""},
    {Items(R"({"type": "mask", "channels": {"enable": 0.5}})"),
     ": /items/0/channels/enable: the channel holds integers; {\"type\": \"float\", ...} changes that"},
    {Items(R"({"type": "mask", "channels": {"ptag": 1}})"), ": /items/0/channels/ptag: the channel holds texts"},
    {Items(R"({"type": "camera", "mesh": {}})"),
     ": /items/0/mesh: only an item of type \"mesh\" has this, and the item is a \"camera\""},
    {Items(R"({"mesh": "m"})"), ": /items/0/mesh: \"meshes\" has no mesh of that name"},
    {R"({"orvo": 1, "items": [{"id": "a"}], "links": [{"from": ["a", "x"], "to": ["a", 0]}]})",
     ": /links/0/from/1: item \"a\" has no channel \"x\""},
    {R"({"orvo": 1, "items": [{"id": "a"}], "links": [{"from": ["a", 6], "to": ["a", 0]}]})",
     ": /links/0/from/1: channel 6 of 6"},
    {Items(R"({"type": "actionclip", "clip": {"motion": {"b": {}}}})"),
     ": /items/0/clip/motion/b: no item has the id \"b\""},
    {Items(R"({"id": "m", "mesh": {"points": [0,0,0]}}, {"type": "deformGroup", "deformGroup": {"meshes": ["m"],
              "deformers": [{"type": "deformer"}], "influences": [[[[1, 0.5]]]]}})"),
     ": /items/1/deformGroup/influences/0: influence 0: deformer 1 of 1"},
    {Items(R"({"id": "m", "mesh": {"points": [0,0,0]}}, {"type": "deformGroup", "deformGroup": {"meshes": ["m"],
              "deformers": [{"type": "deformer"}], "influences": [[[[0, 0.5], [0, 0.5]]]]}})"),
     ": /items/1/deformGroup/influences/0: point 0 has 2 influences in a mesh of 1 points"},
    {Mesh(R"("points": [0, 0, 0], "polygons": [[0, 0, 9]])"), ": /items/0/mesh/polygons/0/2: point 9 of 1"},
    {Mesh(R"("points": [0, 0, 0], "polygons": [[0, 0, -1]])"), ": /items/0/mesh/polygons/0/2: point -1 of 1"},
    {Mesh(R"("points": [0, 0, 0], "polygons": {"points": [0, 0, 7], "sides": 3})"),
     ": /items/0/mesh: polygon 0, corner 2: point 7 of 1"},
    {Mesh(R"("points": [0, 0, 0], "polygons": {"points": [0, 0], "sides": 3})"),
     ": /items/0/mesh/polygons/points: holds 2 numbers, not a multiple of 3"},
    {Mesh(R"("points": [0, 0])"), ": /items/0/mesh/points: holds 2 numbers, not a multiple of 3"},
    {Mesh(R"("points": [[0, 0]])"), ": /items/0/mesh/points/0: expected 3 numbers, found 2"},
    {Mesh(R"("points": [0, 0, 1e39])"), ": /items/0/mesh/points/2: the number is too big for 32 bits"},
    {Mesh(kTriangle + R"(, "material": ["a", "b"])"), ": /items/0/mesh/material: 2 tags for 1 polygons"},
    {Mesh(kTriangle + R"(, "maps": [{"type": "TXUV", "per": "point", "values": [[0, 0], null]}])"),
     ": /items/0/mesh/maps/0/values: 2 values for 3 points"},
    {Mesh(kTriangle + R"(, "maps": [{"type": "XYZW", "values": []}])"),
     ": /items/0/mesh/maps/0: a map of this type needs its \"dimension\""},
    {Mesh(kTriangle + R"(, "triangles": [[[0, 1, 3]]])"), ": /items/0/mesh/triangles/0/0/2: point 3 of 3"},
    {Mesh(R"("box": [1, 1, 1], "points": [])"), ": /items/0/mesh/box: a box brings its own points and polygons"},
    {Mesh(R"("points": {"file": "a.bin", "offset": 99, "count": 0})"),
     ": /items/0/mesh/points: \"a.bin\" has 36 bytes, too few for 0 numbers from byte 99"},
    {Mesh(R"("points": {"file": "a.bin", "count": 9, "type": "u32"})"),
     ": /items/0/mesh/points/type: expected \"f32\" or \"f64\""},
};

TEST(SceneFile, WrongInputIsToldInOneLineWithItsPlace) {
  const HostDirectory directory;
  directory.WriteFile("a.bin", std::string(36, '\0'));
  for (const WrongInput& wrong : kWrongInputs) {
    SCOPED_TRACE(wrong.json.substr(0, 1000));
    EXPECT_EQ(Fault(directory, wrong.json), wrong.message);
  }
}

TEST(SceneFile, TakesDeepNesting) {
  std::string item = "{}";
  for (int level = 0; level < 990; ++level) item = R"({"children": [)" + item + "]}";
  EXPECT_EQ(ReadJson(Items(item)).items.back().parent, 990);
}

// Whatever part of a file is missing, the reader says so and doesn't crash.
TEST(SceneFile, RefusesEveryTruncation) {
  const HostDirectory directory;
  const std::string text =
      Mesh(kTriangle + R"(, "maps": [{"type": "TXUV", "per": "point", "values": [0,0,1,0,0,1]}])");
  ASSERT_EQ(Fault(directory, text), "");
  for (std::size_t size = 0; size < text.size(); ++size)
    EXPECT_NE(Fault(directory, text.substr(0, size)), "") << text.substr(0, size);
}

TEST(SceneFile, ReadsNumbersExactly) {
  const SceneData scene = ReadJson("\xEF\xBB\xBF" + Items(R"({"channels": [
      {"name": "a", "value": 0.9868011474609375}, {"name": "b", "value": -0.0},
      {"name": "c", "value": 4.9406564584124654e-324}, {"name": "d", "value": 2147483648},
      {"name": "e", "value": 9007199254740993.0}, {"name": "f", "value": 7}]})"));
  const auto number = [&](int channel) {
    return std::get<double>(scene.items.at(1).channels.at(static_cast<std::size_t>(channel)).setup);
  };
  EXPECT_EQ(number(0), 0x1.f93ep-1);
  EXPECT_TRUE(number(1) == 0 && std::signbit(number(1)));
  EXPECT_EQ(number(2), 0x1p-1074);
  EXPECT_EQ(number(3), 2147483648.0);
  EXPECT_EQ(number(4), 9007199254740992.0);
  EXPECT_EQ(std::get<std::int32_t>(scene.items[1].channels[5].setup), 7);
}

TEST(SceneFile, OrdersItemsAndGivesIds) {
  const SceneData scene = ReadJson(Items(R"(
      {"name": "Table", "position": [1, 2, 3], "rotation": [0, 90, 0], "rotationOrder": "zyx",
       "children": [{"name": "Leg"}, {"name": "Leg"}, {"id": "Leg#1"}]},
      {"id": "Late", "parent": "Top"},
      {"id": "Top", "name": "Table", "children": ["B", "Late", {"id": "A"}]},
      {"id": "B"}, {"type": "camera"}, {"name": "C", "parent": "Top"})"));
  EXPECT_THAT(Ids(scene), ElementsAre("scene", "Table", "Table.position", "Table.rotation", "Leg#2", "Leg#3",
                                      "Leg#1", "Late", "Top", "A", "B", "Camera", "C"));
  const ItemData& top = Item(scene, "Top");
  EXPECT_EQ(top.name, "Table");
  EXPECT_THAT(IdsOf(scene, top.extras->childOrder), ElementsAre("B", "Late", "A"));
  for (const char* child : {"A", "B", "C", "Late"})
    EXPECT_EQ(IdOf(scene, Item(scene, child).parent), "Top") << child;
  EXPECT_EQ(IdOf(scene, Item(scene, "Leg#3").parent), "Table");

  const ItemData& rotation = Item(scene, "Table.rotation");
  EXPECT_EQ(std::get<double>(Channel(rotation, "rot.Y").setup), std::numbers::pi / 2);
  EXPECT_EQ(std::get<std::int32_t>(Channel(rotation, "order").setup), 5);
  const ItemData& table = Item(scene, "Table");
  EXPECT_EQ(IdOf(scene, table.mainTransforms[static_cast<int>(TransformKind::Position)]), "Table.position");
  EXPECT_EQ(IdOf(scene, table.mainTransforms[static_cast<int>(TransformKind::Rotation)]), "Table.rotation");
  EXPECT_EQ(table.mainTransforms[static_cast<int>(TransformKind::Scale)], -1);
  EXPECT_THAT(scene.graphs.at("xfrmCore"), ElementsAre(std::pair(2, 1), std::pair(3, 1)));
}

TEST(SceneFile, StacksTransformsAsListed) {
  const SceneData scene = ReadJson(Items(R"(
      {"id": "L", "transforms": [
         {"type": "translation", "name": "RotPivot", "value": [1, 0, 0], "main": false},
         "Flat",
         {"type": "rotation", "value": {"keys": [[0, 0, 0, 0], [1, 180, 0, 0, "step"]], "after": "repeat"}},
         {"type": "rotation", "main": true},
         {"type": "transform", "inverseOf": "L.RotPivot"}]},
      {"id": "Flat", "type": "translation", "channels": ["pos.Z", {"name": "pos.X", "links": 3, "readable": false}]},
      {"id": "N", "transforms": ["L.scale"], "mainTransforms": {"position": "Flat", "scale": null}},
      {"id": "L.scale", "type": "scale"}, {"id": "Off", "locator": false})"));
  std::vector<std::string> stack;
  for (const auto& [transform, locator] : scene.graphs.at("xfrmCore"))
    stack.push_back(IdOf(scene, transform) + ">" + IdOf(scene, locator));
  EXPECT_THAT(stack, ElementsAre("L.RotPivot>L", "Flat>L", "L.rotation>L", "L.rotation#1>L", "L.transform>L",
                                 "L.scale>N"));
  const auto mains = [&](const char* id) {
    const auto& item = Item(scene, id);
    return IdsOf(scene, {item.mainTransforms.begin(), item.mainTransforms.end()});
  };
  EXPECT_THAT(mains("L"), ElementsAre("-", "L.rotation#1", "Flat"));
  EXPECT_THAT(mains("N"), ElementsAre("-", "-", "Flat"));
  EXPECT_FALSE(Item(scene, "Off").hasLocator);
  EXPECT_EQ(IdOf(scene, Item(scene, "L.transform").inverseOf), "L.RotPivot");
  const ItemData& flat = Item(scene, "Flat");
  ASSERT_EQ(flat.channels.size(), 2u);
  EXPECT_EQ(flat.channels[0].name, "pos.Z");
  EXPECT_EQ(flat.channels[1].name, "pos.X");
  EXPECT_EQ(flat.channels[1].extras->linkCount, 3u);
  EXPECT_FALSE(flat.channels[1].extras->readable);
  const auto& turn = *Channel(Item(scene, "L.rotation"), "rot.X").extras->envelope;
  EXPECT_EQ(turn.keys.at(1).value, std::numbers::pi);
  EXPECT_EQ(turn.keys[1].interpolation, headless::Interpolation::Step);
  EXPECT_EQ(turn.after, headless::Extrapolation::Repeat);
}

TEST(SceneFile, KeepsSettingsGraphsAndReferences) {
  const SceneData scene = ReadJson(R"({"orvo": 1,
      "application": {"name": "A", "build": 7, "osName": "B", "osVersion": "C"},
      "userValues": {"x": 2, "y": null}, "exportTagsCommand": "fails", "types": {"bone": "locator"},
      "time": {"current": 0.5, "start": 1, "end": 2, "fps": 30},
      "items": [{"id": "a", "type": "bone", "tags": {"RGB": "t"}, "world": {"times": [0, 1],
                 "matrices": [[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1], [1,0,0,0, 0,1,0,0, 0,0,1,0, 5,0,0,1]],
                 "between": "linear"}},
                {"id": "g", "type": "group", "actor": true, "group": {"channels": [["a", "worldMatrix"], ["a", 0]]}},
                {"id": "c", "type": "actionclip", "clip": {
                 "channels": [{"channel": ["a", "worldMatrix"], "value": 2},
                              {"channel": ["a", 0], "keys": [[0, 1, "cubic", 2, 3]]}]}}],
      "graphs": {"targets": null, "xfrmLocal": [["a", "g"], ["g", "a"]]},
      "renderCameras": ["a"]})");
  EXPECT_EQ(scene.application.name + scene.application.osName + scene.application.osVersion, "ABC");
  EXPECT_EQ(scene.application.build, 7);
  EXPECT_THAT(scene.userValues, ElementsAre(std::pair("x", 2), std::pair("y", -1)));
  EXPECT_EQ(scene.exportTagsCommand, headless::CommandState::Fails);
  const std::pair<const char*, double> times[] = {{"time", 0.5}, {"currentS", 1}, {"currentE", 2}, {"fps", 30}};
  for (const auto& [name, value] : times) EXPECT_EQ(std::get<double>(Channel(scene.items[0], name).setup), value);
  EXPECT_EQ(scene.graphs.count("targets"), 0u);
  EXPECT_THAT(scene.graphs.at("xfrmLocal"), ElementsAre(std::pair(1, 2), std::pair(2, 1)));
  EXPECT_THAT(scene.graphs.at("currentGroups"), ElementsAre(std::pair(0, 2)));
  EXPECT_THAT(IdsOf(scene, scene.renderCameras), ElementsAre("a"));

  const ItemData& a = Item(scene, "a");
  EXPECT_EQ(a.extras->tags.at(kMapRgb), "t");
  EXPECT_FALSE(a.world->bind);
  EXPECT_TRUE(a.world->linear);
  EXPECT_EQ(a.world->keys.at(1).matrix.m[12], 5);
  const ItemData& actor = Item(scene, "g");
  EXPECT_EQ(actor.extras->tags.at(kTagGroupType), "actor");
  EXPECT_EQ(actor.group->channels.at(0).channel, 3);
  const headless::ClipData& clip = *Item(scene, "c").clip;
  EXPECT_EQ(std::get<double>(std::get<headless::ChannelValue>(clip.channels.at(0).second)), 2);
  EXPECT_EQ(std::get<headless::EnvelopeData>(clip.channels.at(1).second).keys.at(0).slopeOut, 3);
}

TEST(SceneFile, ReadsInlineMeshes) {
  const SceneData scene = ReadJson(Mesh(R"(
      "points": [[0,0,0],[1,0,0],[1,1,0],[0,1,0]], "pointIds": [7, 18446744073709551615, 9, 10],
      "polygons": [[0,1,2,3],[0,2],[3,2,1]], "material": ["a", null, "a"], "part": {"texts": ["p"], "polygons": [-1,0,0]},
      "maps": [{"type": "RGB", "per": "corner", "values": [[1,0,0],null,[0,1,0],null,null,null,null,null,[0,0,1]]},
               {"type": "WGHT", "name": "w", "values": [0.5], "points": [0, null, -1, 0]}],
      "triangles": [[[0,1,2],[0,2,3]],[],[[3,2,1]]],
      "cornerNormals": [[0,0,1],[0,0,1],[0,0,1],[0,0,1],[0,0,1],[0,0,1],[0,0,1],[0,0,1],[0,0,0.1]],
      "smoothingAngle": 180)"));
  const headless::MeshData& mesh = *Item(scene, "M").mesh;
  EXPECT_EQ(mesh.PointCount(), 4u);
  EXPECT_EQ(mesh.pointIds[1], ~std::uint64_t{0});
  EXPECT_THAT(Values(mesh.polygonStarts), ElementsAre(0, 4, 6, 9));
  EXPECT_THAT(Values(mesh.polygonPoints), ElementsAre(0, 1, 2, 3, 0, 2, 3, 2, 1));
  EXPECT_THAT(mesh.material.texts, ElementsAre("a"));
  EXPECT_THAT(Values(mesh.material.perPolygon), ElementsAre(0, kNone, 0));
  EXPECT_THAT(Values(mesh.part.perPolygon), ElementsAre(kNone, 0, 0));
  ASSERT_EQ(mesh.maps.size(), 2u);
  EXPECT_EQ(mesh.maps[0].type, kMapRgb);
  EXPECT_EQ(mesh.maps[0].name, "Color");
  EXPECT_THAT(Values(mesh.maps[0].cornerValues), ElementsAre(0, kNone, 1, kNone, kNone, kNone, kNone, kNone, 2));
  EXPECT_THAT(Values(mesh.maps[0].values), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));
  EXPECT_THAT(Values(mesh.maps[1].pointValues), ElementsAre(0, kNone, kNone, 0));
  EXPECT_THAT(Values(mesh.triangleStarts), ElementsAre(0, 2, 2, 3));
  EXPECT_THAT(Values(mesh.trianglePoints), ElementsAre(0, 1, 2, 0, 2, 3, 3, 2, 1));
  EXPECT_EQ(mesh.cornerNormals[26], 0.1);
  EXPECT_EQ(mesh.smoothingAngle, std::numbers::pi);
}

TEST(SceneFile, UsesBinaryArraysInPlace) {
  const HostDirectory directory;
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  directory.WriteFile("deep/a.bin", Bytes(points) + Bytes<std::uint32_t>({0, 1, 2, 2, 1, 0}) + "x" +
                                        Bytes<double>({0.5, -2, 0.25}));
  const SceneData scene = ReadJson(directory, Mesh(R"(
      "points": {"file": "deep/a.bin", "count": 9},
      "polygons": {"points": {"file": "deep/a.bin", "offset": 36, "count": 6}, "sides": 3},
      "maps": [{"type": "WGHT", "per": "point", "values": {"file": "deep/a.bin", "offset": 61, "count": 3, "type": "f64"}}])"));
  const headless::MeshData& mesh = *Item(scene, "M").mesh;
  EXPECT_EQ(Values(mesh.points), points);
  EXPECT_THAT(Values(mesh.polygonStarts), ElementsAre(0, 3, 6));
  EXPECT_EQ(mesh.polygonPoints[3], 2u);
  EXPECT_THAT(Values(mesh.maps.at(0).values), ElementsAre(0.5f, -2.0f, 0.25f));
  // One mapping of the file serves both arrays, and outlives the reader.
  EXPECT_EQ(
      reinterpret_cast<const char*>(mesh.polygonPoints.data()) - reinterpret_cast<const char*>(mesh.points.data()),
      36);
}

// The worked example of the documentation says what the text around it promises.
TEST(SceneFile, ReadsTheDocumentedExample) {
  const std::string page =
      test_support::ReadWholeFile(std::filesystem::path(VORNEL_SOURCE_DIR) / "docs/scene-format.md");
  const std::size_t mark = page.find("<!-- worked example -->");
  ASSERT_NE(mark, std::string::npos);
  const std::size_t begin = page.find("```json\n", mark) + 8;
  const HostDirectory directory;
  directory.WriteFile("door.bin", Bytes<float>({0, 0, 0, 1, 0, 0, 1, 2, 0, 0, 2, 0}));
  const SceneData scene = ReadJson(directory, page.substr(begin, page.find("```", begin) - begin));
  EXPECT_THAT(Ids(scene),
              ElementsAre("scene", "House", "House.position", "Door", "Door.rotation", "Eye", "Eye.position",
                          "Render", "Wood", "Wood shader", "Grain", "grainPlace", "Porter", "Open"));
  EXPECT_EQ(Item(scene, "Door").mesh->PointCount(), 4u);
  EXPECT_EQ(Channel(Item(scene, "Door.rotation"), "rot.Y").extras->envelope->keys.size(), 2u);
  EXPECT_EQ(IdOf(scene, Item(scene, "Grain").textureLocator), "grainPlace");
  EXPECT_EQ(Item(scene, "Open").clip->channels.size(), 3u);
  EXPECT_THAT(IdsOf(scene, scene.selection), ElementsAre("House"));
}

}  // namespace
