// Exports of many scenes: the manifest, what is done already, several processes, and what becomes of failures.
#include "tests/support/command_fixture.h"

#include <rapidjson/schema.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <sstream>
#include <thread>

namespace {

using namespace test_support;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Json = rapidjson::Document;

constexpr char kSmall[] = R"({"orvo": 1, "items": [{"name": "Lone"}]})";

// Words such as "1 done".
std::string StatusOf(const std::string& line) {
  const Json result = Parsed(line);
  return std::to_string(result["line"].GetInt()) + " " + result["status"].GetString();
}

class Batch : public Command {
 protected:
  Batch() { fs::create_directory(Out() / "scenes"); }

  CommandRun RunManifest(const std::vector<std::string>& lines, std::vector<std::string> more = {}) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    WriteFile("list.jsonl", text);
    return RunAgain(std::move(more));
  }
  CommandRun RunAgain(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"batch", "OUT/list.jsonl", "--summary", "OUT/summary"});
    return Run(std::move(more));
  }
  // Of the last run, "1 done" and the like.
  std::vector<std::string> Statuses() const {
    std::vector<std::string> statuses;
    std::istringstream stream(Read("summary"));
    for (std::string line; std::getline(stream, line);) statuses.push_back(StatusOf(line));
    std::sort(statuses.begin(), statuses.end());
    return statuses;
  }
  // A process that exports a line of this test, waited for; 0 for none.
  pid_t FindChild() const {
    for (int tries = 0; tries < 2000; ++tries) {
      std::error_code error;
      for (const fs::directory_entry& entry : fs::directory_iterator("/proc"))
        if (fs::read_symlink(entry.path() / "cwd", error) == Out() &&
            ReadWholeFile(entry.path() / "cmdline").find("--task=1") != std::string::npos)
          return std::stoi(entry.path().filename());
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return 0;
  }
};

TEST_F(Batch, ExportsWhatExportDoes) {
  WriteFile("scenes/small.orvo", kSmall);
  const std::vector<std::string> lines = {
      R"({"input": ")" + kScene + R"(", "output": "a.glb"})", "",
      R"({"input": "scenes/small.orvo", "output": "new/folder/b.gltf", "options": {"strict": false, "verbose": true,
          "indices": "auto", "image-root": ["scenes"], "import-timeout": 20, "unit": 2.5, "up-axis": "z",
          "set": {"sceneio.gltf.save.cameras": 0}, "report": "logs/b.json", "log": "logs/b.log"}})",
      "  \t\r"};
  std::vector<std::string> joined = lines;
  for (std::string& line : joined) std::replace(line.begin(), line.end(), '\n', ' ');
  const Json schema = Parsed(ReadWholeFile(fs::path(VORNEL_SOURCE_DIR) / "docs" / "batch.schema.json"));
  const rapidjson::SchemaDocument rules(schema);
  for (const std::size_t place : {0u, 2u}) {
    rapidjson::SchemaValidator validator(rules);
    EXPECT_TRUE(Parsed(joined[place]).Accept(validator)) << joined[place];
  }

  const CommandRun run = RunManifest(joined);
  EXPECT_EQ(run.exitCode, kDone) << run.errors;
  EXPECT_THAT(run.ErrorLines(), ElementsAre("2 done, 0 skipped, 0 failed"));
  EXPECT_THAT(Statuses(), ElementsAre("1 done", "3 done"));
  EXPECT_EQ(Read("a.glb"), ReadWholeFile(kGoldens / "meshes.glb"));
  const Json report = Parsed(Read("logs/b.json"));
  EXPECT_EQ(report["userValues"]["sceneio.gltf.save.cameras"].GetInt(), 0);
  EXPECT_EQ(report["userValues"]["sceneio.gltf.save.indicesExport"].GetInt(), 0);
  EXPECT_THAT(Files(),
              UnorderedElementsAre(".a.glb.vornel", "a.glb", "list.jsonl", "logs", "logs/b.json", "logs/b.log",
                                   "new", "new/folder", "new/folder/.b.gltf.vornel", "new/folder/b.bin",
                                   "new/folder/b.gltf", "scenes", "scenes/small.orvo", "summary"));
}

TEST_F(Batch, FaultsOfTheManifestAreNamedBeforeAnythingIsDone) {
  struct Case {
    std::string line, fault;
  };
  const std::string begin = R"({"input": "a.orvo", "output": "b.glb", "options": {)";
  const Case cases[] = {
      {R"({"input": "a", )", "not JSON, column "},
      {"[]", "is not an object"},
      {R"({"output": "b.glb"})", "input: is missing"},
      {R"({"input": 3, "output": "b.glb"})", "input: is not a path in quotes"},
      {R"({"input": "a\u0000", "output": "b.glb"})", "input: holds a zero byte"},
      {R"({"input": "a", "output": "b.glb", "extra": 1})", "extra: is none of input, output and options"},
      {R"({"input": "a", "input": "a", "output": "b.glb"})", "input: is there twice"},
      {R"({"input": "a", "output": "b.png"})", "output: 'b.png' does not end in .glb or .gltf"},
      {R"({"input": "a", "output": "b.glb", "options": []})", "options: is not an object"},
      {begin + R"("colour": 1}})", "colour: no option is called so"},
      {begin + R"("output": "c.glb"}})", "output: no option is called so"},
      {begin + R"("help": true}})", "help: no option is called so"},
      {begin + R"("strict": 1}})", "strict: takes true or false"},
      {begin + R"("indices": 17}})", "indices: "},
      {begin + R"("indices": ["16", "32"]}})", "indices: takes a string or a number"},
      {begin + R"("log": ""}})", "log: is empty"},
      {begin + R"("set": {"x": 1}}})", "set: no user value is called 'x'"},
      {begin + R"("image-root": ["nowhere"]}})", "image-root: "},
      {begin + R"("report": "x/../b.glb"}})", "report: 'x/../b.glb' is written by the export"},
      {"{\"input\": \"\xff\", \"output\": \"b.glb\"}", "not JSON, column "},
      {R"({"input": "a", "output": "./other.GLTF"})", ""},
      {R"({"input": "a", "output": "scenes/../other.gltf"})",
       "output: scenes/../other.bin is written by line 21 too"},
      {R"({"input": "a", "output": "c.glb", "options": {"log": "other.bin"}})",
       "options: other.bin is written by line 21 too"},
  };
  std::vector<std::string> lines;
  for (const Case& one : cases) lines.push_back(one.line);
  const CommandRun run = RunManifest(lines);
  EXPECT_EQ(run.exitCode, kInput);
  const std::vector<std::string> errors = run.ErrorLines();
  ASSERT_EQ(errors.size(), 21u) << run.errors;
  for (std::size_t place = 0; place < 20; ++place)
    EXPECT_THAT(errors[place],
                AllOf(StartsWith("vornel: error: "),
                      HasSubstr("list.jsonl:" + std::to_string(place + 1) + ": " + cases[place].fault)));
  EXPECT_THAT(errors[20], HasSubstr("list.jsonl: 2 more faults"));
  std::fill(lines.begin(), lines.begin() + 20, "");
  const std::vector<std::string> clashes = RunManifest(lines, {"--task", "21"}).ErrorLines();
  ASSERT_EQ(clashes.size(), 2u);
  for (std::size_t place = 0; place < 2; ++place) EXPECT_THAT(clashes[place], HasSubstr(cases[21 + place].fault));
  EXPECT_THAT(Files(), ElementsAre("list.jsonl", "scenes"));
  EXPECT_EQ(Run({"batch", "OUT/none.jsonl"}).exitCode, kInput);
  EXPECT_EQ(Run({"batch", "OUT"}).exitCode, kInput);
}

TEST_F(Batch, WhatIsDoneIsSkippedUntilSomethingChanges) {
  WriteFile("scenes/quad.obj", "mtllib quad.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl m\nvt 0 0\nf 1/1 2/1 3/1\n");
  const std::string begin = R"({"input": "scenes/quad.obj", "output": "out/a.gltf", "options": {)";
  const std::string line = begin + R"("report": "out/a.json", "indices": "16", "image-root": ["scenes"]}})";
  EXPECT_EQ(RunManifest({line}).exitCode, kDone);
  const std::string png = ReadWholeFile(kGoldens / "red.png");
  struct Case {
    const char* why;  // as --dry-run says it
    std::function<void()> change;
  };
  const Case cases[] = {
      {"scenes/quad.mtl changed", [&] { WriteFile("scenes/quad.mtl", "newmtl m\nmap_Kd wood.png\n"); }},
      {"scenes/wood.png changed", [&] { WriteFile("scenes/wood.png", png); }},
      {"scenes/wood.png changed", [&] { WriteFile("scenes/wood.png", png + "more"); }},
      {"scenes/quad.mtl changed", [&] { WriteFile("scenes/quad.mtl", "newmtl m\nmap_Kd far/oak.png\n"); }},
      {"scenes/textures/oak.png changed",
       [&] {
         fs::create_directory(Out() / "scenes" / "textures");
         WriteFile("scenes/textures/oak.png", png);
       }},
      {"scenes/far/oak.png changed",
       [&] {
         fs::create_directory(Out() / "scenes" / "far");
         WriteFile("scenes/far/oak.png", png);
       }},
      {"scenes/quad.obj changed", [&] { WriteFile("scenes/quad.obj", Read("scenes/quad.obj") + "v 7 7 7\n"); }},
      {"out/a.bin changed", [&] { fs::resize_file(Out() / "out" / "a.bin", 3); }},
      {"out/a.json changed", [&] { fs::remove(Out() / "out" / "a.json"); }},
      {"there is no output", [&] { fs::remove(Out() / "out" / "a.gltf"); }},
      {"there is no record of it", [&] { fs::remove(Out() / "out" / ".a.gltf.vornel"); }},
      {"its record can't be read", [&] { WriteFile("out/.a.gltf.vornel", "{\"record\": 1, "); }},
      {"its line changed", [&] { WriteFile("list.jsonl", begin + R"("report": "out/a.json"}})"); }},
      {"its line changed", [&] { WriteFile("list.jsonl", line); }},
      {"--force", [] {}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.why);
    EXPECT_EQ(RunAgain().exitCode, kDone);
    EXPECT_THAT(Statuses(), ElementsAre("1 skipped"));
    const std::vector<std::string> force(one.why == std::string("--force") ? 1u : 0u, "--force");
    one.change();
    std::vector<std::string> dry = force;
    dry.push_back("--dry-run");
    EXPECT_THAT(RunAgain(dry).output, HasSubstr(std::string("list.jsonl:1: out/a.gltf: to export: ") + one.why));
    EXPECT_EQ(RunAgain(force).exitCode, kDone);
    EXPECT_THAT(Statuses(), ElementsAre("1 done"));
  }
  // The order of options, other words for one path, and the place of the whole folder don't count.
  WriteFile("list.jsonl", begin + R"("image-root": ["scenes"], "report": "out/a.json", "indices": "16"}})");
  for (const char* folder : {"scenes", "out", "list.jsonl"}) {
    fs::create_directory(Out() / "moved");
    fs::rename(Out() / folder, Out() / "moved" / folder);
  }
  const CommandRun moved = Run({"batch", "OUT/moved/list.jsonl", "--task", "1"});
  EXPECT_EQ(moved.exitCode, kDone);
  EXPECT_THAT(moved.ErrorLines(), ElementsAre("out/a.gltf: done already"));

  fs::copy_file(VORNEL_MODULE_FILE, Out() / "other.zy");
  std::ofstream(Out() / "other.zy", std::ios::binary | std::ios::app) << '\0';
  const CommandRun other = RunCommand(Completed(
      {"env", "VORNEL_MODULE=OUT/other.zy", VORNEL_COMMAND, "batch", "OUT/moved/list.jsonl", "--dry-run"}));
  EXPECT_THAT(other.output, HasSubstr("to export: another vornel made it"));
}

TEST_F(Batch, AFailedLineStopsNoOther) {
  WriteFile("scenes/small.orvo", kSmall);
  WriteFile("scenes/bad.orvo", "{");
  WriteFile("scenes/warns.obj", "mtllib none.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  WriteFile("b.glb", "old");
  const std::vector<std::string> lines = {
      R"({"input": "scenes/small.orvo", "output": "a.glb"})",
      R"({"input": "scenes/bad.orvo", "output": "b.glb"})",
      R"({"input": "scenes/small.orvo", "output": "scenes/small.orvo/c.glb"})",
      R"({"input": "scenes/warns.obj", "output": "d.glb", "options": {"strict": true}})",
      "",
      R"({"input": "scenes/small.orvo", "output": "e.glb"})"};
  const CommandRun run = RunManifest(lines, {"--jobs", "3"});
  EXPECT_EQ(run.exitCode, kSomeFailed);
  EXPECT_THAT(Statuses(), ElementsAre("1 done", "2 failed", "3 failed", "4 failed", "6 done"));
  std::vector<std::string> errors = run.ErrorLines();
  ASSERT_EQ(errors.size(), 4u) << run.errors;
  EXPECT_THAT(errors[0], HasSubstr("list.jsonl:2: scenes/bad.orvo:1:"));
  EXPECT_THAT(errors[1], HasSubstr("list.jsonl:3: scenes/small.orvo/c.glb: "));
  EXPECT_THAT(errors[2], HasSubstr("list.jsonl:4: d.glb: material library not found: scenes/none.mtl"));
  EXPECT_EQ(errors[3], "2 done, 0 skipped, 3 failed");
  EXPECT_EQ(Read("b.glb"), "old");
  EXPECT_THAT(Read("summary"), HasSubstr(R"("status":"failed","exitCode":3,"error":"scenes/bad.orvo:1:)"));

  EXPECT_EQ(RunAgain({"--jobs", "1", "--fail-fast"}).exitCode, kSomeFailed);
  EXPECT_THAT(Statuses(), ElementsAre("1 skipped", "2 failed"));

  const std::pair<int, int> tasks[] = {{1, kDone},     {2, kInput}, {3, kOutput},
                                       {4, kWarnings}, {5, kDone},  {7, kUsage}};
  for (const auto& [task, exitCode] : tasks)
    EXPECT_EQ(RunAgain({"--task", std::to_string(task)}).exitCode, exitCode) << task;
  EXPECT_THAT(Statuses(), IsEmpty());
  for (const char* flags : {"--jobs=2", "--fail-fast"}) EXPECT_EQ(RunAgain({"--task=1", flags}).exitCode, kUsage);
  EXPECT_EQ(RunAgain({"--task=0"}).exitCode, kUsage);
  EXPECT_EQ(Run({"batch", "OUT/list.jsonl", "--summary", "OUT/list.jsonl"}).exitCode, kInput);
  EXPECT_EQ(Run({"batch", "OUT/list.jsonl", "--summary", "OUT/no/where"}).exitCode, kOutput);
}

constexpr char kLong[] = R"({"orvo": 1, "time": {"start": 0, "end": 20000, "fps": 1000}, "items": [
    {"position": {"keys": [[0, 0, 0, 0], [1, 1, 1, 1]]}}]})";

TEST_F(Batch, ASignalEndsAllProcessesAndLeavesNothing) {
  WriteFile("scenes/long.orvo", kLong);
  for (const int signal : {SIGINT, SIGTERM}) {
    WriteFile("list.jsonl", R"({"input": "scenes/long.orvo", "output": "a.glb"}
                               )"
                            R"({"input": "scenes/long.orvo", "output": "b.glb"})");
    RunningCommand command(Completed({VORNEL_COMMAND, "batch", "OUT/list.jsonl", "--jobs", "2"}));
    const pid_t child = FindChild();
    ASSERT_NE(child, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    command.Signal(signal);
    EXPECT_EQ(command.Wait().exitCode, 128 + signal);
    EXPECT_NE(kill(child, 0), 0);
    EXPECT_THAT(Files(), UnorderedElementsAre("list.jsonl", "scenes", "scenes/long.orvo"));
  }
}

TEST_F(Batch, AKilledProcessFailsItsLineAndIsMadeGoodByTheNextRun) {
  WriteFile("scenes/scene.orvo", kLong);
  WriteFile("list.jsonl", R"({"input": "scenes/scene.orvo", "output": "a.glb"})");
  RunningCommand command(Completed({VORNEL_COMMAND, "batch", "OUT/list.jsonl"}));
  const pid_t child = FindChild();
  ASSERT_NE(child, 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  kill(child, SIGKILL);
  const CommandRun killed = command.Wait();
  EXPECT_EQ(killed.exitCode, kSomeFailed);
  EXPECT_THAT(killed.errors, HasSubstr("list.jsonl:1: a.glb: signal 9 ended the export"));
  WriteFile("scenes/scene.orvo", kSmall);
  EXPECT_EQ(RunAgain().exitCode, kDone);
  EXPECT_THAT(Statuses(), ElementsAre("1 done"));
  EXPECT_THAT(Files(), UnorderedElementsAre(".a.glb.vornel", "a.glb", "list.jsonl", "scenes", "scenes/scene.orvo",
                                            "summary"));
}

TEST_F(Batch, ShowsHowFarItIs) {
  WriteFile("scenes/small.orvo", kSmall);
  const std::vector<std::string> line = {R"({"input": "scenes/small.orvo", "output": "a.glb"})"};
  EXPECT_THAT(RunManifest(line, {"--progress", "plain"}).ErrorLines(),
              ElementsAre("vornel: 0 of 1   0 %", "1 done, 0 skipped, 0 failed"));
  EXPECT_THAT(RunAgain({"-q"}).errors, IsEmpty());
}

}  // namespace
