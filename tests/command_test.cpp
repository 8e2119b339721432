// The built command from outside: what it writes and says, how it ends, and what it leaves behind.
#include "readers/read_scene.h"
#include "readers/text_utf8.h"
#include "tests/support/command_fixture.h"
#include "tests/support/save_runner.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using namespace test_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kPrefix[] = "sceneio.gltf.save.";

TEST_F(Command, WritesWhatTheSaversWrite) {
  for (const char* name : {"nodes.glb", "textures.glb", "skin_groups.glb", "copies.gltf", "active_action.gltf"}) {
    const fs::path output = Out() / "deep" / name;
    fs::create_directory(output.parent_path());
    const std::string scene = (kGoldens / output.stem()).string() + ".orvo";
    EXPECT_EQ(Export(scene, output.string()).exitCode, kDone);
    for (const fs::directory_entry& entry : fs::directory_iterator(output.parent_path())) {
      const fs::path file = entry.path().filename();
      EXPECT_EQ(ReadWholeFile(entry.path()), ReadWholeFile(kGoldens / file)) << file;
    }
    EXPECT_TRUE(fs::exists(output));
    fs::remove_all(output.parent_path());
  }
}

TEST_F(Command, LogsWhatTheSaversLog) {
  for (const char* name : {"actions", "skin_graph", "materials"}) {
    const fs::path golden = kGoldens / name;
    EXPECT_EQ(Export(golden.string() + ".orvo", "OUT/a.glb", {"--log", "OUT/log"}).exitCode, kDone);
    EXPECT_EQ(Read("log"), ReadWholeFile(golden.string() + ".log.jsonl"));
  }
}

TEST_F(Command, LogsUtf8WhereAMessageIsCutInsideACharacter) {
  std::string name;
  for (int letter = 0; letter < 600; ++letter) name += "\xC3\xA9";
  for (const char* before : {"", "a"}) {
    WriteFile("long.orvo", std::string(R"({"orvo": 1, "items": [{"name": ")") + before + name + "\"}]}");
    EXPECT_EQ(Export("OUT/long.orvo", "OUT/a.glb", {"--log", "OUT/log"}).exitCode, kDone);
    const std::string log = Read("log");
    EXPECT_THAT(log, HasSubstr("Root item:"));
    EXPECT_EQ(readers::ToUtf8(log), log);
  }
}

TEST_F(Command, WritesIntoAFolderWithDotsAndBlanks) {
  fs::create_directories(Out() / "a.b c" / "..d.e");
  EXPECT_EQ(Export(kScene, "OUT/a.b c/..d.e/my scene.v2.gltf").exitCode, kDone);
  EXPECT_THAT(Files(),
              ElementsAre("a.b c", "a.b c/..d.e", "a.b c/..d.e/my scene.v2.bin", "a.b c/..d.e/my scene.v2.gltf"));
  EXPECT_THAT(Read("a.b c/..d.e/my scene.v2.gltf"), HasSubstr(R"("uri":"my scene.v2.bin")"));
}

struct Flag {
  const char* scene;
  const char* flag;
  const char* word;
  const char* userValue;
  std::int32_t value;
};

constexpr Flag kFlags[] = {
    {"hierarchy", "--export-type", "all", "exportType", 0},
    {"hierarchy", "--export-type", "selected", "exportType", 1},
    {"nodes", "--export-type", "hierarchy", "exportType", 2},
    {"meshes", "--geometry", "off", "geometry", 0},
    {"hierarchy", "--geometry", "on", "geometry", 1},
    {"materials", "--materials", "off", "materials", 0},
    {"nodes", "--cameras", "off", "cameras", 0},
    {"animation", "--animation", "off", "animation", 0},
    {"skin_groups", "--skins", "off", "morphMaps", 0},
    {"skin_groups", "--skinned-space", "object", "skinnedMeshInWS", 0},
    {"skin_graph", "--skinned-space", "world", "skinnedMeshInWS", 1},
    {"tangents", "--tangents", "off", "tangentsBitangents", 0},
    {"tangents", "--indices", "16", "indicesExport", 0},
    {"meshes", "--indices", "32", "indicesExport", 1},
    {"animation", "--sample-rate", "1x", "sampleAnimFpsMultiplier", 0},
    {"skin_groups", "--sample-rate", "2x", "sampleAnimFpsMultiplier", 1},
    {"actions", "--actions", "scene", "exportActionType", 0},
    {"actions", "--actions", "active", "exportActionType", 2},
    {"active_action", "--actions", "all", "exportActionType", 1},
};

TEST_F(Command, EachFlagAndItsUserValueDoTheSame) {
  for (const Flag& flag : kFlags) {
    SCOPED_TRACE(std::string(flag.flag) + " " + flag.word);
    const fs::path file = (kGoldens / flag.scene).string() + ".orvo";
    readers::ReadReport report;
    headless::SceneData scene = readers::ReadScene(file, report);
    const std::string untold = ReadWholeFile(RunSave(scene).output);
    scene.userValues[std::string(kPrefix) + flag.userValue] = flag.value;
    const std::string told = ReadWholeFile(RunSave(scene).output);
    EXPECT_NE(told, untold);

    EXPECT_EQ(Export(file.string(), "OUT/flag.glb", {flag.flag, flag.word}).exitCode, kDone);
    EXPECT_EQ(Read("flag.glb"), told);
    const std::string name = std::string(kPrefix) + flag.userValue;
    EXPECT_EQ(Export(file.string(), "OUT/set.glb",
                     {"--set", name + "=77", "--set", name + "=" + std::to_string(flag.value)})
                  .exitCode,
              kDone);
    EXPECT_EQ(Read("set.glb"), told);
  }
}

TEST_F(Command, ExportsAllItemsOfASceneWithoutUserValues) {
  WriteFile("a.orvo", R"({"orvo": 1, "items": [{"name": "Alone"}]})");
  EXPECT_EQ(Export("OUT/a.orvo", "OUT/a.glb").exitCode, kDone);
  EXPECT_THAT(Read("a.glb"), HasSubstr(R"("nodes":[{"name":"Alone"}])"));
}

TEST_F(Command, TellsAsMuchAsItIsAskedTo) {
  const std::string scene = (kGoldens / "skin_graph.orvo").string();
  const std::string error = "vornel: error: Failed to find node:Lamp (for skin deformer)";
  const std::string summary = "vornel: warning: There are 0 warnings and 1 errors reported to event log";
  const std::string file = (Out() / "a.glb").string();
  std::vector<std::string> lines = Export(scene, "OUT/a.glb").ErrorLines();
  lines.resize(4);
  EXPECT_THAT(lines, ElementsAre(error, summary, file, StartsWith("  nodes             4  meshes            2")));
  EXPECT_THAT(Export(scene, "OUT/a.glb", {"-q"}).ErrorLines(), ElementsAre(error));
  const std::vector<std::string> all = Export(scene, "OUT/a.glb", {"-v"}).ErrorLines();
  EXPECT_EQ(all.front(), "glTf v2 :: InitSaver()");
  EXPECT_THAT(all, testing::IsSupersetOf({std::string("   Using Local matrix"), error, summary, file}));
}

TEST_F(Command, ListsWhatASceneHolds) {
  const CommandRun run = Run({"info", kScene});
  EXPECT_EQ(run.exitCode, kDone);
  EXPECT_THAT(run.errors, IsEmpty());
  for (const char* text : {"  7 mesh\n", "Patch: 7 points, 4 polygons, 12 polygon corners", "TXUV \"b\"",
                           "RGB \"Opaque\"", "material \"First\"", "sceneio.gltf.save.exportType = 0"})
    EXPECT_THAT(run.output, HasSubstr(text));
  ExpectOneError(Run({"info", "OUT/none.orvo"}), kInput, "none.orvo");
  EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(Command, HelpAndVersionAreNoErrors) {
  for (const char* flag : {"--help", "--version"}) {
    const CommandRun run = Run({flag});
    EXPECT_EQ(run.exitCode, kDone);
    EXPECT_THAT(run.output, HasSubstr("vornel"));
    EXPECT_THAT(run.errors, IsEmpty());
  }
}

TEST_F(Command, WrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"import", kScene, "-o", "OUT/a.glb"},
      {"export", kScene},
      {"export", "-o", "OUT/a.glb"},
      {"export", kScene, kScene, "-o", "OUT/a.glb"},
      {"export", kScene, "-o", "OUT/a.glb", "--indices", "8"},
      {"export", kScene, "-o", "OUT/a.glb", "--geometry"},
      {"export", kScene, "-o", "OUT/a.glb", "--unknown"},
      {"export", kScene, "-o", "OUT/a.glb", "-q", "-v"},
      {"export", kScene, "-o", "OUT/a.glb", "--set", "exportType=0"},
      {"export", kScene, "-o", "OUT/a.glb", "--set", "sceneio.gltf.save.exportType"},
      {"export", kScene, "-o", "OUT/a.glb", "--set", "sceneio.gltf.save.exportType=all"},
      {"export", kScene, "-o", "OUT/a.glb", "--set", "sceneio.gltf.save.exportType=4294967296"},
      {"info"},
  };
  for (const std::vector<std::string>& arguments : wrong) {
    const CommandRun run = Run(arguments);
    EXPECT_EQ(run.exitCode, kUsage) << testing::PrintToString(arguments);
    EXPECT_THAT(run.errors, testing::Not(IsEmpty()));
    EXPECT_THAT(Files(), IsEmpty());
  }
}

TEST_F(Command, APlugInThatIsNone) {
  WriteFile("text.zy", "no module");
  const std::string library = fs::canonical("/proc/self/exe").string();
  for (const std::string& module : {std::string("OUT/none.zy"), std::string("OUT/text.zy"), library}) {
    const CommandRun run = Export(kScene, "OUT/a.glb", {"--module", Completed({module})[0]});
    ExpectOneError(run, kUsage, "");
  }
  const std::vector<std::string> plain = {VORNEL_COMMAND, "export", kScene, "-o", "OUT/a.glb"};
  std::vector<std::string> named = {"env", "VORNEL_MODULE=" + (Out() / "none.zy").string()};
  named.insert(named.end(), plain.begin(), plain.end());
  ExpectOneError(RunCommand(Completed(named)), kUsage, "none.zy");
  EXPECT_THAT(Files(), ElementsAre("text.zy"));

  named.insert(named.end(), {"--module", VORNEL_MODULE_FILE});
  EXPECT_EQ(RunCommand(Completed(named)).exitCode, kDone);
}

TEST_F(Command, WrongInputIsOneLineAndLeavesNothing) {
  WriteFile("cut.orvo", "{\"orvo\": 1, \"items\": [");
  ExpectOneError(Export("OUT/cut.orvo", "OUT/a.gltf", {"--log", "OUT/log"}), kInput, "cut.orvo:1:");
  EXPECT_THAT(Files(), ElementsAre("cut.orvo"));
}

TEST_F(Command, OutputThatCantBeWrittenLeavesTheOldFile) {
  fs::create_directories(Out() / "taken.bin" / "inner");
  WriteFile("old.glb", "old");
  WriteFile("taken.gltf", "old");
  const std::vector<std::string> before = Files();
  const std::vector<std::vector<std::string>> wrong = {{"OUT/taken.gltf"}, {"OUT/old.glb", "--log", "/dev/full"}};
  for (const std::vector<std::string>& arguments : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const CommandRun run = Export(kScene, arguments[0], {arguments.begin() + 1, arguments.end()});
    EXPECT_EQ(run.exitCode, kOutput);
    EXPECT_THAT(run.ErrorLines(), ElementsAre(StartsWith("vornel: error: ")));
    EXPECT_EQ(Files(), before);
    for (const char* old : {"old.glb", "taken.gltf"}) EXPECT_EQ(Read(old), "old");
  }
}

// As on a full disk: no file may grow beyond a block, and a write that would is refused.
TEST_F(Command, AFullDiskLeavesTheOldFile) {
  WriteFile("old.glb", "old");
  WriteFile("old.gltf", "old");
  WriteFile("old.bin", "old");
  for (const char* output : {"OUT/old.glb", "OUT/old.gltf"}) {
    const CommandRun run = RunCommand(Completed({"sh", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "sh",
                                                 VORNEL_COMMAND, "export", kScene, "-o", output}));
    EXPECT_EQ(run.exitCode, kOutput);
    EXPECT_THAT(run.errors, HasSubstr("Failed to export GLTF!"));
    EXPECT_THAT(Files(), ElementsAre("old.bin", "old.glb", "old.gltf"));
    for (const std::string& old : Files()) EXPECT_EQ(Read(old), "old");
  }
}

TEST_F(Command, ASignalLeavesNothingBehind) {
  WriteFile("long.orvo", R"({"orvo": 1, "time": {"start": 0, "end": 20000, "fps": 1000}, "items": [
      {"position": {"keys": [[0, 0, 0, 0], [1, 1, 1, 1]]}}]})");
  WriteFile("a.glb", "old");
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    RunningCommand command(Completed({VORNEL_COMMAND, "export", "OUT/long.orvo", "-o", "OUT/a.glb"}));
    // The export begins with a folder, and in it another.
    for (int tries = 0; tries < 2000 && Files().size() < 4; ++tries)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    command.Signal(number);
    EXPECT_EQ(command.Wait().exitCode, 128 + number);
    EXPECT_THAT(Files(), ElementsAre("a.glb", "long.orvo"));
    EXPECT_EQ(Read("a.glb"), "old");
  }
}

}  // namespace
