#include "document/images.h"

#include "document/buffer_data.h"
#include "document/buffers.h"
#include "saver/log_message.h"
#include "tests/support/glb_reader.h"
#include "tests/support/host_directory.h"
#include "tests/support/json_arrays.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <memory>

namespace {

using test_support::Parsed;
using test_support::ReadWholeFile;
using test_support::TextOf;
namespace fs = std::filesystem;

class ImageTest : public testing::Test {
 protected:
  void Open(GltfFormat format) {
    document.json.emplace();
    document.format = format;
  }

  // What the blocks put into the buffer's file.
  std::string Pour(const std::string& directory = "") {
    FileStream stream(dir.HostPath("poured"));
    copied = WriteBufferData(document, stream, directory);
    EXPECT_TRUE(stream.Close());
    return ReadWholeFile(dir / "poured");
  }

  test_support::HostDirectory dir;
  GltfDocument document;
  bool copied = false;
};

TEST_F(ImageTest, OnlyTheNameTellsTheKind) {
  struct {
    const char* name;
    GltfImageKind kind;
    const char* mimeType;
  } cases[] = {{"a.png", GltfImageKind::Png, R"("mimeType":"image/png",)"},
               {"A.PNG", GltfImageKind::Png, R"("mimeType":"image/png",)"},
               {"a.JpG", GltfImageKind::Jpeg, R"("mimeType":"image/jpeg",)"},
               {"a.tga.jpeg", GltfImageKind::Jpeg, R"("mimeType":"image/jpeg",)"},
               {"a.tga", GltfImageKind::Unknown, ""},
               {"a.png ", GltfImageKind::Unknown, ""},
               {"no extension", GltfImageKind::Unknown, ""},
               {"x.png\\plain", GltfImageKind::Unknown, ""}};
  for (const auto& c : cases) {
    std::string fileName = c.name;
    std::replace(fileName.begin(), fileName.end(), '\\', '/');
    const GltfImageFile image = MakeImageFile(dir.WriteFile(fileName, "12345"));
    EXPECT_EQ(image.kind, c.kind) << c.name;
    Open(GltfFormat::Glb);
    document.imageIndex.clear();
    ASSERT_EQ(AddImage(document, image), 0u);
    EXPECT_EQ(TextOf(document.json->images), std::string("[{") + c.mimeType + R"("bufferView":0}])");
    EXPECT_EQ(document.json->buffer.byteLength, 8u);
    Open(GltfFormat::Gltf);
    document.imageIndex.clear();
    ASSERT_EQ(AddImage(document, image), 0u);
    const std::string uri = fs::path(fileName).filename().string();
    EXPECT_EQ(TextOf(document.json->images), std::string("[{") + c.mimeType + R"("uri":")" + uri + R"("}])");
    EXPECT_EQ(document.json->buffer.byteLength, 0u);
    EXPECT_EQ(document.json->bufferViews.Size(), 0u);
  }
  EXPECT_EQ(MakeImageFile("png").kind, GltfImageKind::Png);
}

TEST_F(ImageTest, EmbeddedBytesArePaddedToFour) {
  Open(GltfFormat::Glb);
  std::string expected, views;
  // Some fill the copy's buffer exactly or pass it.
  for (const std::size_t size : {0, 1, 10, 4, 65535, 65536, 131073}) {
    std::string contents;
    for (std::size_t i = 0; i < size; ++i) contents += static_cast<char>(i * 7 + size);
    const std::string path = dir.WriteFile(std::to_string(size) + ".png", contents);
    ASSERT_TRUE(AddImage(document, MakeImageFile(path)).has_value());
    expected += contents + std::string(PaddingOf(static_cast<std::uint32_t>(size)), '\0');
    EXPECT_EQ(document.json->buffer.byteLength, expected.size());
  }
  EXPECT_EQ(Parsed(document.json->bufferViews)[2]["byteLength"].GetUint(), 12u);
  EXPECT_EQ(Pour(), expected);
}

TEST_F(ImageTest, AFileThatChangesBeforeItIsPouredKeepsItsRoom) {
  Open(GltfFormat::Glb);
  for (const char* name : {"shrinks.png", "vanishes.png", "grows.png"})
    AddImage(document, MakeImageFile(dir.WriteFile(name, "12345")));
  dir.WriteFile("shrinks.png", "ab");
  fs::remove(dir / "vanishes.png");
  dir.WriteFile("grows.png", "123456789");
  EXPECT_EQ(Pour(), std::string("ab\0\0\0\0\0\0"
                                "\0\0\0\0\0\0\0\0"
                                "12345\0\0\0",
                                24));
}

TEST_F(ImageTest, ABigFileThatShrinksLeavesNothingOfItsOwnBehind) {
  Open(GltfFormat::Glb);
  AddImage(document, MakeImageFile(dir.WriteFile("a.png", std::string(200000, 'x'))));
  dir.WriteFile("a.png", std::string(70000, 'y'));
  EXPECT_EQ(Pour(), std::string(70000, 'y') + std::string(130000, '\0'));
}

// The kernel copies files from their start alone.
TEST_F(ImageTest, AFileIsCopiedFromItsPlaceOn) {
  std::string contents;
  for (int i = 0; i < 150001; ++i) contents += static_cast<char>(i % 251);
  dir.WriteFile("source", contents);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> source(std::fopen((dir / "source").c_str(), "rb"),
                                                               std::fclose);
  std::fgetc(source.get());
  FileStream stream(dir.HostPath("poured"));
  stream.Put('+');
  EXPECT_EQ(stream.CopyFrom(source.get(), 140000), 140000u);
  EXPECT_EQ(stream.CopyFrom(source.get(), 140000), 10000u);
  EXPECT_TRUE(stream.Close());
  EXPECT_TRUE(ReadWholeFile(dir / "poured") == "+" + contents.substr(1));  // not EXPECT_EQ, which would print them
}

TEST_F(ImageTest, AHugeFileComesOutWhole) {
  Open(GltfFormat::Glb);
  std::string contents(64 * 1024 * 1024 + 1, 'h');
  contents.front() = 'f';
  contents.back() = 'b';
  AddImage(document, MakeImageFile(dir.WriteFile("huge.png", contents)));
  EXPECT_TRUE(Pour() == contents + std::string(3, '\0'));  // not EXPECT_EQ, which would print them
}

TEST_F(ImageTest, OnePathIsOneImage) {
  Open(GltfFormat::Glb);
  const std::string path = dir.WriteFile("a.png", "1234");
  EXPECT_EQ(AddImage(document, MakeImageFile(path)), 0u);
  EXPECT_EQ(AddImage(document, MakeImageFile(dir.WriteFile("A.png", "1234"))), 1u);
  EXPECT_EQ(AddImage(document, MakeImageFile(path)), 0u);
  EXPECT_EQ(AddImage(document, MakeImageFile(dir.HostPath(".\\a.png"))), 2u);
  EXPECT_EQ(document.dataBlocks.size(), 3u);
}

TEST_F(ImageTest, CopiesReplaceWhatIsThereAndTheLaterWins) {
  Open(GltfFormat::Gltf);
  fs::create_directories(dir / "out");
  dir.WriteFile("out/a.png", "an older and longer file");
  const std::string big(200000, 'x');
  AddImage(document, MakeImageFile(dir.WriteFile("one/a.png", "first")));
  AddImage(document, MakeImageFile(dir.WriteFile("two/a.png", "second")));
  AddImage(document, MakeImageFile(dir.WriteFile("two/b c.tga", big)));
  EXPECT_EQ(Pour(dir.HostPath("out\\")), "");
  EXPECT_TRUE(copied);
  EXPECT_EQ(ReadWholeFile(dir / "out/a.png"), "second");
  EXPECT_EQ(ReadWholeFile(dir / "out/b c.tga"), big);
}

TEST_F(ImageTest, AnImageIsNeverCopiedOntoItself) {
  dir.WriteFile("a.png", "contents");
  fs::create_symlink(dir / "a.png", dir / "link.png");
  fs::create_hard_link(dir / "a.png", dir / "hard.png");
  fs::create_directories(dir / "sub");
  fs::create_symlink(dir / "a.png", dir / "sub/a.png");
  struct {
    const char *path, *directory;
  } cases[] = {{"a.png", ""}, {".\\a.png", ""}, {"sub\\..\\a.png", ""}, {"sub\\a.png", ""}, {"a.png", "sub\\"}};
  for (const auto& c : cases) {
    EXPECT_TRUE(CopyImage(dir.HostPath(c.path), dir.HostPath(c.directory))) << c.path;
    EXPECT_EQ(ReadWholeFile(dir / "a.png"), "contents") << c.path;
  }
  fs::create_hard_link(dir / "a.png", dir / "sub/hard.png");
  EXPECT_TRUE(CopyImage(dir.HostPath("hard.png"), dir.HostPath("sub\\")));
  EXPECT_EQ(ReadWholeFile(dir / "a.png"), "contents");
}

TEST_F(ImageTest, CopiesThatCantBeMade) {
  dir.WriteFile("out/gone.png", "kept");
  fs::create_directories(dir / "out/taken.png");
  const std::string out = dir.HostPath("out\\");
  EXPECT_TRUE(CopyImage(dir.HostPath("gone.png"), out)) << "a source that is gone is no failure";
  EXPECT_EQ(ReadWholeFile(dir / "out/gone.png"), "kept");
  EXPECT_FALSE(CopyImage(dir.WriteFile("taken.png", "1"), out));
  EXPECT_FALSE(CopyImage(dir.WriteFile("a.png", "1"), dir.HostPath("none\\")));
  EXPECT_FALSE(CopyImage("../a.png", out)) << "a copy never leaves the directory";
  EXPECT_FALSE(fs::exists(dir / "out/a.png"));

  Open(GltfFormat::Gltf);
  AddImage(document, MakeImageFile(dir.HostPath("a.png")));
  AddImage(document, MakeImageFile(dir.WriteFile("b.png", "1")));
  fs::create_directories(dir / "out/a.png");
  Pour(out);
  EXPECT_FALSE(copied);
  EXPECT_TRUE(fs::exists(dir / "out/b.png"));
}

// A node whose mesh has one material with one texture.
void AddTexturedNode(GltfDocument& document, const std::string& imagePath) {
  GltfScene* scene = document.CreateScene();
  GltfNode* node = scene->CreateNode("n");
  scene->AddChild(node);
  node->SetMesh(scene->CreateMesh());
  node->mesh->AddPosition(0, 0, 0);
  node->mesh->polygonsByTag["m"] = {0};
  node->mesh->uvIndexByName["uv"] = 0;
  GltfMaterial* material = node->mesh->materialByTag["m"] = scene->CreateMaterial("m");
  material->baseColorTexture = material->normalTexture = scene->CreateTexture("t");
  material->baseColorTexture->filePath = imagePath;
  material->baseColorTexture->uvMapName = "uv";
}

TEST_F(ImageTest, CopiesGoBesideTheText) {
  // The directory is cut at the given path's last backslash, in a text path that may be shorter.
  struct {
    const char *path, *copy;
  } cases[] = {{"out\\s.gltf", "out/a.png"},
               {"s.gltf", "a.png"},
               {"d.e\\s", "d.gla.png"},
               {"d.a longer name\\s", "d.gltfa.png"}};
  fs::create_directories(dir / "out");
  const std::string image = dir.WriteFile("images/a.png", "image");
  for (const auto& c : cases) {
    GltfDocument one;
    one.format = GltfFormat::Gltf;
    AddTexturedNode(one, image);
    EXPECT_TRUE(WriteDocument(one, dir.HostPath(c.path))) << c.path;
    EXPECT_EQ(ReadWholeFile(dir / c.copy), "image") << c.path;
  }
  fs::create_directories(dir / "taken/a.png");
  GltfDocument one;
  one.format = GltfFormat::Gltf;
  AddTexturedNode(one, image);
  EXPECT_FALSE(WriteDocument(one, dir.HostPath("taken\\s.gltf")));
}

TEST_F(ImageTest, AMissingImageIsAnErrorEachTime) {
  GltfLogMsg log;
  document.log = &log;
  Open(GltfFormat::Glb);
  fs::create_directories(dir / "directory.png");
  const std::string missing = dir.HostPath("missing.png");
  const std::string directory = dir.HostPath("directory.png");
  for (const std::string& path : {missing, missing, directory})
    EXPECT_EQ(AddImage(document, MakeImageFile(path)), std::nullopt);
  EXPECT_EQ(log.ErrorCount(), 3u);
  dir.WriteFile("missing.png", "");
  EXPECT_EQ(AddImage(document, MakeImageFile(missing)), 0u);
  EXPECT_EQ(TextOf(document.json->bufferViews), R"([{"buffer":0,"byteLength":0}])");
}

TEST_F(ImageTest, ATextureWithoutItsImageDropsOut) {
  AddTexturedNode(document, dir.HostPath("missing.png"));
  ASSERT_TRUE(WriteDocument(document, dir.HostPath("s.glb")));
  const auto file = test_support::ReadGltfFile(dir / "s.glb");
  EXPECT_EQ(file.text.find("exture\":{"), std::string::npos);
  for (const char* key : {"textures", "samplers", "images"}) EXPECT_FALSE(file.json.HasMember(key)) << key;
}

}  // namespace
