#include "document/buffer_data.h"
#include "document/buffers.h"
#include "document/gltf_file.h"
#include "tests/support/glb_reader.h"
#include "tests/support/host_directory.h"
#include "tests/support/json_arrays.h"

#include <gmock/gmock.h>

namespace {

using namespace test_support;
using testing::ElementsAre;

class BufferTest : public testing::Test {
 protected:
  BufferTest() { document.json.emplace(); }

  GltfDocument document;
};

TEST_F(BufferTest, IndexListsArePaddedAndCut) {
  struct {
    std::uint32_t indices32;
    std::size_t count;
    GltfDataKind kind;
    std::uint32_t byteLength, padding;
  } cases[] = {{0, 3, GltfDataKind::U16, 8, 2},
               {0, 6, GltfDataKind::U16, 12, 0},
               {0, 0, GltfDataKind::U16, 0, 0},
               {1, 3, GltfDataKind::U32, 12, 0},
               {7, 1, GltfDataKind::U32, 4, 0}};
  std::uint32_t offset = 0;
  for (const auto& c : cases) {
    document.indices32 = c.indices32;
    const std::uint32_t accessor = AddIndices(document, std::vector<std::uint32_t>(c.count, 0x12345678));
    const GltfDataBlock& block = document.dataBlocks.back();
    EXPECT_EQ(block.kind, c.kind);
    EXPECT_EQ(block.byteLength, c.byteLength);
    EXPECT_EQ(block.padding, c.padding);
    EXPECT_EQ(block.count, c.count);
    EXPECT_EQ(Parsed(document.json->accessors)[accessor]["count"].GetUint(), c.count);
    const rapidjson::Document views = Parsed(document.json->bufferViews);
    const rapidjson::Value& view = views[accessor];
    EXPECT_EQ(view.HasMember("byteOffset"), offset != 0);
    EXPECT_EQ(offset != 0 ? view["byteOffset"].GetUint() : 0, offset);
    offset += c.byteLength;
    EXPECT_EQ(document.json->buffer.byteLength, offset);
  }
  EXPECT_THAT(std::get<std::vector<std::uint16_t>>(document.dataBlocks[0].data),
              ElementsAre(0x5678, 0x5678, 0x5678));
}

TEST_F(BufferTest, LengthsAreUnsignedAndWrap) {
  EXPECT_EQ(GrowBuffer(document, 0x90000000u), 0u);
  EXPECT_EQ(document.json->buffer.byteLength, 2415919104u);
  EXPECT_EQ(GrowBuffer(document, 0x90000000u), 0x90000000u);
  EXPECT_EQ(document.json->buffer.byteLength, 536870912u);
}

TEST_F(BufferTest, ItsWholeLengthDoesNotWrap) {
  for (const GltfFormat format : {GltfFormat::Glb, GltfFormat::Gltf}) {
    document.format = format;
    document.dataBlocks.clear();
    for (int image = 0; image < 3; ++image)
      document.dataBlocks.push_back({std::string("a.png"), 0, 0x90000000u, GltfDataKind::ImageFile, 0});
    document.indices32 = 0;
    AddIndices(document, {0, 0, 0});
    EXPECT_EQ(BufferBytes(document), (format == GltfFormat::Glb ? 3 * 0x90000000ull : 0) + 8);
  }
}

TEST_F(BufferTest, OptionalKeysAppearOnlyWithAValue) {
  AddBufferView(document, 0, 8, 0, 0, 0);
  AddBufferView(document, 0, 8, 8, 12, 34962);
  EXPECT_EQ(TextOf(document.json->bufferViews),
            R"([{"buffer":0,"byteLength":8},)"
            R"({"buffer":0,"byteLength":8,"byteOffset":8,"byteStride":12,"target":34962}])");
  const double min[] = {0.5};
  AddAccessor(document, 1, GltfAccessorType::Mat2, GltfComponentType::U16, 4, 16, min, {});
  EXPECT_EQ(TextOf(document.json->accessors),
            R"([{"bufferView":1,"byteOffset":16,"type":"MAT2","componentType":5123,"count":4,"min":[0.5]}])");
}

// A scene whose text grows with the name and whose buffer holds all kinds of values.
void FillScene(GltfDocument& document, const std::string& nodeName) {
  GltfScene* scene = document.CreateScene();
  GltfNode* node = scene->CreateNode(nodeName);
  scene->AddChild(node);
  GltfMesh* mesh = scene->CreateMesh();
  mesh->AddPosition(0, 0, 0);
  mesh->polygonsByTag["t"] = {0, 1, 2};
  node->SetMesh(mesh);
  GltfAnimationSampler* sampler = scene->CreateAnimation()->CreateSampler(GltfPath::Translation);
  sampler->keyframes = {{0.5, {1, 2, 3, 0}}};
}

TEST(FilesTest, BlocksAndJsonAreFreedWhenWritten) {
  const HostDirectory dir;
  GltfDocument document;
  FillScene(document, "n");
  ASSERT_TRUE(WriteDocument(document, dir.HostPath("s.glb")));
  EXPECT_FALSE(document.json.has_value());
  ASSERT_EQ(document.dataBlocks.size(), 3u);
  EXPECT_EQ(std::get<std::vector<float>>(document.dataBlocks[2].data).capacity(), 0u);
  ClearDocument(document);
  EXPECT_TRUE(document.scenes.empty());
  EXPECT_TRUE(document.dataBlocks.empty());
  EXPECT_TRUE(document.nodeIndex.empty());
}

TEST(FilesTest, NamesOfTheTextAndItsBuffer) {
  struct {
    const char *path, *text, *bin, *uri;
  } cases[] = {{"scene.gltf", "scene.gltf", "scene.bin", "scene.bin"},
               {"scene", "scene.gltf", "scene.bin", "scene.bin"},
               {"a b.c.gltf", "a b.c.gltf", "a b.c.bin", "a b.c.bin"},
               {"d.e\\scene", "d.gltf", "d.bin", "d.bin"},
               {"sub\\scene.x", "sub/scene.gltf", "sub/scene.bin", "scene.bin"}};
  for (const auto& c : cases) {
    const HostDirectory dir;
    std::filesystem::create_directories(dir / "sub");
    GltfDocument document;
    document.format = GltfFormat::Gltf;
    document.CreateScene();
    ASSERT_TRUE(WriteDocument(document, dir.HostPath(c.path))) << c.path;
    EXPECT_TRUE(std::filesystem::exists(dir / c.text)) << c.path;
    EXPECT_EQ(ReadWholeFile(dir / c.bin), "") << c.path;
    EXPECT_EQ(ReadGltfFile(dir / c.text).json["buffers"][0]["uri"], c.uri) << c.path;
    EXPECT_EQ(BufferUri(c.path), c.uri);
  }
}

TEST(FilesTest, AFileThatCantBeWrittenFails) {
  const HostDirectory dir;
  std::filesystem::create_directories(dir / "taken.bin");
  std::filesystem::create_directories(dir / "taken.glb");
  struct {
    GltfFormat format;
    std::string path;
  } cases[] = {{GltfFormat::Glb, dir.HostPath("none\\s.glb")},
               {GltfFormat::Glb, dir.HostPath("taken.glb")},
               {GltfFormat::Glb, ""},
               {GltfFormat::Glb, "\\dev\\full"},
               {GltfFormat::Gltf, dir.HostPath("none\\s.gltf")},
               {GltfFormat::Gltf, dir.HostPath("taken.gltf")}};
  for (const auto& c : cases) {
    GltfDocument document;
    FillScene(document, "n");
    document.format = c.format;
    EXPECT_FALSE(WriteDocument(document, c.path)) << c.path;
    EXPECT_FALSE(document.json.has_value());
  }
}

}  // namespace
