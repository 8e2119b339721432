// Exports of small scenes, byte by byte: files and log. With VORNEL_UPDATE_GOLDENS in the environment the expected
// files are rewritten instead.
#include "readers/read_scene.h"
#include "tests/support/glb_reader.h"
#include "tests/support/log_lines.h"
#include "tests/support/save_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using test_support::ReadWholeFile;
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

void ExpectGolden(const fs::path& golden, const std::string& actual) {
  if (std::getenv("VORNEL_UPDATE_GOLDENS")) std::ofstream(golden, std::ios::binary) << actual;
  const std::string expected = fs::exists(golden) ? ReadWholeFile(golden) : "no such file";
  if (expected == actual) return;
  const auto end = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first;
  const auto place = static_cast<std::size_t>(end - expected.begin());
  const std::size_t begin = place - std::min<std::size_t>(place, 60);
  EXPECT_EQ(actual.substr(begin, 120), expected.substr(begin, 120)) << golden << ", byte " << place;
  EXPECT_EQ(actual.size(), expected.size());
}

// Every file of the output, copies of images too.
void ExpectGoldens(const SaveRun& run) {
  std::size_t files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(run.output.parent_path())) {
    ExpectGolden(kDirectory / entry.path().filename(), ReadWholeFile(entry.path()));
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
  ExpectGolden(kDirectory / (name + ".log.jsonl"), WithoutDirectory(test_support::LogLinesText(run.log)));
}

INSTANTIATE_TEST_SUITE_P(Scenes, Golden, testing::ValuesIn(kGoldens),
                         [](const auto& scene) { return fs::path(scene.param).stem().string(); });

}  // namespace
