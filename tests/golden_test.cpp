// Exports of small scenes, byte by byte: files and log. How they are rewritten stands in support/golden.h.
#include "tests/support/golden.h"

#include "readers/read_scene.h"
#include "tests/support/glb_reader.h"
#include "tests/support/log_lines.h"
#include "tests/support/save_runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using test_support::CompareWithGolden;
using test_support::FindDifference;
using test_support::SaveRun;

const fs::path kDirectory = fs::path(VORNEL_SOURCE_DIR) / "tests" / "golden";

// The output; its scene has the same name.
constexpr const char* kGoldens[] = {"empty.glb",   "nodes.glb",         "selection.glb",  "hierarchy.glb",
                                    "meshes.glb",  "tangents.glb",      "materials.glb",  "textures.glb",
                                    "copies.gltf", "skin_groups.glb",   "skin_graph.glb", "animation.glb",
                                    "actions.glb", "active_action.gltf"};

// The log names images by their paths, which are another place's on another machine.
std::string WithoutDirectory(std::string text) {
  std::string directory = fs::path(kDirectory).string();
  for (std::size_t at = 0; (at = directory.find('/', at)) != std::string::npos; at += 2)
    directory.replace(at, 1, "\\\\");
  for (std::size_t at = 0; (at = text.find(directory, at)) != std::string::npos;)
    text.replace(at, directory.size(), "SCENE");
  return text;
}

// Every file of the output, copies of images too.
void ExpectGoldens(const SaveRun& run) {
  std::size_t files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(run.output.parent_path())) {
    EXPECT_EQ(CompareWithGolden(kDirectory / entry.path().filename(), test_support::ReadWholeFile(entry.path())),
              std::nullopt);
    ++files;
  }
  const bool isText = run.output.extension() == ".gltf";
  EXPECT_EQ(files, run.output.stem() == "copies" ? 4u : isText ? 2u : 1u);
}

class Golden : public testing::TestWithParam<const char*> {};

TEST_P(Golden, EqualsTheExport) {
  const std::string output = GetParam();
  const std::string name = fs::path(output).stem().string();
  readers::ReadReport report;
  const SaveRun run = test_support::RunSave(readers::ReadScene(kDirectory / (name + ".orvo"), report), output);
  EXPECT_EQ(run.result, ZYe_OK);
  EXPECT_EQ(run.leakedObjects, 0u);
  EXPECT_TRUE(report.warnings.empty());
  ExpectGoldens(run);
  EXPECT_EQ(
      CompareWithGolden(kDirectory / (name + ".log.jsonl"), WithoutDirectory(test_support::LogLinesText(run.log))),
      std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Scenes, Golden, testing::ValuesIn(kGoldens),
                         [](const auto& scene) { return fs::path(scene.param).stem().string(); });

TEST(GoldenDifference, NamesTheByteAndTheTextAround) {
  EXPECT_EQ(FindDifference("a.gltf", "{\"a\":1}", "{\"a\":1}"), std::nullopt);
  EXPECT_EQ(FindDifference("a.gltf", "{\"a\":1}", "{\"a\":2}"),
            "a.gltf differs at byte 5 (7 bytes expected, 7 written)\n"
            "  expected: {\"a\": >>> 1}\n"
            "  written:  {\"a\": >>> 2}");
  EXPECT_EQ(FindDifference("a.bin", "ab", "abc"),
            "a.bin differs at byte 2 (2 bytes expected, 3 written)\n"
            "  expected: the end of the file\n"
            "  written:  63 ");
}

}  // namespace
