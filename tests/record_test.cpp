// Scenes that are recorded and read again export as before.
#include "readers/read_scene.h"
#include "readers/scene_writer.h"
#include "tests/support/command_fixture.h"
#include "tests/support/host_directory.h"
#include "tests/support/random_mesh.h"
#include "tests/support/save_runner.h"
#include "tool/recorded_images.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;
using headless::SceneData;
using readers::ArrayForm;
using test_support::HostDirectory;
using test_support::ReadWholeFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const fs::path kSource = VORNEL_SOURCE_DIR;

struct ReadFile {
  SceneData scene;
  readers::ReadReport report;  // keeps images of the scene in place
};

ReadFile Read(const fs::path& file) {
  ReadFile read;
  read.scene = readers::ReadScene(file, read.report);
  return read;
}

// The bytes of all files of an export, by name.
std::map<std::string, std::string> Export(ReadFile file, const std::string& output) {
  file.scene.userValues.try_emplace("sceneio.gltf.save.exportType", 0);
  tool::ImageReport ignored;
  tool::SettleImagePaths(file.scene, {{}, file.report.temporaryImages}, ignored);
  const test_support::SaveRun run = test_support::RunSave(std::move(file.scene), output);
  EXPECT_EQ(run.result, ZYe_OK);
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(run.output.parent_path()))
    files[entry.path().filename().string()] = ReadWholeFile(entry.path());
  return files;
}

// Records the scene into a folder of its own and reads it back.
ReadFile Record(ReadFile file, const HostDirectory& directory, ArrayForm form) {
  const fs::path target = directory / "recorded.orvo";
  tool::ImageReport ignored;
  tool::MoveImagePaths(file.scene, target, file.report.temporaryImages, directory.Path(), ignored);
  WriteSceneFile(file.scene, target, form);
  return Read(target);
}

void ExpectSameExports(const ReadFile& file) {
  const struct {
    const char* output;
    ArrayForm form;
  } kWays[] = {{"scene.glb", ArrayForm::Text}, {"scene.gltf", ArrayForm::Binary}};
  for (const auto& way : kWays) {
    const HostDirectory directory;
    const auto direct = Export(file, way.output);
    const auto recorded = Export(Record(file, directory, way.form), way.output);
    EXPECT_TRUE(direct == recorded) << way.output << ": " << direct.size() << " and " << recorded.size()
                                    << " files";
  }
}

bool IsModel(const fs::path& file) {
  constexpr std::string_view kExtensions[] = {".orvo", ".obj", ".fbx", ".dae", ".DAE", ".ply", ".stl"};
  return std::find(std::begin(kExtensions), std::end(kExtensions), file.extension()) != std::end(kExtensions);
}

// Counts the scenes; those that can't be read, of which there are some on purpose, are passed over.
std::size_t ExpectSameExportsBelow(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
    if (IsModel(entry.path())) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::size_t count = 0;
  for (const fs::path& file : files) {
    SCOPED_TRACE(file);
    std::optional<ReadFile> read;
    try {
      read = Read(file);
    } catch (const readers::InputError&) {
      continue;
    }
    ExpectSameExports(*read);
    ++count;
  }
  return count;
}

TEST(RecordedScene, ExportsAsBefore) {
  EXPECT_GE(ExpectSameExportsBelow(kSource / "examples"), 8u);
  EXPECT_GE(ExpectSameExportsBelow(kSource / "tests/golden"), 14u);
}

TEST(RecordedScene, ExportsRandomMeshesAsBefore) {
  for (std::uint32_t seed = 1; seed < 33; ++seed) {
    test_support::RandomMesh random(seed);
    SCOPED_TRACE(seed);
    ExpectSameExports({test_support::MeshScene({random.Make(), random.Make()}), {}});
  }
}

TEST(RecordedScene, ExportsModelsAsBefore) {
  const fs::path models = kSource / "../shared/models";
  if (!fs::is_directory(models)) GTEST_SKIP() << "NO MODELS: there is no folder " << models;
  EXPECT_GE(ExpectSameExportsBelow(models), 40u);
}

std::string PathOfImage(const SceneData& scene) {
  for (const headless::ItemData& item : scene.items)
    if (item.type == "imageMap") return item.imagePath.value_or("none");
  return "no item";
}

SceneData SceneWithImage(const fs::path& folder, const std::string& path) {
  SceneData scene = headless::MakeScene();
  scene.directory = folder.string();
  scene.items[static_cast<std::size_t>(headless::AddItem(scene, "imageMap", "I"))].imagePath = path;
  return scene;
}

const std::string kPng = "\x89PNG\r\n\x1A\n";

TEST(RecordedImages, LeadToTheSameFiles) {
  const HostDirectory root;
  root.WriteFile("scene/textures/a.png", kPng + "a");
  root.WriteFile("scene/t.tga", "no beginning of its own");
  root.WriteFile("scene/\xE9.png", kPng + "latin");
  root.WriteFile("elsewhere/b.png", kPng + "b");
  root.WriteFile("out/t.tga", "another one");
  const std::string absolute = (root / "elsewhere/b.png").string();
  const struct {
    const char* target;
    std::string path, expected;
  } kCases[] = {
      {"scene/new.orvo", "textures/a.png", "textures/a.png"},
      {"scene/new.orvo", "a.png", "textures/a.png"},  // found by its name, as an export finds it
      {"scene/new.orvo", "t.tga", "t.tga"},
      {"new.orvo", "textures\\a.png", "scene/textures/a.png"},
      {"new.orvo", "t.tga", "scene/t.tga"},
      {"out/new.orvo", "./textures/../textures/a.png", "../scene/textures/a.png"},
      {"out/new.orvo", absolute, absolute},
      {"out/new.orvo", "no/such.png", "../scene/no/such.png"},
      {"out/new.orvo", "t.tga", "t-2.tga"},  // not taken from outside, and the name is another file's
      {"out/new.orvo", "\xE9.png", "\xC3\xA9.png"},
      {"out/new.orvo", "../out", "none"},  // a folder; no export takes it
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.path);
    const HostDirectory staging;
    SceneData scene = SceneWithImage(root / "scene", one.path);
    tool::ImageReport report;
    tool::MoveImagePaths(scene, root / one.target, {}, staging.Path(), report);
    EXPECT_EQ(PathOfImage(scene), one.expected);
    const bool isCopied = !fs::is_empty(staging.Path());
    EXPECT_EQ(isCopied, one.expected == "t-2.tga" || one.expected == "\xC3\xA9.png");
    if (isCopied) {
      EXPECT_EQ(ReadWholeFile(staging.Path() / one.expected), ReadWholeFile(root / "scene" / one.path));
    }
  }
}

// Images that an importer wrote out are copied, each once, under names that are free.
TEST(RecordedImages, CopiesTemporaryOnes) {
  const HostDirectory root, staging;
  root.WriteFile("private/1/new.bin", kPng + "one");
  root.WriteFile("private/2/wood.png", kPng + "two");
  root.WriteFile("private/3/wood.png", kPng + "three");
  root.WriteFile("private/4/same.png", kPng + "same");
  root.WriteFile("elsewhere/t.tga", "no beginning of its own");
  root.WriteFile("out/same.png", kPng + "same");
  const std::string absolute = (root / "elsewhere/t.tga").string();
  const std::vector<fs::path> temporary = {root / "private/1/new.bin", root / "private/2/wood.png",
                                           root / "private/3/wood.png", root / "private/4/same.png", absolute};
  SceneData scene = headless::MakeScene();
  scene.directory = (root / "private").string();
  const std::vector<std::string> images = {"1/new.bin",  "2/wood.png", "3/wood.png",
                                           "2/wood.png", "4/same.png", absolute};
  for (const std::string& path : images)
    scene.items[static_cast<std::size_t>(headless::AddItem(scene, "imageMap", "I"))].imagePath = path;
  tool::ImageReport report;
  tool::MoveImagePaths(scene, root / "out/new.orvo", temporary, staging.Path(), report);
  std::vector<std::string> paths;
  for (std::size_t item = 1; item < scene.items.size(); ++item) paths.push_back(*scene.items[item].imagePath);
  EXPECT_THAT(paths, ElementsAre("new-2.bin", "wood.png", "wood-2.png", "wood.png", "same.png", "t.tga"));
  EXPECT_EQ(ReadWholeFile(staging / "wood-2.png"), kPng + "three");

  // With a number behind it a long name is too long.
  const std::string longest = std::string(251, 'n') + ".png";
  root.WriteFile("private/5/" + longest, kPng + "long");
  root.WriteFile("out/" + longest, kPng);
  scene.directory = (root / "private/5").string();
  scene.items.back().imagePath = longest;
  EXPECT_THROW(
      tool::MoveImagePaths(scene, root / "out/new.orvo", {root / "private/5" / longest}, staging.Path(), report),
      std::system_error);
}

class RecordCommand : public test_support::Command {
 protected:
  test_support::CommandRun RunRecord(const fs::path& input, const std::string& output,
                                     const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"record", input.string(), "-o", "OUT/" + output};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }
};

TEST_F(RecordCommand, WritesAllFilesOrNone) {
  const fs::path model = kSource / "examples/room.orvo";
  EXPECT_EQ(RunRecord(model, "a.orvo", {"--binary"}).exitCode, 0);
  EXPECT_THAT(Files(), ElementsAre("a.bin", "a.orvo"));
  const std::string text = Read("a.orvo"), arrays = Read("a.bin");

  const auto wrongKind = RunRecord(model, "a.glb");
  EXPECT_EQ(wrongKind.exitCode, 2);
  EXPECT_EQ(RunRecord(Out() / "missing.orvo", "a.orvo").exitCode, 3);
  // The arrays are read while they would be written.
  fs::copy_file(Out() / "a.orvo", Out() / "b.orvo");
  for (const char* input : {"a.orvo", "b.orvo"}) {
    const auto over = RunRecord(Out() / input, "a.orvo", {"--binary"});
    EXPECT_EQ(over.exitCode, 4);
    EXPECT_THAT(over.errors, HasSubstr("would be written over, but the scene is read from it"));
  }
  const auto noFolder = RunRecord(model, "no/a.orvo");
  EXPECT_EQ(noFolder.exitCode, 4);
  EXPECT_THAT(Files(), ElementsAre("a.bin", "a.orvo", "b.orvo"));
  EXPECT_EQ(Read("a.orvo"), text);
  EXPECT_EQ(Read("a.bin"), arrays);
}

TEST_F(RecordCommand, NamesTheFileThatCouldNotBeWritten) {
  const std::string script = "ulimit -f 1; exec \"$0\" record \"$1\" -o \"$2\"";
  const std::string output = (Out() / "a.orvo").string();
  const auto run = test_support::RunCommand(
      {"sh", "-c", script, VORNEL_COMMAND, (kSource / "examples/room.orvo").string(), output});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_EQ(run.errors, "vornel: error: " + output + ": File too large\n");
  EXPECT_THAT(Files(), IsEmpty());
}

}  // namespace
