// What the command reports of an export, and how strictly it looks at what it wrote.
#include "tests/support/command_fixture.h"

#include <rapidjson/schema.h>

namespace {

using namespace test_support;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Json = rapidjson::Document;

class ExportReport : public Command {
 protected:
  ExportReport()
      : schema_(Parsed(ReadWholeFile(fs::path(VORNEL_SOURCE_DIR) / "docs" / "report.schema.json"))),
        rules_(schema_) {}

  // The report of an export, checked against the published schema.
  Json Report(const std::string& scene, const std::string& output, std::vector<std::string> more, int exitCode) {
    more.insert(more.end(), {"--report", "OUT/report.json"});
    last_ = Export(scene, output, more);
    EXPECT_EQ(last_.exitCode, exitCode) << last_.errors;
    Json report = Parsed(Read("report.json"));
    EXPECT_TRUE(IsValid(report)) << Read("report.json");
    if (report.IsObject()) {
      EXPECT_EQ(report["exitCode"].GetInt(), exitCode);
      EXPECT_EQ(report.HasMember("written"), exitCode <= kWarnings);
      EXPECT_EQ(report.HasMember("error"), exitCode > kWarnings);
    }
    return report;
  }
  bool IsValid(const Json& report) const {
    rapidjson::SchemaValidator validator(rules_);
    return report.IsObject() && report.Accept(validator);
  }

  // Mesh items that share a mesh: the same polygon again and again, of that many corners.
  void WriteMeshes(const std::string& file, int corners, int polygons, int items) const {
    const std::string polygon = std::string("[0,1,2,3,4").substr(0, static_cast<std::size_t>(2 * corners)) + "]";
    std::string polygonList, itemList;
    for (int place = 0; place < polygons; ++place) polygonList += (place == 0 ? "" : ",") + polygon;
    for (int place = 0; place < items; ++place)
      itemList += std::string(place == 0 ? "" : ",") + R"({"name": "Patch", "type": "mesh", "mesh": "shared"})";
    WriteFile(file, R"({"orvo": 1, "meshes": {"shared": {"points": [0,0,0, 2,0,0, 3,2,0, 1,3,0, -1,2,0],
                        "polygons": [)" +
                        polygonList + R"(]}}, "items": [)" + itemList + "]}");
  }

  CommandRun last_;

 private:
  Json schema_;
  rapidjson::SchemaDocument rules_;
};

std::uint64_t Counted(const Json& report, const char* what) { return report["written"][what].GetUint64(); }

TEST_F(ExportReport, CountsWhatTheFileHolds) {
  for (const char* scene : {"meshes", "textures", "skin_groups", "animation", "nodes", "empty"}) {
    SCOPED_TRACE(scene);
    const Json report = Report((kGoldens / scene).string() + ".orvo", "OUT/a.glb", {}, kDone);
    const GltfFile file = ReadGltfFile(Out() / "a.glb");
    for (const auto& [key, array] :
         {std::pair("nodes", "nodes"), std::pair("meshes", "meshes"), std::pair("materials", "materials"),
          std::pair("textures", "textures"), std::pair("images", "images"), std::pair("cameras", "cameras"),
          std::pair("skins", "skins"), std::pair("clips", "animations")})
      EXPECT_EQ(Counted(report, key), file.json.HasMember(array) ? file.json[array].Size() : 0u) << key;
    std::uint64_t primitives = 0, corners = 0, vertices = 0, samples = 0;
    for (const auto& mesh : file.json["meshes"].GetArray())
      for (const auto& primitive : mesh["primitives"].GetArray()) {
        ++primitives;
        corners += AccessorValues(file, primitive["indices"].GetUint()).size();
        vertices += AccessorValues(file, primitive["attributes"]["POSITION"].GetUint()).size() / 3;
      }
    if (file.json.HasMember("animations"))
      for (const auto& animation : file.json["animations"].GetArray())
        for (const auto& sampler : animation["samplers"].GetArray())
          samples += AccessorValues(file, sampler["input"].GetUint()).size();
    EXPECT_EQ(Counted(report, "primitives"), primitives);
    EXPECT_EQ(Counted(report, "triangles"), corners / 3);
    EXPECT_EQ(Counted(report, "vertices"), vertices);
    EXPECT_EQ(Counted(report, "samples"), samples);
    EXPECT_EQ(Counted(report, "bytes"), fs::file_size(Out() / "a.glb"));
    EXPECT_GT(report["peakMemoryBytes"].GetUint64(), 1000000u);
  }
}

TEST_F(ExportReport, TheSchemaTakesNothingElse) {
  Json report = Report(kScene, "OUT/a.glb", {}, kDone);
  report.AddMember("more", 1, report.GetAllocator());
  EXPECT_FALSE(IsValid(report));
  report.RemoveMember("more");
  EXPECT_TRUE(IsValid(report));
  report["written"]["nodes"].SetInt(-1);
  EXPECT_FALSE(IsValid(report));
}

TEST_F(ExportReport, FailuresAreReportedToo) {
  WriteFile("cut.orvo", "{");
  WriteFile("old.glb", "old");
  EXPECT_THAT(Report("OUT/cut.orvo", "OUT/old.glb", {}, kInput)["error"].GetString(), HasSubstr("cut.orvo:1:"));
  EXPECT_THAT(Report(kScene, "OUT/none/a.glb", {}, kOutput)["error"].GetString(), HasSubstr("none"));
  EXPECT_THAT(Report(kScene, "OUT/old.glb", {"--module", "OUT/cut.orvo"}, kUsage)["error"].GetString(),
              HasSubstr("cut.orvo"));
  EXPECT_THAT(Files(), ElementsAre("cut.orvo", "old.glb", "report.json"));
}

TEST_F(ExportReport, AReportThatCantBeWrittenIsAnErrorBeforeTheExport) {
  fs::create_directory(Out() / "folder");
  for (const char* report : {"OUT/none/report.json", "OUT/folder"})
    ExpectOneError(Export(kScene, "OUT/a.glb", {"--report", report}), kOutput, "");
  EXPECT_EQ(Export(kScene, "OUT/a.gltf", {"--report", "OUT/a.bin"}).exitCode, kUsage);
  EXPECT_EQ(Export(kScene, "OUT/a.glb", {"--report", "OUT/log", "--log", "OUT/log"}).exitCode, kUsage);
  EXPECT_THAT(Files(), ElementsAre("folder"));
  // A device takes the report and stays one.
  EXPECT_EQ(Export(kScene, "OUT/a.glb", {"--report", "/dev/full"}).exitCode, kOutput);
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_THAT(Files(), ElementsAre("a.glb", "folder"));
}

TEST_F(ExportReport, NamesWhatIsNotCarriedOverAndTheFlagThatHelps) {
  WriteFile("a.orvo", R"({"orvo": 1, "items": [
      {"name": "Sun", "type": "sunLight"}, {"name": "Lamp", "type": "pointLight"},
      {"name": "Ghost", "type": "mesh", "mesh": {"points": [0, 0, 0]}, "channels": {"visible": 1}},
      {"name": "Shown", "type": "mesh", "mesh": {"points": [0, 0, 0]}, "channels": {"visible": 0}}, {"name": "Eye", "type": "camera"},
      {"name": "Under", "mesh": {"points": [0, 0, 0]}, "parent": "Arm"}, {"name": "Arm", "parent": "Lamp"},
      {"name": "MorphGroup", "children": [{"name": "Pose", "mesh": {"points": [0, 0, 0]}}]}]})");
  Json report = Report("OUT/a.orvo", "OUT/a.glb", {}, kDone);
  EXPECT_THAT(
      last_.errors,
      AllOf(HasSubstr("\n  light \"Sun\", \"Lamp\": lights aren't exported\n"), HasSubstr("camera lens \"Eye\""),
            HasSubstr("\n  mesh \"Ghost\": its channel \"visible\" hides it\n"),
            HasSubstr("\n  mesh \"Under\": stands below \"Lamp\", which is left out\n"),
            HasSubstr("\n  item \"MorphGroup\": for its name it is left out with all below it\n"),
            HasSubstr("\n  mesh \"Pose\": stands below \"MorphGroup\", which is left out\n")));
  EXPECT_EQ(Counted(report, "nodes"), 3u);
  EXPECT_THAT(TextOf(report["notCarriedOver"]), HasSubstr(R"("items":["Sun","Lamp"])"));

  WriteFile("rig.orvo", R"({"orvo": 1, "items": [{"name": "Eye", "type": "camera",
      "children": [{"name": "Hood", "mesh": {"points": [0, 0, 0]}}]}]})");
  Report("OUT/rig.orvo", "OUT/a.glb", {}, kDone);
  EXPECT_THAT(last_.errors, Not(HasSubstr("Hood")));
  Report("OUT/rig.orvo", "OUT/a.glb", {"--cameras", "off"}, kDone);
  EXPECT_THAT(last_.errors, AllOf(HasSubstr("\n  mesh \"Hood\": stands below \"Eye\", which is left out\n"),
                                  Not(HasSubstr("lens"))));

  WriteMeshes("large.orvo", 3, 21846, 1);
  report = Report("OUT/large.orvo", "OUT/a.glb", {}, kDone);
  EXPECT_EQ(Counted(report, "meshes"), 0u);
  const auto& refused = report["notCarriedOver"][0];
  EXPECT_STREQ(refused["what"].GetString(), "mesh");
  EXPECT_THAT(refused["why"].GetString(), HasSubstr("65538 triangle corners"));
  EXPECT_THAT(refused["help"].GetString(), HasSubstr("--indices"));
  EXPECT_STREQ(refused["items"][0].GetString(), "Patch");
  EXPECT_THAT(last_.errors, HasSubstr("mesh \"Patch\": has 65538"));
}

TEST_F(ExportReport, NamesKeysThatNoNodeShows) {
  WriteFile("keys.orvo", R"({"orvo": 1, "items": [
      {"name": "Lamp", "type": "pointLight",
       "channels": {"glow": {"keys": [[0, 1], [1, 2]]}, "still": {"keys": [[0, 1]]}}},
      {"name": "Door", "rotation": {"keys": [[0, 0, 0, 0], [1, 0, 90, 0]]}},
      {"name": "Knob", "channels": {"turn": {"keys": [[0, 0], [1, 1]]}, "tint": 1, "drive": 0}},
      {"name": "Open", "type": "actionclip", "clip": {
        "motion": {"Door": {"rotation": {"keys": [[0, 0, 0, 0], [1, 90, 0, 0]]}}},
        "channels": [{"channel": ["Knob", "tint"], "keys": [[0, 0], [1, 1]]}]}}],
      "links": [{"from": ["Knob", "turn"], "to": ["Knob", "drive"]}]})");
  Report("OUT/keys.orvo", "OUT/a.glb", {}, kDone);
  EXPECT_THAT(last_.errors, AllOf(HasSubstr("\n  animation \"Lamp\": keys of \"glow\" aren't exported\n"),
                                  HasSubstr("\n  animation \"Knob\": keys of \"tint\" aren't exported\n")));
  for (const char* carried : {"\"still\"", "\"Door", "\"turn\"", "\"rot."})
    EXPECT_THAT(last_.errors, Not(HasSubstr(carried)));
  Report("OUT/keys.orvo", "OUT/a.glb", {"--animation", "off"}, kDone);
  EXPECT_THAT(last_.errors, Not(HasSubstr("keys of")));
}

TEST_F(ExportReport, AutomaticIndicesAreThoseThatTheMeshesNeed) {
  WriteMeshes("most.orvo", 3, 21845, 1);
  WriteMeshes("more.orvo", 3, 21846, 1);
  // Three triangles each.
  WriteMeshes("polygons.orvo", 5, 7281, 1);
  for (const auto& [scene, bits] :
       {std::pair("most", "16"), std::pair("more", "32"), std::pair("polygons", "16")}) {
    SCOPED_TRACE(scene);
    const std::string file = std::string("OUT/") + scene + ".orvo";
    const Json report = Report(file, "OUT/auto.glb", {"--indices", "auto"}, kDone);
    EXPECT_EQ(Counted(report, "meshes"), 1u);
    EXPECT_EQ(report["userValues"]["sceneio.gltf.save.indicesExport"].GetInt(), bits == std::string("32"));
    EXPECT_EQ(Export(file, "OUT/told.glb", {"--indices", bits}).exitCode, kDone);
    EXPECT_EQ(Read("auto.glb"), Read("told.glb"));
  }
}

TEST_F(ExportReport, StrictTurnsWarningsAndErrorsIntoAnExitCode) {
  const std::string warns = (kGoldens / "tangents.orvo").string(), errs = (kGoldens / "skin_graph.orvo").string();
  for (const std::string& scene : {warns, errs}) {
    EXPECT_STREQ(Report(scene, "OUT/a.glb", {"--strict"}, kWarnings)["result"].GetString(), "warnings");
    EXPECT_EQ(Read("a.glb"), ReadWholeFile(fs::path(scene).replace_extension(".glb")));
  }
  EXPECT_EQ(Report(kScene, "OUT/a.glb", {"--strict"}, kDone)["messages"].Size(), 0u);
}

TEST_F(ExportReport, EqualMessagesAreToldOnceAndCounted) {
  WriteMeshes("twins.orvo", 3, 21846, 3);
  const Json report = Report("OUT/twins.orvo", "OUT/a.glb", {}, kDone);
  EXPECT_EQ(report["messages"].Size(), 1u);
  EXPECT_EQ(report["messages"][0]["count"].GetInt(), 3);
  EXPECT_EQ(report["notCarriedOver"].Size(), 1u);
  EXPECT_THAT(last_.errors, HasSubstr("\n  3 times error: Creating mesh:Patch"));
  const std::string told = "vornel: error: Creating mesh:Patch";
  EXPECT_EQ(last_.errors.find(told), last_.errors.rfind(told));
}

struct BadScene {
  const char* text;
  const char* place;
};

// Finite numbers whose sums and products aren't finite any more.
constexpr BadScene kBadScenes[] = {
    {R"({"orvo": 1, "items": [{"name": "Top", "children": [{"name": "Arm", "scale": [1e39, 1, 1]}]}]})",
     "infinite or not a number: the matrix of \"Arm\""},
    {R"({"orvo": 1, "time": {"start": 0, "end": 1, "fps": 5},
         "items": [{"name": "Arm", "position": {"keys": [[0, 0, 0, 0], [1, 1e39, 0, 0]]}}]})",
     "an infinite value: the sampled translation of \"Arm\""},
    {R"({"orvo": 1, "time": {"start": 0, "end": 1, "fps": 5},
         "items": [{"name": "Arm \"L\"", "rotation": {"keys": [[0, 0, 0, 0], [1, 0, 0, 90]]},
                    "scale": {"keys": [[0, 1, 1, 1], [1, 1, 1e200, 1]]}}]})",
     "of \"Arm \"L\"\""},
};

TEST_F(ExportReport, ASceneWithNumbersThatNoFileHoldsIsRefusedByName) {
  for (const BadScene& bad : kBadScenes) {
    SCOPED_TRACE(bad.place);
    WriteFile("a.orvo", bad.text);
    WriteFile("old.glb", "old");
    WriteFile("old.gltf", "old");
    for (const char* output : {"OUT/old.glb", "OUT/old.gltf"}) {
      const Json report = Report("OUT/a.orvo", output, {}, kOutput);
      EXPECT_THAT(report["error"].GetString(),
                  AllOf(HasSubstr("old.gl"), HasSubstr("not written"), HasSubstr(bad.place)));
    }
    EXPECT_THAT(Files(), ElementsAre("a.orvo", "old.glb", "old.gltf", "report.json"));
    EXPECT_EQ(Read("old.glb") + Read("old.gltf"), "oldold");
  }
}

TEST_F(ExportReport, TheExtensionMayBeInAnyCase) {
  for (const auto& [name, golden] : {std::pair("a.GLB", "meshes.glb"), std::pair("copies.Gltf", "copies.gltf")}) {
    const std::string scene = (kGoldens / fs::path(golden).stem()).string() + ".orvo";
    EXPECT_EQ(Export(scene, std::string("OUT/") + name).exitCode, kDone);
    EXPECT_EQ(Read(name), ReadWholeFile(kGoldens / golden));
  }
  EXPECT_EQ(Read("copies.bin"), ReadWholeFile(kGoldens / "copies.bin"));
  EXPECT_THAT(Files(), Not(testing::Contains("copies.gltf")));
}

}  // namespace
