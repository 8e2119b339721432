// The look at written files: each fault that a file can have is found.
#include "tool/output_check.h"

#include "readers/read_scene.h"
#include "tests/support/glb_reader.h"
#include "tests/support/temp_directory.h"
#include "tool/cut_json.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const fs::path kGoldens = fs::path(VORNEL_SOURCE_DIR) / "tests" / "golden";

headless::SceneData SceneOf(const std::string& name) {
  readers::ReadReport report;
  return readers::ReadScene(kGoldens / (name + ".orvo"), report);
}

void WriteWhole(const fs::path& file, const std::string& bytes) { std::ofstream(file, std::ios::binary) << bytes; }

// What is found in a file; empty for nothing.
std::string FaultOf(const fs::path& file, const headless::SceneData& scene) {
  try {
    double last = 0;
    tool::CheckOutput(file, scene, [&](double share) {
      EXPECT_GE(share, last);
      EXPECT_LE(share, 1);
      last = share;
    });
    return "";
  } catch (const tool::WriteFault& fault) {
    return fault.what();
  }
}

struct Damage {
  const char* golden;  // a .glb
  std::size_t place;   // of a byte, or npos to look for `text`
  const char* text;    // replaced by as many bytes
  const char* with;
  const char* fault;
};

constexpr std::size_t kAnywhere = std::string::npos;
constexpr char kDeep[] = "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[";
constexpr char kNan[] = "\xFF\xFF\xFF\x7F";

constexpr Damage kDamages[] = {
    {"meshes", 0, "g", "x", "doesn't begin like a .glb"},
    {"meshes", 8, "", "\x01", "length is not what its header says"},
    {"meshes", 14, "", "\xFF", "JSON chunk reaches beyond"},
    {"meshes", kAnywhere, "BIN", "BIX", "binary chunk"},
    {"meshes", kAnywhere, "\"scenes\"", "\"scenes\"\x01", "its JSON is broken"},
    {"meshes", 20, "", kDeep, "Nested too deeply"},
    {"meshes", kAnywhere, "\"buffers\":[{\"byteLength\":1", "\"buffers\":[{\"byteLength\":9", "its buffer has"},
    {"meshes", kAnywhere, "\"byteOffset\":17", "\"byteOffset\":97", "reaches beyond the buffer"},
    {"meshes", kAnywhere, "\"count\":", "\"count\":9", "reaches beyond its buffer view"},
    {"meshes", kAnywhere, "\"bufferView\":10", "\"bufferView\":99", "names buffer view"},
    {"textures", kAnywhere, "\x89PNG\r", "\0\0\0\0\0", "its image 0"},
};

TEST(OutputCheck, FindsEachFaultOfAGlb) {
  const test_support::TempDirectory directory;
  const fs::path file = directory.Path() / "a.glb";
  for (const Damage& damage : kDamages) {
    SCOPED_TRACE(damage.fault);
    const headless::SceneData scene = SceneOf(damage.golden);
    std::string bytes = test_support::ReadWholeFile(kGoldens / (std::string(damage.golden) + ".glb"));
    WriteWhole(file, bytes);
    EXPECT_EQ(FaultOf(file, scene), "");
    const std::size_t place = damage.place == kAnywhere ? bytes.find(damage.text) : damage.place;
    ASSERT_NE(place, std::string::npos);
    const std::string with = damage.with[0] == '\0' ? std::string(5, '\0') : damage.with;
    bytes.replace(place, with.size(), with);
    WriteWhole(file, bytes);
    EXPECT_THAT(FaultOf(file, scene), HasSubstr(damage.fault));
  }
}

// A NaN in the first element of an accessor, by the place that must be named.
struct BadNumber {
  const char* golden;
  const char* attribute;  // of the first primitive, or null for the first animation's output
  const char* place;
};

constexpr BadNumber kBadNumbers[] = {{"textures", "TEXCOORD_0", "a value that is not a number: the UVs of \""},
                                     {"meshes", "POSITION", "a value that is not a number: the points of \""},
                                     {"tangents", "TANGENT", "a value that is not a number: the tangents of \""},
                                     {"animation", nullptr, "a value that is not a number: the sampled "}};

TEST(OutputCheck, NamesWhereANumberThatIsNoneComesFrom) {
  const test_support::TempDirectory directory;
  const fs::path file = directory.Path() / "a.glb";
  for (const BadNumber& bad : kBadNumbers) {
    SCOPED_TRACE(bad.place);
    const fs::path golden = kGoldens / (std::string(bad.golden) + ".glb");
    std::string bytes = test_support::ReadWholeFile(golden);
    const test_support::GltfFile written = test_support::ReadGltfFile(golden);
    const auto accessor = bad.attribute
                              ? written.json["meshes"][0]["primitives"][0]["attributes"][bad.attribute].GetUint()
                              : written.json["animations"][0]["samplers"][0]["output"].GetUint();
    const auto& view = written.json["bufferViews"][written.json["accessors"][accessor]["bufferView"].GetUint()];
    const std::size_t offset = view.HasMember("byteOffset") ? view["byteOffset"].GetUint() : 0;
    bytes.replace(bytes.size() - written.bytes.size() + offset, 4, kNan, 4);
    WriteWhole(file, bytes);
    EXPECT_THAT(FaultOf(file, SceneOf(bad.golden)), StartsWith(bad.place));
  }
}

// Behind {"buffers": [{"byteLength": 8}],
struct HostileJson {
  const char* json;
  const char* fault;
};

constexpr HostileJson kHostile[] = {
    {R"("bufferViews": [{"byteOffset": 18446744073709551615, "byteLength": 2}]})", "buffer view 0 reaches beyond"},
    {R"("bufferViews": [{"byteLength": 8}],
        "accessors": [{"bufferView": 0, "count": 4611686018427387905, "type": "SCALAR", "componentType": 5126}]})",
     "accessor 0 reaches beyond its buffer view"},
    {R"("bufferViews": [{"byteLength": 8}], "meshes": [{"primitives": [{"attributes": []}, 5]}, 7],
        "accessors": [{"bufferView": 0, "count": 2, "type": "SCALAR", "componentType": 5126}]})",
     "a value that is not a number: accessor 0"},
    {R"("bufferViews": [{"byteLength": 4}], "accessors": [
        {"bufferView": 0, "count": 1, "type": "SCALAR", "componentType": 5125},
        {"bufferView": 0, "count": 1, "type": "SCALAR", "componentType": 5125},
        {"bufferView": 0, "count": 1, "type": "SCALAR", "componentType": 5125}]})",
     ""},
};

TEST(OutputCheck, DoesNotCountOnThePlugIn) {
  const test_support::TempDirectory directory;
  for (const HostileJson& hostile : kHostile) {
    SCOPED_TRACE(hostile.json);
    WriteWhole(directory.Path() / "a.gltf", std::string(R"({"buffers": [{"byteLength": 8}], )") + hostile.json);
    WriteWhole(directory.Path() / "a.bin", std::string(kNan) + std::string(4, '\0'));
    const std::string fault = FaultOf(directory.Path() / "a.gltf", headless::SceneData());
    EXPECT_THAT(fault, StartsWith(hostile.fault));
    EXPECT_EQ(fault.empty(), hostile.fault[0] == '\0');
  }
}

TEST(OutputCheck, WantsAllFilesOfAGltf) {
  const headless::SceneData scene = SceneOf("copies");
  for (const char* missing : {"copies.bin", "red.png", "plain.tga"}) {
    SCOPED_TRACE(missing);
    const test_support::TempDirectory directory;
    for (const char* name : {"copies.gltf", "copies.bin", "red.png", "plain.tga"})
      fs::copy_file(kGoldens / name, directory.Path() / name);
    EXPECT_EQ(FaultOf(directory.Path() / "copies.gltf", scene), "");
    fs::resize_file(directory.Path() / missing, 3);
    EXPECT_NE(FaultOf(directory.Path() / "copies.gltf", scene), "");
    fs::remove(directory.Path() / missing);
    EXPECT_THAT(FaultOf(directory.Path() / "copies.gltf", scene), HasSubstr(missing));
  }
}

struct Cut {
  const char* text;
  const char* completed;  // null: not cut where a value was to stand
  std::vector<std::string> path;
};

TEST(CutJson, IsCompletedWhereAValueIsMissing) {
  const Cut cuts[] = {
      {R"({"a":[1,{"b":[)", R"({"a":[1,{"b":[null]}]})", {"a", "1", "b", "0"}},
      {R"({"a":[[1,2],"]{\"",[3,   )", R"({"a":[[1,2],"]{\"",[3,null]]})", {"a", "2", "1"}},
      {R"({"a":{"x":1},"b, \\":)", R"({"a":{"x":1},"b, \\":null})", {R"(b, \\)"}},
      {R"({"a":[1)", nullptr, {}},
      {R"({"a":1,)", nullptr, {}},
      {R"({"a":1})", nullptr, {}},
      {"", nullptr, {}},
  };
  for (const Cut& cut : cuts) {
    const auto completed = tool::CompleteCutJson(cut.text);
    ASSERT_EQ(completed.has_value(), cut.completed != nullptr) << cut.text;
    if (!completed) continue;
    EXPECT_EQ(completed->text, cut.completed);
    EXPECT_EQ(completed->path, cut.path);
  }
}

}  // namespace
