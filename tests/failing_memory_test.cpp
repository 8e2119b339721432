// Commands of which one allocation of memory fails, or all from one on.
#include "tests/support/fault_fixture.h"
#include "tool/leftovers.h"

#include <set>

namespace {

using namespace test_support;

std::vector<std::string> ExportOf(const std::string& scene, const std::string& output,
                                  std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"export", "SOURCE/" + scene, "-o", "OUT/" + output});
  return more;
}

const FaultCase kCases[] = {
    {"meshes", ExportOf("tests/golden/meshes.orvo", "a.glb")},
    {"materials", ExportOf("tests/golden/materials.orvo", "a.gltf")},
    {"textures", ExportOf("tests/golden/textures.orvo", "a.glb")},
    {"copies", ExportOf("tests/golden/copies.orvo", "a.gltf", {"--report", "OUT/report.json"})},
    {"skin", ExportOf("tests/golden/skin_groups.orvo", "a.glb")},
    {"skin_files", ExportOf("tests/golden/skin_graph.orvo", "a.gltf")},
    {"animation", ExportOf("tests/golden/animation.orvo", "a.glb")},
    {"actors", ExportOf("tests/golden/actions.orvo", "a.glb")},
    {"nodes", ExportOf("tests/golden/nodes.orvo", "a.glb")},
    {"obj", ExportOf("examples/pyramid.obj", "a.gltf")},
    {"warnings", ExportOf("examples/warnings.orvo", "a.glb", {"--verbose"})},
    {"refused", ExportOf("tests/golden/none.obj", "a.glb"), kInput},
    {"options", {"load-options", "--set", "importUnits=2"}},
    {"options_file", {"load-options", "--write", "OUT/record"}},
    {"record", {"record", "SOURCE/tests/golden/copies.orvo", "-o", "OUT/a.orvo", "--binary"}},
};

// Most of what commands allocate is the same in all, such as for their options and the schema. The sanitizers are
// too slow to try that again.
#ifdef VORNEL_SANITIZED
constexpr bool kSkipsRepeated = true;
#else
constexpr bool kSkipsRepeated = false;
#endif

class FailingMemory : public FaultTest {
 protected:
  // Either it did without, or it says so and leaves all as it was; or as it shall be, when only the telling of it
  // failed.
  bool IsSound(const FaultRun& run) const {
    if (run.exitCode == Sound().exitCode && run.Complaints() == Sound().Complaints()) return StandsNew();
    return (run.exitCode == kInput || run.exitCode == kOutput) && FindStand() != Stand::Mixed &&
           (run.Says("out of memory") || run.Says("the export failed") || run.Says("annot allocate memory") ||
            run.Says("one can't be read") ||                // an image, for the comparison with what was written
            run.Says("Resource temporarily unavailable"));  // as the system says where there is none for a thread
  }
  // Whether this allocation has been tried already, after just the same ones: see FaultRun::trace.
  bool IsRepeated(std::uint64_t place) const {
    static std::set<std::uint64_t> tried;
    const std::vector<std::uint64_t>& trace = Sound().trace;
    return place <= trace.size() && !tried.insert(trace[place - 1]).second;
  }
  void Sweep(FaultKind kind, std::uint64_t step) {
    FaultServer* const server = Start(GetParam());
    if (!server) return;
    const std::uint64_t count = Sound().result.allocations;
#ifdef VORNEL_SANITIZED
    if (count == 0)
      GTEST_SKIP() << "clang builds the sanitizer's allocator into the program, where it can't be replaced";
#endif
    ASSERT_GT(count, 100u);
    std::map<int, int> codes;
    int repeated = 0;
    for (std::uint64_t place = 1 + count % step; place <= count; place += step) {
      if (kSkipsRepeated && kind == FaultKind::Allocation && IsRepeated(place)) {
        ++repeated;
        continue;
      }
      const FaultRun run = RunFaulty({kind, 0, place});
      // Where there is no memory even for the removal, the next run finishes it.
      if (kind == FaultKind::Exhaustion) tool::ClearLeftovers(Out());
      EXPECT_EQ(run.result.hit, 1);
      EXPECT_TRUE(IsSound(run)) << "allocation " << place << " of " << count << ": " << run.exitCode << ", "
                                << testing::PrintToString(Files()) << '\n'
                                << run.errors;
      ++codes[run.exitCode];
    }
    RecordProperty("allocations", std::to_string(count));
    RecordProperty("repeated", repeated);
    EXPECT_GT(codes[kOutput] + repeated, 0);
  }
};

TEST_P(FailingMemory, OneAllocation) { Sweep(FaultKind::Allocation, FaultStep(499)); }

TEST_P(FailingMemory, AllFromOneOn) { Sweep(FaultKind::Exhaustion, FaultStep(1999)); }

INSTANTIATE_TEST_SUITE_P(Commands, FailingMemory, testing::ValuesIn(kCases), NameOf);

}  // namespace
