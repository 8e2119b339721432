#include "tool/image_copies.h"

#include "tests/support/glb_reader.h"
#include "tests/support/host_directory.h"
#include "tool/output_error.h"
#include "tool/staging.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using test_support::ReadWholeFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

ino_t FileNumber(const fs::path& file) {
  struct stat status = {};
  EXPECT_EQ(::lstat(file.c_str(), &status), 0) << file;
  return status.st_ino;
}

class ImageCopiesTest : public testing::Test {
 protected:
  ImageCopiesTest() {
    fs::create_directory(dir / "out");
    for (const char* name : {"scene.orvo", "a/wood.png", "b/wood.png", "c/wood.png", "a/tile.png", "b/tile.png"})
      dir.WriteFile(name, name);
  }

  // The paths that are left of the images after the check, "-" for none.
  std::vector<std::string> Check(const std::vector<std::string>& paths, const std::string& target) {
    headless::SceneData scene = headless::MakeScene();
    scene.directory = dir.Path().string();
    for (const std::string& path : paths) {
      headless::AddItem(scene, "imageMap", "Image");
      scene.items.back().imagePath = path;
    }
    report = {};
    tool::CheckImageCopies(scene, dir / target, dir / "scene.orvo", report);
    EXPECT_THAT(report.notes, IsEmpty());
    std::vector<std::string> left;
    for (std::size_t i = 1; i < scene.items.size(); ++i) left.push_back(scene.items[i].imagePath.value_or("-"));
    return left;
  }

  test_support::HostDirectory dir;
  tool::ImageReport report;
};

TEST_F(ImageCopiesTest, ImagesOfOneNameAreToldInOneLine) {
  const std::vector<std::string> paths = {"a/wood.png", "c\\wood.png", "b/tile.png", "b/wood.png",
                                          "a/wood.png", "gone/x.png",  "a/x.png"};
  EXPECT_EQ(Check(paths, "out/x.gltf"), paths);
  EXPECT_THAT(report.warnings, ElementsAre("3 images are called wood.png and their copies overwrite one another: "
                                           "\"a/wood.png\", \"c\\wood.png\", \"b/wood.png\""));
  Check({"a/wood.png", "b/wood.png", "b/tile.png", "a/tile.png"}, "out/x.gltf");
  EXPECT_THAT(report.warnings, ElementsAre(HasSubstr("2 images are called tile.png"), HasSubstr("wood.png")));
}

TEST_F(ImageCopiesTest, OneFileUnderSeveralPathsIsNoOther) {
  fs::create_directory(dir / "links");
  fs::create_symlink(dir / "a/wood.png", dir / "links/wood.png");
  fs::create_hard_link(dir / "a/tile.png", dir / "links/tile.png");
  Check({"a/wood.png", "./a/wood.png", (dir / "a/wood.png").string(), "links/wood.png", "a/tile.png",
         "links/tile.png"},
        "out/x.gltf");
  EXPECT_THAT(report.warnings, IsEmpty());
}

TEST_F(ImageCopiesTest, TheExportedFilesAreNotOverwritten) {
  for (const char* name : {"a/x.gltf", "a/x.bin", "a/x.glb", "b/x.bin"}) dir.WriteFile(name, "");
  EXPECT_THAT(Check({"a/x.gltf", "a/x.bin", "a/x.glb", "b/x.bin", "a/x.bin"}, "out/x.gltf"),
              ElementsAre("-", "-", "a/x.glb", "-", "-"));
  EXPECT_THAT(report.warnings,
              ElementsAre("image \"a/x.bin\" is left out: its copy would be in the way of the exported x.bin",
                          HasSubstr("\"b/x.bin\" is left out"), HasSubstr("\"a/x.gltf\" is left out")));
}

TEST_F(ImageCopiesTest, TheSourcesAreNotOverwritten) {
  dir.WriteFile("a/scene.orvo", "");
  EXPECT_THAT(Check({"b/wood.png", "a/wood.png", "c/wood.png", "b/tile.png"}, "a/x.gltf"),
              ElementsAre("-", "a/wood.png", "-", "b/tile.png"));
  EXPECT_THAT(report.warnings, ElementsAre("image \"b/wood.png\" is left out: its copy would overwrite " +
                                               (dir / "a/wood.png").string() + ", which the scene is read from",
                                           HasSubstr("c/wood.png")));
  EXPECT_THAT(Check({"a/scene.orvo"}, "x.gltf"), ElementsAre("-"));
  EXPECT_THAT(Check({"a/scene.orvo"}, "out/x.gltf"), ElementsAre("a/scene.orvo"));
}

TEST_F(ImageCopiesTest, ACopyOfTheSameBytesLeavesTheFileInPlaceAlone) {
  dir.WriteFile("out/x.gltf", "same");
  dir.WriteFile("out/same.png", std::string(70000, 's'));
  dir.WriteFile("out/changed.png", std::string(70000, 's'));
  dir.WriteFile("out/longer.png", "12");
  fs::create_symlink(dir / "a/wood.png", dir / "out/wood.png");
  fs::create_symlink(dir / "a/tile.png", dir / "out/tile.png");
  const ino_t same = FileNumber(dir / "out/same.png"), link = FileNumber(dir / "out/wood.png");
  const ino_t target = FileNumber(dir / "out/x.gltf");

  std::vector<fs::path> files;
  {
    tool::Staging staging(dir / "out/x.gltf");
    const auto stage = [&](const char* name, const std::string& bytes) {
      std::ofstream(staging.Directory() / name, std::ios::binary) << bytes;
    };
    stage("x.gltf", "same");
    stage("same.png", std::string(70000, 's'));
    stage("changed.png", std::string(69999, 's') + "t");
    stage("longer.png", "123");
    stage("wood.png", "a/wood.png");  // what the link leads to
    stage("tile.png", "another");
    stage("old", "a name that backups could have");
    stage("0", "another such name");
    files = staging.MoveIntoPlace();
  }
  EXPECT_EQ(files.size(), 8u);
  EXPECT_EQ(files.back(), dir / "out/x.gltf");
  EXPECT_EQ(FileNumber(dir / "out/same.png"), same);
  EXPECT_EQ(FileNumber(dir / "out/wood.png"), link);
  EXPECT_NE(FileNumber(dir / "out/x.gltf"), target);
  EXPECT_EQ(ReadWholeFile(dir / "out/changed.png"), std::string(69999, 's') + "t");
  EXPECT_EQ(ReadWholeFile(dir / "out/longer.png"), "123");
  EXPECT_EQ(ReadWholeFile(dir / "out/old"), "a name that backups could have");
  EXPECT_EQ(ReadWholeFile(dir / "out/tile.png"), "another");
  EXPECT_EQ(ReadWholeFile(dir / "a/tile.png"), "a/tile.png");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir / "out"), {}), 8) << "nothing of the staging is left";
}

TEST_F(ImageCopiesTest, AMoveThatFailsUndoesTheOthers) {
  dir.WriteFile("out/x.gltf", "old");
  dir.WriteFile("out/a.png", "old");
  fs::create_directory(dir / "out/folder.png");
  {
    tool::Staging staging(dir / "out/x.gltf");
    for (const char* name : {"x.gltf", "a.png", "b.png", "folder.png", "z.png"})
      std::ofstream(staging.Directory() / name) << "new";
    EXPECT_THROW(staging.MoveIntoPlace(), tool::OutputError);
  }
  EXPECT_EQ(ReadWholeFile(dir / "out/x.gltf"), "old");
  EXPECT_EQ(ReadWholeFile(dir / "out/a.png"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir / "out"), {}), 3);
}

}  // namespace
