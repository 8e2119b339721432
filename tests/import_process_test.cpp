// What comes back from an importer that crashes, hangs or cheats. Small shell scripts stand in for it.
#include "readers/import_process.h"

#include "readers/foreign_reader.h"
#include "readers/read_scene.h"
#include "tests/support/command_runner.h"
#include "tests/support/glb_reader.h"
#include "tests/support/temp_directory.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

// Puts $out, the private directory, and $in before a script.
constexpr char kStart[] = "#!/bin/sh\nfor out; do in=$last; last=$out; done\n";
constexpr char kSound[] = R"(echo '{"orvo": 1, "items": [{"name": "A"}]}' >$out/scene.orvo
echo '{}' >$out/report.json
)";

class ImportProcess : public testing::Test {
 protected:
  ImportProcess() {
    fs::create_directories(Path("temporary"));
    fs::create_directories(Path("models"));
    setenv("TMPDIR", Path("temporary").c_str(), 1);
    setenv("VORNEL_IMPORT", Path("importer").c_str(), 1);
    Write("models/a.fbx", "model");
    options_.importTimeout = std::chrono::seconds(20);
    options_.importMemory = std::uint64_t{64} << 20;
  }
  ~ImportProcess() override {
    unsetenv("TMPDIR");
    unsetenv("VORNEL_IMPORT");
  }

  std::string Path(const std::string& name) const { return (directory_.Path() / name).string(); }
  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
  }
  void SetImporter(const std::string& script) const {
    Write("importer", kStart + script);
    fs::permissions(Path("importer"), fs::perms::owner_all);
  }
  // Those of the reader; others are the test's own.
  std::vector<std::string> TemporaryFiles() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(Path("temporary")))
      if (entry.path().filename().string().starts_with("vornel-import-")) files.push_back(entry.path().string());
    return files;
  }
  // The reason that the reader gives, behind the file's name.
  std::string Reason(const std::string& script) {
    SetImporter(script);
    try {
      readers::ReadReport report;
      readers::ReadScene(Path("models/a.fbx"), options_, report);
      return "none";
    } catch (const readers::InputError& error) {
      const std::string text = error.what();
      const std::string start = Path("models/a.fbx") + ": ";
      EXPECT_EQ(text.substr(0, start.size()), start);
      EXPECT_EQ(text.find('\n'), std::string::npos);
      return text.substr(start.size());
    }
  }

  test_support::TempDirectory directory_;
  readers::ReadOptions options_;
};

struct Fault {
  const char* script;
  const char* reason;  // a part of it
};

const Fault kFaults[] = {
    {"kill -SEGV $$", "the importer crashed (SIGSEGV)"},
    {"kill -ABRT $$", "the importer crashed (SIGABRT)"},
    {"kill -KILL $$", "the importer crashed (SIGKILL)"},
    {"kill -XCPU $$", "reading took longer than its limit of 20 s"},
    {"kill -XFSZ $$", "what was read takes more than its limit of 64 MiB"},
    {"head -c 67000000 /dev/zero >$out/scene.bin; head -c 67000000 /dev/zero >$out/scene.orvo; sleep 100",
     "what was read takes more than its limit of 64 MiB"},
    {"exit 7", "the importer failed with exit code 7"},
    {"echo first >&2; printf 'it is\\033[31m broken\\n\\n' >&2; exit 1", "it is?[31m broken"},
    {"head -c 100000 /dev/zero | tr '\\0' 'x' >&2; exit 1", "xxx..."},
    {"exit 0", "the importer gave no report"},
    {"echo '{}' >$out/report.json", "the importer gave no scene"},
    {"echo '[' >$out/report.json", "the importer gave a broken report"},
    {"echo '{}' >$out/report.json; echo 'no scene' >$out/scene.orvo", "the importer gave a broken scene:1:2: "},
    {"echo '{}' >$out/report.json; echo '{\"orvo\": 1, \"items\": [' >$out/scene.orvo",
     "the importer gave a broken scene:2:1: "},
    {"echo '{}' >$out/report.json; mkdir $out/scene.orvo", "the importer gave no scene"},
    {"echo '{}' >$out/report.json; mkfifo $out/scene.orvo", "the importer gave no scene"},
    {"mkfifo $out/report.json", "the importer gave no report"},
    {"echo '{}' >$out/report.json; ln -s /etc/passwd $out/scene.orvo", "the importer gave no scene"},
    {"echo '{}' >$out/report.json; echo '{}' >$in.2; ln $in.2 $out/scene.orvo", "the importer gave no scene"},
    {R"(echo '{}' >$out/report.json; ln -s /etc/passwd $out/a.bin
        echo '{"orvo": 1, "items": [{"mesh": {"points": {"file": "a.bin", "count": 3}}}]}' >$out/scene.orvo)",
     "the importer gave a broken scene: /items/0/mesh/points/file: "},
    {R"(echo '{}' >$out/report.json; echo short >$out/a.bin
        echo '{"orvo": 1, "items": [{"mesh": {"points": {"file": "a.bin", "count": 3000}}}]}' >$out/scene.orvo)",
     "the importer gave a broken scene: /items/0/mesh/points: "},
    {"echo '{}' >$out/report.json; head -c 5000000 /dev/zero >$out/scene.orvo",
     "the scene has too much besides its arrays for its limit of 64 MiB"},
};

TEST_F(ImportProcess, EachFaultIsOneLineAndLeavesNothing) {
  for (const Fault& fault : kFaults) {
    EXPECT_THAT(Reason(fault.script), HasSubstr(fault.reason)) << fault.script;
    EXPECT_THAT(TemporaryFiles(), IsEmpty()) << fault.script;
  }
  fs::permissions(Path("importer"), fs::perms::none);
  fs::remove(Path("importer"));
  readers::ReadReport report;
  EXPECT_THROW(readers::ReadScene(Path("models/a.fbx"), options_, report), readers::InputError);
  EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

// A killed process runs on until it gets its turn, and then may wait for a while to be reaped.
bool Ends(const std::string& process) {
  for (int tries = 0; tries < 1000; ++tries) {
    const std::string status = test_support::ReadWholeFile("/proc/" + process + "/stat");
    if (status.empty() || status.find(") Z ") != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

TEST_F(ImportProcess, ALoopIsEndedWithAllThatItStarted) {
  options_.importTimeout = std::chrono::seconds(1);
  for (const char* loop : {"while :; do :; done", "while :; do echo text >&2; done", "exec 2>&-; wait"}) {
    EXPECT_EQ(Reason("sleep 1000 & printf $! >" + Path("process") + "; " + loop),
              "reading took longer than its limit of 1 s")
        << loop;
    EXPECT_TRUE(Ends(test_support::ReadWholeFile(Path("process")))) << loop;
  }
  EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

// A process that the importer left behind holds its error stream open.
TEST_F(ImportProcess, WhatTheImporterLeavesBehindIsNotWaitedFor) {
  EXPECT_EQ(Reason(std::string(kSound) + "sleep 1000 &"), "none");
}

TEST_F(ImportProcess, GetsItsArgumentsAndNothingElse) {
  options_.metersPerUnit = 0.0254;
  options_.upAxis = readers::UpAxis::Z;
  const int inherited = fcntl(STDOUT_FILENO, F_DUPFD, 100);
  const std::string script = "[ -e /proc/$$/fd/" + std::to_string(inherited) + " ] && printf inherited >&2\n";
  EXPECT_THAT(Reason(script + R"sh(printf '%s|' "$@" >&2; env | tr '\n' '|' >&2; exit 1)sh"),
              testing::MatchesRegex("--memory=67108864.--seconds=20.--unit=0.0254.--up-axis=z.--." +
                                    Path("models/a.fbx") + "." + Path("temporary/vornel-import-") +
                                    "......[|](PWD=[^|]*|LC_ALL=C|PATH=/usr/bin:/bin|[|])*"));
  close(inherited);
}

TEST_F(ImportProcess, TheSceneIsReadAsIfItStoodBesideTheInput) {
  SetImporter(R"(mkdir $out/textures; echo image >$out/textures/in.png; echo image >$out/textures/in.jpg
echo '{"orvo": 1, "items": [{"type": "imageMap", "image": "in.png"}, {"type": "imageMap", "image": "wood.png"}]}' \
  >$out/scene.orvo
ln -s $in $out/textures/link.png; ln $in $out/textures/name.png; mkfifo $out/textures/pipe.png; echo x >$out/own.png
cat >$out/report.json <<END
{"warnings": ["no \\u001b lens"], "textures": ["in.png", "in.jpg", "link.png", "name.png", "pipe.png", "none.png",
  "../own.png", "..", ".", "", "/etc/passwd", 5], "files": ["${in%/*}/a.bin", "${in%/*}", "${in%/*}/../b.bin",
  "${in%/*}-c.bin", "/etc/passwd", "a.bin", ""]}
END
)");
  readers::ReadReport report;
  const headless::SceneData scene = readers::ReadScene(Path("models/a.fbx"), options_, report);
  EXPECT_EQ(scene.directory, Path("models"));
  EXPECT_THAT(report.warnings, ElementsAre(Path("models/a.fbx") + ": no ? lens"));
  EXPECT_THAT(report.files, ElementsAre(Path("models/a.bin"))) << "nothing else could be read";
  ASSERT_THAT(report.temporaryImages, ElementsAre(EndsWith("/textures/in.png"), EndsWith("/textures/in.jpg")));
  std::vector<std::string> images;
  for (const headless::ItemData& item : scene.items)
    if (item.imagePath) images.push_back(*item.imagePath);
  EXPECT_THAT(images, ElementsAre(report.temporaryImages[0].string(), "wood.png"));
  EXPECT_TRUE(fs::exists(report.temporaryImages[0]));
  report.keepAlive.reset();
  EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(ImportProcess, OnlyARegularFileStartsTheImporter) {
  SetImporter("touch " + Path("started"));
  fs::create_directory(Path("models/folder.fbx"));
  ASSERT_EQ(mkfifo(Path("models/pipe.fbx").c_str(), 0600), 0);
  for (const char* name : {"none.fbx", "folder.fbx", "pipe.fbx", "none", ""}) {
    readers::ReadReport report;
    EXPECT_THROW(readers::ReadScene(Path(std::string("models/") + name), options_, report), readers::InputError);
  }
  EXPECT_FALSE(fs::exists(Path("started")));
}

TEST_F(ImportProcess, UnitAndAxisAreForForeignFormats) {
  options_.metersPerUnit = 1;
  Write("models/a.obj", "v 0 0 0\n");
  readers::ReadReport report;
  readers::ReadScene(Path("models/a.obj"), options_, report);
  EXPECT_THAT(report.warnings, testing::Contains(HasSubstr("can't be set for .obj files")));
}

// The command as a whole: images that the file held reach the output, also where none may lie elsewhere.
TEST_F(ImportProcess, TheCommandExportsImagesThatTheFileHeld) {
  SetImporter(R"(mkdir $out/textures; printf '\211PNG\r\n\032\nPIXELS' >$out/textures/in.png
cp ")" VORNEL_SOURCE_DIR R"(/tests/golden/textures.orvo" $out/scene.orvo
sed -i 's/"image": *"[^"]*"/"image": "in.png"/' $out/scene.orvo
echo '{"textures": ["in.png"]}' >$out/report.json)");
  for (const char* output : {"a.glb", "a.gltf"}) {
    const test_support::CommandRun run = test_support::RunCommand(
        {VORNEL_COMMAND, "export", Path("models/a.fbx"), "-o", Path(output), "--image-root", Path("models")});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.errors, testing::Not(HasSubstr("left out")));
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
  }
  EXPECT_THAT(test_support::ReadWholeFile(Path("a.glb")), HasSubstr("PIXELS"));
  EXPECT_THAT(test_support::ReadWholeFile(Path("in.png")), HasSubstr("PIXELS"));
}

TEST_F(ImportProcess, ASignalEndsTheImporterToo) {
  SetImporter("sleep 1000 & printf $! >" + Path("new") + "; mv " + Path("new") + " " + Path("process") + "; wait");
  for (const int number : {SIGTERM, SIGINT}) {
    test_support::RunningCommand command({VORNEL_COMMAND, "info", Path("models/a.fbx")});
    while (!fs::exists(Path("process"))) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    command.Signal(number);
    EXPECT_EQ(command.Wait().exitCode, 128 + number);
    EXPECT_TRUE(Ends(test_support::ReadWholeFile(Path("process"))));
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
    fs::remove(Path("process"));
  }
}

TEST_F(ImportProcess, WrongReadOptionsAreUsageErrors) {
  const std::vector<std::string> wrong[] = {
      {"--unit", "0"},           {"--unit", "-1"},         {"--unit", "league"},
      {"--unit", "nan"},         {"--unit", "1e999"},      {"--up-axis", "w"},
      {"--import-timeout", "0"}, {"--import-memory", "1"}, {"--unit", ""}};
  for (const std::vector<std::string>& options : wrong) {
    std::vector<std::string> arguments = {VORNEL_COMMAND, "info", Path("models/a.fbx")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(test_support::RunCommand(arguments).exitCode, 2) << testing::PrintToString(options);
  }
  SetImporter("printf '%s|' \"$@\" >&2; exit 1");
  const test_support::CommandRun run =
      test_support::RunCommand({VORNEL_COMMAND, "info", Path("models/a.fbx"), "--unit", "ft", "--up-axis", "x",
                                "--import-timeout", "7", "--import-memory", "100"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_THAT(run.errors, HasSubstr(": --memory=104857600|--seconds=7|--unit=0.3048|--up-axis=x|--|"));
}

}  // namespace
