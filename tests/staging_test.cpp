// Files come into place whole or not at all, also when a run is killed.
#include "tool/staging.h"

#include "tests/support/command_fixture.h"
#include "tool/leftovers.h"

#include <sys/file.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <thread>
#include <unistd.h>

namespace {

using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

class StagingTest : public Command {
 protected:
  // What a run left that was killed after so many moves of a.bin, b.png and a.gltf. b.png is new.
  void LeaveMoves(std::size_t moves) const {
    const fs::path left = Out() / ".vornel-aB3dE6";
    for (const char* folder : {"new", "old"}) fs::create_directories(left / folder);
    WriteFile(".vornel-aB3dE6/lock", "");
    std::vector<tool::JournalMove> journal;
    for (const char* name : {"a.bin", "b.png", "a.gltf"}) {
      WriteFile(std::string(".vornel-aB3dE6/new/") + name, "new " + std::string(name));
      const bool hasOld = std::string(name) != "b.png";
      if (hasOld) {
        WriteFile(name, "old");
        fs::create_hard_link(Out() / name, left / "old" / std::to_string(journal.size()));
      }
      journal.push_back({name, 0, 0, 0, hasOld});
    }
    tool::WriteJournal(left, journal);
    for (std::size_t move = 0; move < moves; ++move)
      fs::rename(left / "new" / journal[move].name, Out() / journal[move].name);
  }
};

TEST_F(StagingTest, UndoesMovesThatWereCutShort) {
  for (std::size_t moves = 0; moves <= 3; ++moves) {
    SCOPED_TRACE(moves);
    LeaveMoves(moves);
    const bool whole = moves == 3;
    const tool::Staging staging(Out() / "other.glb");
    EXPECT_EQ(staging.Notes().size(), whole ? 0 : moves);
    EXPECT_EQ(Read("a.gltf"), whole ? "new a.gltf" : "old");
    EXPECT_EQ(Read("a.bin"), whole ? "new a.bin" : "old");
    EXPECT_EQ(fs::exists(Out() / "b.png"), whole);
    EXPECT_FALSE(fs::exists(Out() / ".vornel-aB3dE6"));
  }
}

TEST_F(StagingTest, LeavesFilesThatWereReplacedSince) {
  LeaveMoves(2);
  fs::remove(Out() / "a.bin");
  WriteFile("a.bin", "of another program");
  EXPECT_THAT(tool::ClearLeftovers(Out()), ElementsAre(Out() / "b.png"));
  EXPECT_EQ(Read("a.bin"), "of another program");
}

TEST_F(StagingTest, ClearsOnlyWhatDeadRunsLeft) {
  for (const char* other :
       {".vornel-abcdef7", ".vornel-abcde", ".vornel-abc.ef", "vornel-abcdef", ".vornel-foreig"})
    fs::create_directories(Out() / other / "new");
  WriteFile(".vornel-file00", "");
  fs::create_directory_symlink(Out(), Out() / ".vornel-link00");
  fs::create_directory(Out() / ".vornel-empty0");
  LeaveMoves(0);
  std::vector<std::string> before = Files();
  {
    // Of a living run, of this process and of another.
    const tool::Staging living(Out() / "a.gltf");
    const tool::Staging other(Out() / "b.gltf");
    EXPECT_TRUE(fs::exists(living.Directory()));
  }
  std::erase_if(before, [](const std::string& name) {
    return name.starts_with(".vornel-empty0") || name.starts_with(".vornel-aB3dE6");
  });
  EXPECT_EQ(Files(), before);
}

TEST_F(StagingTest, AMoveThatFailsPutsBackWhatWasMoved) {
  WriteFile("a.bin", "old");
  WriteFile("a.gltf", "old");
  {
    tool::Staging staging(Out() / "a.gltf");
    for (const char* name : {"a.bin", "b.png", "a.gltf"}) std::ofstream(staging.Directory() / name) << "new";
    fs::remove(Out() / "a.gltf");
    fs::create_directory(Out() / "a.gltf");
    EXPECT_ANY_THROW(staging.MoveIntoPlace());
    fs::remove(Out() / "a.gltf");
  }
  EXPECT_THAT(Files(), ElementsAre("a.bin"));
  EXPECT_EQ(Read("a.bin"), "old");
}

class KilledExport : public StagingTest, public testing::WithParamInterface<const char*> {
 protected:
  // A scene of one more item and an image of its own.
  void WriteScene(const std::string& folder, const std::string& name) const {
    fs::create_directory(Out() / folder);
    WriteFile(folder + "/wood.png", ReadWholeFile(kGoldens / "red.png") + name);
    std::string scene = ReadWholeFile(kGoldens / "copies.orvo");
    for (const char* path : {"images/red.png", "images/plain.tga"})
      for (std::size_t place; (place = scene.find(path)) != std::string::npos;)
        scene.replace(place, std::strlen(path), "wood.png");
    scene.replace(scene.find("\"items\": ["), 10, "\"items\": [{\"name\": \"" + name + "\"}, ");
    WriteFile(folder + "/scene.orvo", scene);
  }
  // The exported files, empty before there are any.
  std::string Together() const {
    std::string together;
    for (const char* name : {"a.gltf", "a.bin", "wood.png", "a.glb"})
      together += (fs::exists(Out() / name) ? Read(name) : "") + '|';
    return together;
  }
};

// Kills exports of two scenes into the same files at random times.
TEST_P(KilledExport, LeavesTheOldFilesOrTheNewOnes) {
  const std::string output = std::string("OUT/") + GetParam();
  WriteScene("one", "One");
  WriteScene("two", "Second");
  const auto began = std::chrono::steady_clock::now();
  ASSERT_EQ(Export("OUT/one/scene.orvo", output).exitCode, kDone);
  const auto whole = std::chrono::steady_clock::now() - began;
  const std::string one = Together();
  ASSERT_EQ(Export("OUT/two/scene.orvo", output).exitCode, kDone);
  const std::string two = Together();
  ASSERT_NE(one, two);
  const std::vector<std::string> files = Files();

  const char* const text = std::getenv("VORNEL_KILLS");
  const int kills = text ? std::atoi(text) : 20;
  std::mt19937 random(1);
  int changed = 0, left = 0;
  std::size_t undone = 0;
  for (int kill = 0; kill < kills; ++kill) {
    const std::string before = Together();
    const std::string scene = before == two ? "OUT/one/scene.orvo" : "OUT/two/scene.orvo";
    RunningCommand command(Completed({VORNEL_COMMAND, "export", scene, "-o", output, "-q"}));
    std::this_thread::sleep_for(whole * (random() % 1000) / 1000);
    command.Signal(SIGKILL);
    command.Wait();
    left += Files().size() > files.size();
    undone += tool::ClearLeftovers(Out()).size();
    const std::string after = Together();
    EXPECT_TRUE(after == one || after == two) << "kill " << kill;
    changed += after != before;
    EXPECT_EQ(Files(), files);
  }
  RecordProperty("changed", changed);
  RecordProperty("left", left);
  RecordProperty("undone", static_cast<int>(undone));
  EXPECT_GT(left, 0) << "no kill hit a run in its work";
}

INSTANTIATE_TEST_SUITE_P(Targets, KilledExport, testing::Values("a.glb", "a.gltf"),
                         [](const auto& target) { return std::string(target.param).substr(2); });

}  // namespace
