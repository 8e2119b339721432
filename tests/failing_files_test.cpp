// Commands of which one call on a file fails, or reads or writes only half of what it shall.
#include "tests/support/fault_fixture.h"
#include "tool/leftovers.h"

#include <cerrno>
#include <csignal>
#include <iterator>

namespace {

using namespace test_support;

const FaultCase kCases[] = {
    {"glb", {"export", "SOURCE/tests/golden/textures.orvo", "-o", "OUT/a.glb"}},
    {"gltf", {"export", "SOURCE/tests/golden/copies.orvo", "-o", "OUT/a.gltf"}},
    {"report", {"export", "SOURCE/tests/golden/nodes.orvo", "-o", "OUT/a.glb", "--report", "OUT/report.json"}},
    {"obj", {"export", "SOURCE/examples/pyramid.obj", "-o", "OUT/a.gltf"}},
    {"record", {"record", "SOURCE/tests/golden/copies.orvo", "-o", "OUT/a.orvo", "--binary"}},
    {"options", {"load-options", "--set", "importUnits=2"}},
    {"options_file", {"load-options", "--write", "OUT/record"}},
};

struct Failure {
  FaultKind kind;
  int error;
  const char* name;
};
constexpr Failure kFailures[] = {{FaultKind::Call, EIO, "EIO"},
                                 {FaultKind::Call, ENOSPC, "ENOSPC"},
                                 {FaultKind::Call, EACCES, "EACCES"},
                                 {FaultKind::Call, EINTR, "EINTR"},
                                 {FaultKind::ShortCall, 0, "half"}};

class FailingFiles : public FaultTest {
 protected:
  void SetUp() override {
    FaultServer* const server = Start(GetParam());
    ASSERT_TRUE(server);
    if (!server->WatchesCalls()) GTEST_SKIP() << "this kernel doesn't let a process watch its own calls";
  }
  bool IsSound(const FaultRun& run) const {
    const bool ofOutput = fs::path(run.result.path).lexically_normal().string().starts_with(Out().string());
    const std::vector<std::string> told = run.Complaints(), usual = Sound().Complaints();
    const auto tells = [&](const std::string& line) {
      return line.find(fs::path(run.result.path).filename()) != std::string::npos &&
             std::find(usual.begin(), usual.end(), line) == usual.end();
    };
    if (run.exitCode == Sound().exitCode) {
      if (FindStand() == Stand::New && told == usual) return true;
      // An image that can't be read is left out, with a message.
      if (!ofOutput && std::any_of(told.begin(), told.end(), tells)) return FindStaging().empty();
      // A record copies an image that it can't compare once more, under a name of its own.
      return GetParam().arguments[0] == "record" && FindStaging().empty() && fs::exists(Out() / "plain-2.tga");
    }
    const bool ofSettings = run.Says("config.json");  // they are read and written
    if (run.exitCode != kOutput && (run.exitCode != kInput || (ofOutput && !ofSettings))) return false;
    return LeftOld(run) && !told.empty() && told.back().starts_with("vornel: error: /");
  }
};

TEST_P(FailingFiles, OneCall) {
  const std::uint64_t count = Sound().result.calls, step = FaultStep(23);
  ASSERT_GE(count, 10u);
  std::map<int, int> codes;
  for (std::uint64_t fault = count % step; fault < count * std::size(kFailures); fault += step) {
    const Failure& failure = kFailures[fault % std::size(kFailures)];
    const std::uint64_t place = fault / std::size(kFailures) + 1;
    const FaultRun run = RunFaulty({failure.kind, failure.error, place});
    if (run.result.hit == 0) continue;  // a call without a half
    EXPECT_TRUE(IsSound(run)) << failure.name << " from " << run.result.call << " of " << run.result.path
                              << ", call " << place << " of " << count << ": " << run.exitCode << ", "
                              << testing::PrintToString(Files()) << '\n'
                              << run.errors;
    ++codes[run.exitCode];
  }
  RecordProperty("calls", std::to_string(count));
  EXPECT_GT(codes[kOutput], 0);
}

TEST_P(FailingFiles, KilledBeforeOneCall) {
  if (GetParam().arguments[0] == "load-options") GTEST_SKIP() << "it leaves a file of its own then";
  const std::uint64_t count = Sound().result.calls, step = FaultStep(11);
  std::map<Stand, int> stands;
  int undone = 0;
  for (std::uint64_t place = 1; place <= count; place += step) {
    const FaultRun run = RunFaulty({FaultKind::Kill, 0, place});
    EXPECT_EQ(run.exitCode, 128 + SIGKILL);
    undone += !tool::ClearLeftovers(Out()).empty();
    const Stand stand = FindStand();
    EXPECT_NE(stand, Stand::Mixed) << run.result.call << " of " << run.result.path << ", call " << place << " of "
                                   << count << ": " << testing::PrintToString(Files());
    ++stands[stand];
  }
  RecordProperty("undone", undone);
  EXPECT_GT(stands[Stand::Old], 0);
  EXPECT_GT(stands[Stand::New], 0);
}

// Where nothing can be renamed or removed any more, old files can't be put back either: the next run does that.
// Three files are moved in a row, so one of their moves is always in the sample.
TEST_P(FailingFiles, OneCallAndAllLikeIt) {
  if (GetParam().arguments[0] == "load-options") GTEST_SKIP() << "it has one file";
  const std::uint64_t count = Sound().result.calls, step = FaultStep(3);
  std::map<Stand, int> stands;
  for (std::uint64_t place = 1 + count % step; place <= count; place += step) {
    const FaultRun run = RunFaulty({FaultKind::LastingCall, EIO, place});
    tool::ClearLeftovers(Out());
    const Stand stand = FindStand();
    const bool failed = run.exitCode == kInput || run.exitCode == kOutput;
    EXPECT_TRUE(failed ? stand != Stand::Mixed : run.exitCode == Sound().exitCode)
        << run.result.call << " of " << run.result.path << ", call " << place << " of " << count << ": "
        << run.exitCode << ", " << testing::PrintToString(Files()) << '\n'
        << run.errors;
    ++stands[stand];
  }
  EXPECT_GT(stands[Stand::Old], 0);
}

INSTANTIATE_TEST_SUITE_P(Commands, FailingFiles, testing::ValuesIn(kCases), NameOf);

}  // namespace
