// Commands that write to a disk with less and less room than they need.
#include "tests/support/command_fixture.h"

#include <sys/mount.h>

#include <map>
#include <ostream>
#include <sched.h>

namespace {

using namespace test_support;

constexpr std::size_t kPage = 4096;

struct DiskCase {
  const char* name;
  std::vector<std::string> arguments;
  std::vector<const char*> outputs;  // on the disk
};

void PrintTo(const DiskCase& run, std::ostream* stream) { *stream << run.name; }

const DiskCase kCases[] = {
    {"glb", {"export", "OUT/in/scene.orvo", "-o", "OUT/disk/a.glb"}, {"a.glb"}},
    {"gltf", {"export", "OUT/in/scene.orvo", "-o", "OUT/disk/a.gltf"}, {"a.bin", "a.gltf", "wood.png"}},
    {"report",
     {"export", "OUT/in/scene.orvo", "-o", "OUT/a.glb", "--report", "OUT/disk/report.json"},
     {"report.json"}},
    {"record", {"record", "OUT/in/scene.orvo", "-o", "OUT/disk/a.orvo", "--binary"}, {"a.bin", "a.orvo"}},
    {"batch", {"batch", "OUT/in/list.jsonl", "--summary", "OUT/disk/summary", "-q"}, {"a.glb"}},
    {"options",
     {"load-options", "--set", "importUnits=2", "--write", "OUT/disk/options"},
     {"options", "vornel/config.json"}},
    {"preview", {"preview", "OUT/a.glb", "-o", "OUT/disk/a.html", "-q"}, {"a.html"}},
};

class FullDisk : public Command, public testing::WithParamInterface<DiskCase> {
 protected:
  using Folder = std::map<std::string, std::string>;

  // An image of 60 KB in it.
  void SetUp() override {
    fs::create_directory(Out() / "in");
    fs::create_directory(Out() / "disk");
    WriteFile("in/wood.png", ReadWholeFile(kGoldens / "red.png") + std::string(60000, 'x'));
    std::string scene = ReadWholeFile(kGoldens / "copies.orvo");
    for (const char* path : {"images/red.png", "images/plain.tga"})
      for (std::size_t place; (place = scene.find(path)) != std::string::npos;)
        scene.replace(place, std::strlen(path), "wood.png");
    WriteFile("in/scene.orvo", scene);
    WriteFile("in/list.jsonl", R"({"input": "scene.orvo", "output": "../disk/a.glb"})");
    ASSERT_EQ(Export("OUT/in/scene.orvo", "OUT/a.glb").exitCode, kDone);
  }
  void TearDown() override { umount2(Disk().c_str(), MNT_DETACH); }

  fs::path Disk() const { return Out() / "disk"; }
  bool Mount(std::size_t size) const {
    umount2(Disk().c_str(), MNT_DETACH);
    return mount("none", Disk().c_str(), "tmpfs", 0, ("size=" + std::to_string(size)).c_str()) == 0;
  }
  CommandRun RunCase() {
    std::vector<std::string> arguments = {"env", "XDG_CONFIG_HOME=" + Disk().string(), VORNEL_COMMAND};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    return RunCommand(Completed(arguments));
  }
  // The outputs alone: a batch keeps a record beside them.
  Folder ReadOutputs() const {
    Folder folder;
    for (const char* name : GetParam().outputs)
      if (fs::exists(Disk() / name)) folder[name] = Read(std::string("disk/") + name);
    if (folder.contains("report.json") && folder["report.json"].ends_with("}\n")) folder["report.json"] = "whole";
    return folder;
  }
  bool HasLeftovers() const {
    const std::vector<std::string> files = Files();
    return std::any_of(files.begin(), files.end(), [](const std::string& name) {
      return name.find("/.vornel-") != std::string::npos && name.find("/new") != std::string::npos;
    });
  }
};

TEST_P(FullDisk, LeavesTheOldFilesOrTheNewOnes) {
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      !Mount(1 << 26))
    GTEST_SKIP() << "nothing can be mounted here";
  const CommandRun first = RunCase();
  if (first.errors.find("lacks the viewer") != std::string::npos) GTEST_SKIP() << first.errors;
  ASSERT_EQ(first.exitCode, kDone) << first.errors;
  const Folder whole = ReadOutputs();
  Folder old;
  std::size_t pages = 0, steps = 0, failures = 0;
  for (const auto& [name, text] : whole) old[name] = "{}", ++pages;

  for (int exitCode = -1; exitCode != kDone; ++steps) {
    ASSERT_TRUE(Mount((pages + steps) * kPage));
    for (const auto& [name, text] : old) {
      fs::create_directories((Disk() / name).parent_path());
      WriteFile("disk/" + name, text);
    }
    const CommandRun run = RunCase();
    exitCode = run.exitCode;
    SCOPED_TRACE(std::to_string(steps) + " free pages: " + std::to_string(exitCode) + ", " + run.errors);
    EXPECT_FALSE(HasLeftovers()) << testing::PrintToString(Files());
    if (exitCode == kDone) {
      EXPECT_EQ(ReadOutputs(), whole);
      break;
    }
    ++failures;
    ASSERT_TRUE(exitCode == kOutput || exitCode == kSomeFailed);
    // A summary follows the export, which stands.
    const bool isLate = run.errors.find("summary: can't write") != std::string::npos;
    EXPECT_EQ(ReadOutputs(), isLate ? whole : old);
    EXPECT_THAT(run.errors, testing::HasSubstr("No space left on device"));
    ASSERT_LT(steps, 1000u);
  }
  RecordProperty("steps", std::to_string(steps));
  EXPECT_GT(failures, 0u);
}

INSTANTIATE_TEST_SUITE_P(Commands, FullDisk, testing::ValuesIn(kCases),
                         [](const auto& run) { return std::string(run.param.name); });

}  // namespace
