// Pages from models, sound and broken: what is packed in, what is refused, and what is left untouched.
#include "tool/preview_page.h"

#include "readers/read_scene.h"
#include "tests/support/glb_reader.h"
#include "tests/support/temp_directory.h"
#include "tool/base64.h"
#include "tool/model_file.h"
#include "tool/output_error.h"

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using test_support::ReadWholeFile;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

void Replace(std::string& text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  ASSERT_NE(place, std::string::npos) << from;
  text.replace(place, from.size(), to);
}

// One triangle below a node, a clip and an image.
const std::string kModel = R"({
  "asset": {"version": "2.0"},
  "scene": 0,
  "scenes": [{"nodes": [0]}],
  "nodes": [{"name": "top", "children": [1]}, {"mesh": 0}],
  "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "material": 0}]}],
  "materials": [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}],
  "textures": [{"source": 0}],
  "images": [{"uri": "a%20b.png"}],
  "animations": [{"samplers": [{"input": 1, "output": 1}], "channels": [{"sampler": 0, "target": {"node": 1}}]}],
  "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
                {"bufferView": 1, "componentType": 5126, "count": 2, "type": "SCALAR"}],
  "bufferViews": [{"buffer": 0, "byteLength": 36}, {"buffer": 1, "byteOffset": 1, "byteLength": 8}],
  "buffers": [{"uri": "points.bin", "byteLength": 36}, {"uri": "data:;base64,eHNlY29uZHMh", "byteLength": 9}]
})";
const std::string kPoints = "thirty-six bytes, read as three points";
const std::string kPng = "\x89PNG\r\n\x1A\n and so on";

class Preview : public testing::Test {
 protected:
  Preview() {
    fs::create_directory(Folder());
    fs::create_directory(directory_.Path() / "share");
    Write("../share/preview.html", "<head><!--vornel:facts--><middle><!--vornel:model--><tail>");
    setenv("VORNEL_SHARE", (directory_.Path() / "share").c_str(), 1);
    Write("points.bin", kPoints);
    Write("a b.png", kPng);
  }
  ~Preview() override { unsetenv("VORNEL_SHARE"); }

  fs::path Folder() const { return directory_.Path() / "model"; }
  fs::path Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Folder() / name, std::ios::binary) << bytes;
    return Folder() / name;
  }
  // The fault of a model file, without its path.
  std::string FaultOf(const std::string& name, const std::string& bytes) const {
    const fs::path file = Write(name, bytes);
    try {
      tool::ReadModelFile(file);
      return "none";
    } catch (const readers::InputError& error) {
      EXPECT_THAT(error.what(), StartsWith(file.string() + ":"));
      return std::string(error.what()).substr(file.string().size() + 1);
    }
  }

 private:
  test_support::TempDirectory directory_;
};

std::string BytesOfView(const rapidjson::Document& json, const std::vector<std::uint8_t>& binary, unsigned view) {
  const rapidjson::Value& found = json["bufferViews"][view];
  const auto start = binary.begin() + found["byteOffset"].GetInt();
  return {start, start + found["byteLength"].GetInt()};
}

TEST_F(Preview, PacksAllFilesIntoOne) {
  const tool::ModelFile model = tool::ReadModelFile(Write("model.gltf", kModel));
  const test_support::GlbChunks chunks = test_support::ReadGlbChunks(Write("packed.glb", model.glb));
  rapidjson::Document json;
  json.Parse(chunks.text.data(), chunks.text.size());
  ASSERT_FALSE(json.HasParseError());
  EXPECT_EQ(json["buffers"].Size(), 1u);
  EXPECT_FALSE(json["buffers"][0].HasMember("uri"));
  EXPECT_EQ(json["buffers"][0]["byteLength"].GetUint(), chunks.bytes.size());
  EXPECT_EQ(BytesOfView(json, chunks.bytes, 0), kPoints.substr(0, 36));
  EXPECT_EQ(BytesOfView(json, chunks.bytes, 1), "seconds!");
  const rapidjson::Value& image = json["images"][0];
  EXPECT_EQ(BytesOfView(json, chunks.bytes, image["bufferView"].GetUint()), kPng);
  EXPECT_STREQ(image["mimeType"].GetString(), "image/png");
  EXPECT_FALSE(image.HasMember("uri"));
  std::vector<std::string> files;
  for (const tool::ReadFile& file : model.files) files.push_back(file.name + " " + std::to_string(file.size));
  EXPECT_THAT(files, ElementsAre("model.gltf " + std::to_string(kModel.size()), "points.bin 38", "a b.png 18"));
  EXPECT_THAT(model.warnings, IsEmpty());

  // Packed once more it stays as it is.
  EXPECT_EQ(tool::ReadModelFile(Folder() / "packed.glb").glb, model.glb);
}

TEST_F(Preview, WarnsOfImagesThatBrowsersDoNotShow) {
  Write("a b.png", "TRUEVISION");
  EXPECT_THAT(tool::ReadModelFile(Write("model.gltf", kModel)).warnings,
              ElementsAre(StartsWith("image 0 \"a b.png\" is none of PNG,")));
}

TEST_F(Preview, RefusesBrokenModels) {
  const struct {
    const char *from, *to, *fault;
  } cases[] = {
      {"{\n", "[", "1:11: "},
      {R"("2.0")", R"("1.0")", "/asset/version: expected a version 2.x"},
      {R"("nodes": [0])", R"("nodes": [2])", "/scenes/0/nodes/0: there is no entry 2 in nodes, which has 2"},
      {R"("children": [1])", R"("children": [-1])", "/nodes/0/children/0: expected a whole number"},
      {R"("children": [1])", R"("children": {"0": 1})", "/nodes/0/children: expected a list"},
      {R"("children": [1])", R"("children": [1, 1])", "/nodes/0/children/1: the node has two parents"},
      {R"({"mesh": 0})", R"({"children": [0]})", "/nodes/0: the node is a child of its own children"},
      {R"("name": "top")", R"("name": ["<script>"])", "/nodes/0/name: expected a text"},
      {R"("POSITION": 0)", R"("POSITION": 9)", "/meshes/0/primitives/0/attributes/POSITION: there is no entry 9"},
      {R"("index": 0)", R"("index": "0")", "/materials/0/pbrMetallicRoughness/baseColorTexture/index: expected"},
      {R"("sampler": 0)", R"("sampler": 1)", "/animations/0/channels/0/sampler: the clip has no such sampler"},
      {R"("count": 3)", R"("count": 4)", "/accessors/0: the accessor reaches beyond its view"},
      {R"("bufferView": 0, "componentType": 5126, "count": 3)", R"("componentType": 5126, "count": 4000000000)",
       "/accessors/0: the accessor is larger than a model may be"},
      {R"(5126)", R"(5127)", "/accessors/0/componentType: no such component type"},
      {R"("byteLength": 36}, {"buf)", R"("byteLength": 37}, {"buf)", "/bufferViews/0: the view reaches beyond"},
      {R"("byteLength": 9})", R"("byteLength": 10})",
       "/buffers/1: the buffer shall have 10 bytes, and there are 9"},
      {R"("uri": "points.bin", )", "", "/buffers/0: the buffer has neither uri nor binary chunk"},
      {R"(eHNlY29)", R"(eHNl*29)", "/buffers/1/uri: the data in the uri isn't base64"},
      {R"("scene": 0)", R"("extensionsUsed": ["KHR_draco_mesh_compression"])", "can't be shown"},
  };
  for (const auto& [from, to, fault] : cases) {
    std::string text = kModel;
    Replace(text, from, to);
    EXPECT_THAT(FaultOf("model.gltf", text), HasSubstr(fault)) << to;
  }
  EXPECT_THAT(FaultOf("deep.gltf", std::string(100000, '[')), HasSubstr("nested deeper"));
}

TEST_F(Preview, RefusesBrokenContainers) {
  const std::string glb = tool::ReadModelFile(Write("model.gltf", kModel)).glb;
  const struct {
    std::size_t size;
    std::pair<std::size_t, char> change;
    const char* fault;
  } cases[] = {
      {16, {0, 'g'}, " it ends within its header"},
      {glb.size() - 4, {0, 'g'}, "bytes where its header says"},
      {glb.size(), {4, 1}, " it is of version 1, not 2"},
      {glb.size(), {15, 1}, " the chunk at byte 12 reaches beyond the file"},
      {glb.size(), {16, 'B'}, " the chunk at byte 12 is not the JSON"},
      {glb.size(), {0, 'G'}, "1:1: "},
  };
  for (const auto& [size, change, fault] : cases) {
    std::string broken = glb.substr(0, size);
    broken[change.first] = change.second;
    EXPECT_THAT(FaultOf("model.glb", broken), HasSubstr(fault));
  }
}

TEST_F(Preview, ReadsOnlyBelowTheModelsFolder) {
  Write("../secret.png", kPng);
  fs::create_symlink("../secret.png", Folder() / "link.png");
  fs::create_directory(Folder() / "maps");
  fs::create_symlink("../a b.png", Folder() / "maps" / "inner.png");
  Write("100%.png", kPng);
  const struct {
    std::string uri, fault;
  } cases[] = {
      {"../secret.png", "/images/0/uri: the path leads out of the model's folder"},
      {"maps/%2e%2e/../../secret.png", "/images/0/uri: the path leads out of the model's folder"},
      {(Folder() / "a b.png").string(), "/images/0/uri: the path leads out of the model's folder"},
      {"link.png", "/images/0/uri: the file lies outside the model's folder"},
      {"https://example.org/a.png", "/images/0/uri: only files beside the model are read"},
      {"file:///etc/passwd", "/images/0/uri: only files beside the model are read"},
      {"absent.png", "absent.png: No such file or directory"},
      {"maps", "maps: Is a directory"},
      {"maps/inner.png", "none"},
      {"100%.png", "none"},
  };
  for (const auto& [uri, fault] : cases) {
    std::string text = kModel;
    Replace(text, "a%20b.png", uri);
    EXPECT_THAT(FaultOf("model.gltf", text), EndsWith(fault)) << uri;
  }
}

TEST_F(Preview, KeepsTextsFromEndingTheirElement) {
  const std::string hostile = "</script><script>alert(\"1\")</script><!-- & \\ \n\x7F";
  const fs::path model = Write("<script> model.gltf", kModel);
  tool::WritePreviewPage(model, Folder() / "page.html", std::vector<std::string>(1002, hostile));
  const std::string page = ReadWholeFile(Folder() / "page.html");
  const std::size_t facts = std::string("<head>").size();
  const std::string text = page.substr(facts, page.find("<middle>") - facts);
  EXPECT_THAT(text, Not(HasSubstr("<")));
  rapidjson::Document json;
  json.Parse(text.data(), text.size());
  ASSERT_FALSE(json.HasParseError());
  EXPECT_STREQ(json["name"].GetString(), "<script> model.gltf");
  EXPECT_EQ(json["warnings"].Size(), 1000u);
  EXPECT_EQ(json["warningsLeftOut"].GetInt(), 2);
  EXPECT_EQ(json["warnings"][999].GetString(), hostile);
  EXPECT_EQ(json["modelBytes"].GetUint(), tool::ReadModelFile(model).glb.size());
  const std::string packed = tool::EncodeBase64(tool::ReadModelFile(model).glb);
  EXPECT_THAT(page,
              EndsWith("<middle><script type=\"text/plain\" class=\"model\">" + packed + "</script>\n<tail>"));
}

TEST_F(Preview, LeavesWhatStoodThereWhenItFails) {
  const fs::path page = Write("page.html", "old");
  const fs::path sound = Write("model.gltf", kModel);
  EXPECT_THROW(tool::WritePreviewPage(Write("broken.gltf", "{}"), page), readers::InputError);
  EXPECT_THROW(tool::WritePreviewPage(sound, Folder() / "absent" / "page.html"), tool::OutputError);
  EXPECT_THROW(tool::WritePreviewPage(sound, sound), tool::OutputError);
  EXPECT_THROW(tool::WritePreviewPage(sound, Folder() / "points.bin"), tool::OutputError);
  Write("../share/preview.html", "no places in it");
  EXPECT_THROW(tool::WritePreviewPage(sound, page), tool::OutputError);
  setenv("VORNEL_SHARE", "/absent", 1);
  EXPECT_THROW(tool::WritePreviewPage(sound, page), tool::OutputError);
  EXPECT_EQ(ReadWholeFile(page), "old");
  EXPECT_EQ(ReadWholeFile(Folder() / "points.bin"), kPoints);
  for (const fs::directory_entry& entry : fs::directory_iterator(Folder()))
    EXPECT_THAT(entry.path().filename().string(), Not(StartsWith(".vornel")));
}

TEST(Base64, GoesThereAndBack) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFF\xFE~?", "//5+Pw=="}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(tool::EncodeBase64(std::string(bytes)), text);
    EXPECT_EQ(tool::DecodeBase64(text), bytes);
  }
  EXPECT_EQ(tool::DecodeBase64("Zm8"), "fo");
  for (const char* text : {"Z", "Zm9vZ", "Zm 9", "Z===", "Zg==Zg=="})
    EXPECT_EQ(tool::DecodeBase64(text), std::nullopt) << text;
}

}  // namespace
