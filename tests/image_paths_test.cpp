#include "tool/image_paths.h"

#include "tests/support/host_directory.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using tool::ImageReport;
namespace fs = std::filesystem;

const std::string kPng = "\x89PNG\r\n\x1A\n....";

class ImagePathsTest : public testing::Test {
 protected:
  ImagePathsTest() {
    for (const char* name :
         {"scene/wood.png", "scene/notes.txt", "scene/images/tile.png", "scene/textures/plank.png",
          "scene/textures/both.png", "scene/images/both.png", "scene/textures2/near.png"})
      dir.WriteFile(name, "bytes");
    dir.WriteFile("outside/image.png", kPng);
    dir.WriteFile("outside/secret.png", "root:x:0:0");
  }

  std::string Path(const std::string& name) const { return (dir / name).string(); }

  // The path that an image of the scene ends up with, "-" for none.
  std::string Settle(const std::string& path, const std::vector<fs::path>& roots = {}) {
    headless::SceneData scene = headless::MakeScene();
    scene.directory = directory;
    headless::AddItem(scene, "imageMap", "Image");
    scene.items.back().imagePath = path;
    report = {};
    tool::SettleImagePaths(scene, {roots, {}}, report);
    return scene.items.back().imagePath.value_or("-");
  }

  // As it stands, and nothing is told.
  void ExpectStays(const std::string& path, const std::vector<fs::path>& roots = {}) {
    EXPECT_EQ(Settle(path, roots), path);
    EXPECT_THAT(report.notes, IsEmpty()) << path;
    EXPECT_THAT(report.warnings, IsEmpty()) << path;
  }

  void ExpectFound(const std::string& path, const std::string& place, const std::vector<fs::path>& roots = {}) {
    EXPECT_EQ(Settle(path, roots), place) << path;
    EXPECT_THAT(report.notes, ElementsAre("image \"" + path + "\": found as \"" + place + "\""));
    EXPECT_THAT(report.warnings, IsEmpty()) << path;
  }

  void ExpectLeftOut(const std::string& path, const std::string& reason, const std::vector<fs::path>& roots = {}) {
    EXPECT_EQ(Settle(path, roots), "-") << path;
    EXPECT_THAT(report.notes, IsEmpty()) << path;
    EXPECT_THAT(report.warnings, ElementsAre("image \"" + path + "\" is left out: " + reason));
  }

  test_support::HostDirectory dir;
  std::string directory = Path("scene");
  ImageReport report;
};

constexpr char kNoImage[] = "it lies outside the scene's folder and doesn't begin like an image";
constexpr char kFolder[] = "it is a folder";
constexpr char kSpecial[] = "it isn't a regular file";
constexpr char kOutsideRoots[] = "it lies outside the folders given by --image-root";
constexpr char kBackslash[] = "a backslash in its path can't be told from a separator of folders";

TEST_F(ImagePathsTest, APathThatIsThereStays) {
  fs::create_symlink("wood.png", dir / "scene/link.png");
  fs::create_symlink(dir / "scene", dir / "other way");
  for (const std::string& path :
       {"wood.png"s, "./wood.png"s, "textures/../wood.png"s, "textures\\plank.png"s, "../scene/wood.png"s,
        "notes.txt"s, "link.png"s, Path("scene/notes.txt"), dir.HostPath("scene/notes.txt"),
        Path("other way/notes.txt"), Path("outside/image.png"), "..\\outside\\image.png"s})
    ExpectStays(path);
}

TEST_F(ImagePathsTest, AMissingImageIsLookedForByItsName) {
  struct {
    const char* path;
    const char* place;
  } cases[] = {{"C:\\art\\wood.png", "wood.png"},
               {"C:/art/wood.png", "wood.png"},
               {"/nowhere/plank.png", "textures/plank.png"},
               {"\\\\server\\share\\tile.png", "images/tile.png"},
               {"tile.png", "images/tile.png"},
               {"maps/both.png", "textures/both.png"},
               {"wood.png/wood.png", "wood.png"}};
  for (const auto& c : cases) ExpectFound(c.path, c.place);
  const std::string longName(5000, 'x');
  for (const std::string& path :
       {"gone.png"s, "C:\\art\\gone.png"s, "C:wood.png"s, "near.png"s, ""s, "WOOD.PNG"s, "gone/.."s, longName})
    ExpectStays(path);
}

TEST_F(ImagePathsTest, AFileOutsideMustBeginLikeAnImage) {
  struct {
    std::string bytes;
    bool taken;
  } cases[] = {
      {kPng, true},
      {"\xFF\xD8\xFF\xE0", true},
      {"GIF89a", true},
      {"BM\x10\x20\0\0\0\0\0\0\x36"s, true},
      {"RIFF\x01\x02\x03\x04WEBPVP8 ", true},
      {"II*\0"s, true},
      {"MM\0*"s, true},
      {"DDS |\0\0\0"s, true},
      {"\xABKTX 20\xBB\r\n\x1A\n", true},
      {"#?RADIANCE\n", true},
      {"#?RGBE\n", true},
      {"\x76\x2F\x31\x01", true},
      {"8BPS", true},
      {"", false},
      {"\x89PNG\r\n\x1A", false},
      {"\x89PNG\n\x1A\n....", false},
      {"BMW is no image", false},
      {"RIFF\x01\x02\x03\x04WAVEfmt ", false},
      {"MM\0\0"s, false},
      {"#!/bin/sh", false},
      {"\0\0\x02\0\0\0\0\0"s, false},  // a TGA, which any file could be
      {"root:x:0:0", false},
  };
  fs::create_symlink(dir / "outside/file", dir / "scene/link");
  fs::create_symlink(dir / "outside", dir / "scene/linked");
  for (const auto& c : cases) {
    dir.WriteFile("outside/file", c.bytes);
    for (const std::string& path : {Path("outside/file"), "../outside/file"s, "link"s, "linked/file"s}) {
      if (c.taken)
        ExpectStays(path);
      else
        ExpectLeftOut(path, kNoImage);
    }
  }
  // Nor is such a file found by its name.
  fs::create_symlink(dir / "outside/file", dir / "scene/textures/found.png");
  ExpectStays("C:\\found.png");
}

TEST_F(ImagePathsTest, NothingLiesBelowAFolderThatCantBeLookedAt) {
  const std::string circle = Path("circle");
  fs::create_symlink(circle, circle);
  EXPECT_THROW(Settle(Path("outside/secret.png"), {circle}), fs::filesystem_error);
  directory = circle;
  EXPECT_THROW(Settle(Path("outside/secret.png")), fs::filesystem_error);
}

TEST_F(ImagePathsTest, OnlyRegularFilesAreTaken) {
  ASSERT_EQ(mkfifo(Path("scene/textures/pipe.png").c_str(), 0600), 0);
  fs::create_symlink("loop.png", dir / "scene/loop.png");
  ExpectLeftOut("textures/pipe.png", kSpecial);
  ExpectLeftOut("/dev/zero", kSpecial);
  ExpectLeftOut("textures", kFolder);
  ExpectLeftOut("textures/", kFolder);
  ExpectLeftOut("..", kFolder);
  ExpectStays("loop.png");
  ExpectStays("C:\\pipe.png");
}

TEST_F(ImagePathsTest, LengthsFitInto32Bits) {
  fs::resize_file(dir / "scene/wood.png", 0xFFFFFFFC);
  ExpectStays("wood.png");
  fs::resize_file(dir / "scene/wood.png", 0xFFFFFFFD);
  ExpectLeftOut("wood.png", "it takes 4 GiB or more, which no glTF buffer can hold");
}

TEST_F(ImagePathsTest, RootsConfineAllImages) {
  fs::create_symlink(dir / "outside/image.png", dir / "scene/textures/link.png");
  fs::create_symlink("../images", dir / "scene/textures/linked");
  ASSERT_EQ(mkfifo(Path("outside/pipe.png").c_str(), 0600), 0);
  const std::vector<fs::path> roots = {dir / "scene/textures/"};
  ExpectStays("textures/plank.png", roots);
  ExpectStays(Path("scene/textures/plank.png"), roots);
  ExpectStays("images/../textures/plank.png", roots);
  ExpectStays("textures/gone.png", roots);
  ExpectFound("C:\\art\\plank.png", "textures/plank.png", roots);
  ExpectFound("images/both.png", "textures/both.png", roots);
  for (const std::string& path :
       {"wood.png"s, "images/tile.png"s, "textures2/near.png"s, "textures/../wood.png"s, "textures\\..\\wood.png"s,
        "textures/link.png"s, "textures/linked/tile.png"s, Path("outside/image.png"), Path("outside/gone.png"),
        Path("outside/pipe.png"), "/dev/zero"s, "C:\\art\\gone.png"s})
    ExpectLeftOut(path, kOutsideRoots, roots);
}

TEST_F(ImagePathsTest, RootsAreSearchedInTheirOrder) {
  const fs::path assets = dir.Path() / "assets";
  dir.WriteFile("assets/brick.png", "no image, but nobody asks");
  dir.WriteFile("more/brick.png", "");
  dir.WriteFile("more/clay.png", "");
  const std::vector<fs::path> roots = {assets, dir / "more"};
  ExpectFound("C:\\art\\brick.png", Path("assets/brick.png"), roots);
  ExpectFound("clay.png", Path("more/clay.png"), roots);
  ExpectLeftOut("wood.png", kOutsideRoots, roots);
  // A root may be a link, and be reached by another way.
  fs::create_directory_symlink("assets", dir / "link");
  ExpectStays(Path("assets/brick.png"), {dir / "link"});
  ExpectStays("../link/brick.png", {assets});
}

TEST_F(ImagePathsTest, ABackslashInANameIsNoSeparatorOfTheSystem) {
  dir.WriteFile("scene/a\\b.png", kPng);
  ExpectLeftOut("a\\b.png", kBackslash);
  ExpectLeftOut(Path("scene/a\\b.png"), kBackslash);
  dir.WriteFile("scene/a/b.png", "");
  ExpectStays("a\\b.png");

  dir.WriteFile("back\\slash/wood.png", kPng);
  directory = Path("back\\slash");
  ExpectLeftOut("wood.png", kBackslash);
}

TEST_F(ImagePathsTest, ASceneInTheWorkingDirectory) {
  const fs::path before = fs::current_path();
  fs::current_path(dir / "scene");
  directory = "";
  ExpectStays("notes.txt");
  ExpectFound("C:\\tile.png", "images/tile.png");
  ExpectLeftOut("../outside/secret.png", kNoImage);
  ExpectStays("no folder/gone.png", {"."});
  ExpectStays("textures/gone.png", {"textures"});
  ExpectLeftOut("wood.png", kOutsideRoots, {"textures"});
  directory = "textures";
  ExpectStays("plank.png", {"textures"});
  ExpectFound("gone/tile.png", Path("scene/images/tile.png"), {"textures", "images"});
  fs::current_path(before);
}

TEST_F(ImagePathsTest, APathIsJudgedUpToItsFirstZeroByte) {
  EXPECT_EQ(Settle("../outside/secret.png\0/../../scene/wood.png"s), "-");
  EXPECT_EQ(Settle("wood.png\0/../../outside/secret.png"s), "wood.png");
}

TEST_F(ImagePathsTest, ImageMapsOfOnePathAreToldOnce) {
  headless::SceneData scene = headless::MakeScene();
  scene.directory = directory;
  for (const char* path : {"C:\\wood.png", "textures", "C:\\wood.png", "textures", "gone.png"}) {
    headless::AddItem(scene, "imageMap", "Image");
    scene.items.back().imagePath = path;
  }
  headless::AddItem(scene, "imageMap", "No image");
  tool::SettleImagePaths(scene, {}, report);
  EXPECT_THAT(report.notes, SizeIs(1));
  EXPECT_THAT(report.warnings, ElementsAre(HasSubstr(kFolder)));
  std::vector<std::string> paths;
  for (std::size_t i = 1; i < scene.items.size(); ++i) paths.push_back(scene.items[i].imagePath.value_or("-"));
  EXPECT_THAT(paths, ElementsAre("wood.png", "-", "wood.png", "-", "gone.png", "-"));
}

}  // namespace
