// What shows how far an export is, on terminals and elsewhere, and that it changes nothing.
#include "tool/progress.h"

#include "tests/support/command_fixture.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <pty.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace test_support;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// A terminal whose output is collected.
class Terminal {
 public:
  Terminal() {
    winsize size{24, 60, 0, 0};
    std::array<char, 64> name{};
    if (openpty(&master_, &slave_, name.data(), nullptr, &size) != 0) throw std::runtime_error("no terminal");
    name_ = name.data();
    reader_ = std::thread([this] {
      std::array<char, 4096> block;
      for (ssize_t got; (got = read(master_, block.data(), block.size())) > 0;)
        text_.append(block.data(), static_cast<std::size_t>(got));
    });
  }
  ~Terminal() {
    if (reader_.joinable()) Close();
    close(master_);
  }
  const std::string& Name() const { return name_; }
  // What was shown. Nothing has the terminal open any more.
  std::string Close() {
    close(slave_);
    reader_.join();
    return text_;
  }

 private:
  int master_ = -1, slave_ = -1;
  std::string name_, text_;
  std::thread reader_;
};

class ProgressTest : public Command {
 protected:
  // What an export shows on a terminal, with variables set as `env` sets them.
  std::string Shown(std::vector<std::string> variables, std::vector<std::string> more) {
    Terminal terminal;
    std::vector<std::string> arguments = {"env", "-u", "NO_COLOR"};
    arguments.insert(arguments.end(), variables.begin(), variables.end());
    arguments.insert(arguments.end(), {"sh", "-c", "exec \"$@\" 2>" + terminal.Name(), "sh", VORNEL_COMMAND,
                                       "export", kScene, "-o", "OUT/a.glb", "--log", "OUT/log"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(RunCommand(Completed(arguments)).exitCode, kDone);
    EXPECT_EQ(Read("a.glb"), ReadWholeFile(kGoldens / "meshes.glb"));
    EXPECT_EQ(Read("log"), ReadWholeFile(kGoldens / "meshes.log.jsonl"));
    return terminal.Close();
  }
};

TEST_F(ProgressTest, ATerminalShowsABarThatGoesAway) {
  const std::string shown = Shown({"TERM=xterm"}, {});
  EXPECT_THAT(shown,
              AllOf(HasSubstr("reading"), HasSubstr("verifying"), HasSubstr("\x1b[36m##"), HasSubstr(" %")));
  // Each line of the bar is erased before the next one, and the last one before the report.
  const std::string rest = shown.substr(shown.rfind("\x1b[K"));
  EXPECT_THAT(rest, AllOf(HasSubstr("  nodes "), Not(HasSubstr("%"))));

  const std::string plain = Shown({"TERM=xterm", "NO_COLOR=1"}, {});
  EXPECT_THAT(plain, AllOf(HasSubstr("[###"), Not(HasSubstr("\x1b[36m"))));
}

TEST_F(ProgressTest, SomeTerminalsAndUsersWantNoBar) {
  struct Case {
    std::vector<std::string> variables, flags;
  };
  const Case cases[] = {{{"TERM=dumb"}, {}},
                        {{"TERM=xterm"}, {"-q"}},
                        {{"TERM=xterm"}, {"-q", "--progress", "bar"}},
                        {{"TERM=xterm"}, {"--progress", "none"}}};
  for (const Case& one : cases)
    EXPECT_THAT(Shown(one.variables, one.flags), AllOf(Not(HasSubstr("\x1b")), Not(HasSubstr("reading"))));
  EXPECT_THAT(Shown({"TERM=dumb"}, {"--progress", "bar"}), HasSubstr("reading"));
}

TEST_F(ProgressTest, PlainLinesGoAnywhereAndABarOnlyToATerminal) {
  const std::vector<std::string> lines = Export(kScene, "OUT/a.glb", {"--progress", "plain"}).ErrorLines();
  EXPECT_THAT(lines,
              testing::IsSupersetOf({std::string("vornel: reading"), std::string("vornel: scanning  0 %")}));
  for (const char* style : {"auto", "bar", "none"}) {
    const CommandRun run = Export(kScene, "OUT/b.glb", {"--progress", style});
    EXPECT_THAT(run.errors, AllOf(Not(HasSubstr("reading")), Not(HasSubstr("\x1b"))));
  }
  EXPECT_THAT(Export(kScene, "OUT/b.glb", {"--progress", "plain", "-q"}).errors, IsEmpty());
  EXPECT_EQ(Read("a.glb"), Read("b.glb"));
}

TEST_F(ProgressTest, ASignalTakesTheBarAway) {
  WriteFile("long.orvo", R"({"orvo": 1, "time": {"start": 0, "end": 20000, "fps": 1000}, "items": [
      {"position": {"keys": [[0, 0, 0, 0], [1, 1, 1, 1]]}}]})");
  Terminal terminal;
  RunningCommand command(Completed({"sh", "-c", "TERM=xterm exec \"$@\" 2>" + terminal.Name(), "sh",
                                    VORNEL_COMMAND, "export", "OUT/long.orvo", "-o", "OUT/a.glb"}));
  for (int tries = 0; tries < 2000 && Files().size() < 4; ++tries)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  command.Signal(SIGINT);
  EXPECT_EQ(command.Wait().exitCode, 128 + SIGINT);
  EXPECT_THAT(terminal.Close(), testing::EndsWith("\r\x1b[K"));
  EXPECT_THAT(Files(), testing::ElementsAre("long.orvo"));
}

TEST(Stages, TellTheShareOfThePlannedWork) {
  using tool::Stage;
  tool::Stages stages;
  stages.Begin(Stage::Reading);
  EXPECT_FALSE(stages.Done());
  EXPECT_FALSE(stages.SecondsLeft());
  stages.Plan({0, 60, 0, 20, 15, 5});
  stages.Begin(Stage::Scanning);
  EXPECT_EQ(stages.Done(), 0);
  EXPECT_FALSE(stages.SecondsLeft());
  stages.SetDone(Stage::Scanning, 0.5);
  stages.SetDone(Stage::Scanning, 0.25);
  EXPECT_DOUBLE_EQ(*stages.Done(), 0.3);
  EXPECT_GE(*stages.SecondsLeft(), 0);
  stages.SetDone(Stage::Scanning, 7);
  EXPECT_DOUBLE_EQ(*stages.Done(), 0.6);
  stages.Begin(Stage::Verifying);
  EXPECT_DOUBLE_EQ(*stages.Done(), 0.8);
  EXPECT_EQ(stages.Seconds()[5], 0);
  for (const std::size_t columns : {20u, 40u, 60u, 200u})
    EXPECT_LE(tool::BarLine(stages, columns).size(), std::max<std::size_t>(columns + 9, 45)) << columns;
}

}  // namespace
