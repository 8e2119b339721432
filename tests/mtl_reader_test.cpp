#include "readers/mtl_parser.h"
#include "tests/support/obj_rig.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace {

using headless::ItemData;
using headless::SceneData;
using test_support::HostDirectory;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

SceneData ReadModel(const HostDirectory& directory, const std::string& obj, std::vector<std::string>& warnings) {
  directory.WriteFile("model.obj", obj + "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  readers::ReadReport report;
  SceneData scene = readers::ReadObj(directory / "model.obj", report);
  for (const std::string& warning : report.warnings)
    warnings.push_back(test_support::WithoutDirectory(warning, directory));
  return scene;
}

SceneData ReadMaterials(const std::string& mtl, std::vector<std::string>& warnings) {
  const HostDirectory directory;
  directory.WriteFile("lib.mtl", mtl);
  return ReadModel(directory, "mtllib lib.mtl", warnings);
}

SceneData ReadMaterials(const std::string& mtl) {
  std::vector<std::string> warnings;
  return ReadMaterials(mtl, warnings);
}

std::vector<const ItemData*> Items(const SceneData& scene, const std::string& type) {
  std::vector<const ItemData*> items;
  for (const ItemData& item : scene.items)
    if (item.type == type) items.push_back(&item);
  return items;
}

headless::ChannelValue Value(const ItemData& item, const std::string& channel) {
  const std::int32_t index = headless::FindChannel(item, channel);
  if (index < 0) throw std::runtime_error(item.name + " has no channel " + channel);
  return item.channels[static_cast<std::size_t>(index)].setup;
}

double Number(const ItemData& item, const std::string& channel) { return std::get<double>(Value(item, channel)); }
std::int32_t Integer(const ItemData& item, const std::string& channel) {
  return std::get<std::int32_t>(Value(item, channel));
}
std::string Text(const ItemData& item, const std::string& channel) {
  return std::get<headless::SharedText>(Value(item, channel));
}

TEST(MtlReader, GivesShadersTheirValues) {
  using Values = std::map<std::string, double>;
  const struct {
    const char* mtl;
    Values values;  // channels of the shader, and the dissAmt of the material with it
  } kCases[] = {
      {"", {{"baseColor.R", 1}, {"baseColor.B", 1}, {"metallic", 0}, {"roughness", 1}, {"emissive.G", 0}}},
      {"Kd .25 .5 .75", {{"baseColor.R", .25}, {"baseColor.G", .5}, {"baseColor.B", .75}}},
      {"kd 0.5 # grey", {{"baseColor.R", .5}, {"baseColor.G", .5}, {"baseColor.B", .5}}},
      {"Kd 0 0 0", {{"baseColor.R", 0}}},
      {"Kd 0 0 0\nmap_Kd a.png", {{"baseColor.R", 1}, {"baseColor.G", 1}}},
      {"Kd .5 0 0\nmap_Kd a.png", {{"baseColor.R", .5}, {"baseColor.G", 0}}},
      {"Ke 1 2 3", {{"emissive.R", 1}, {"emissive.B", 3}, {"emissivelevel", 1}}},
      {"map_Ke a.png", {{"emissive.R", 1}, {"emissive.G", 1}}},
      {"Ns 96", {{"roughness", std::sqrt(2.0 / 98)}}},
      {"Ns 0", {{"roughness", 1}}},
      {"Ns -7", {{"roughness", 1}}},
      {"Ns 96\nKs 0 0 0", {{"roughness", 1}}},
      {"Ns 96\nPr .25\nPm .75", {{"roughness", .25}, {"metallic", .75}}},
      {"Ns 96\nmap_Pr a.png\nmap_Pm a.png", {{"roughness", 1}, {"metallic", 1}}},
      {"map_Pr a.png\nPr .5", {{"roughness", .5}, {"metallic", 0}}},
      {"map_Bump -bm 0.5 a.png", {{"normalscale", .5}}},
      {"map_Bump -bm 0.5 a.png\nnorm b.png", {{"normalscale", 1}}},
      {"d 1\nTr 0.5", {}},
      {"d .75", {{"dissAmt", .25}}},
      {"d 0", {{"dissAmt", 1}}},
      {"Tr .25", {{"dissAmt", .25}}},
      {"Tr 1", {}},
      {"d 0.5 0.5 x", {{"dissAmt", .5}}},
  };
  for (const auto& [mtl, values] : kCases) {
    const SceneData scene = ReadMaterials("newmtl m\n" + std::string(mtl));
    const auto advanced = Items(scene, "advancedMaterial");
    EXPECT_EQ(advanced.size(), values.count("dissAmt")) << mtl;
    ASSERT_EQ(Items(scene, "glTFShader").size(), 1u) << mtl;
    for (const auto& [channel, value] : values) {
      const ItemData& item = channel == "dissAmt" ? *advanced.at(0) : *Items(scene, "glTFShader")[0];
      EXPECT_DOUBLE_EQ(Number(item, channel), value) << mtl << ": " << channel;
    }
  }
}

// The transparency lies below the shader, which means before it, and the dissolve map before the base colour.
TEST(MtlReader, OrdersTheItemsOfAMask) {
  const SceneData scene = ReadMaterials(
      "newmtl a b \nmap_Ke e.png\nbump n.png\nmap_Pr r.png\nmap_Pm m.png\nmap_Kd c.png\nmap_d c.png\nd .5\n");
  const auto masks = Items(scene, "mask");
  ASSERT_EQ(masks.size(), 1u);
  EXPECT_EQ(Text(*masks[0], "ptag"), "a b");
  EXPECT_EQ(Text(*masks[0], "ptyp"), "Material");
  EXPECT_EQ(masks[0]->parent, -1);
  std::vector<std::string> children;
  for (const ItemData& item : scene.items) {
    if (item.parent != masks[0] - scene.items.data()) continue;
    EXPECT_EQ(Integer(item, "enable"), 1);
    if (item.type != "imageMap") {
      children.push_back(item.type);
      continue;
    }
    const std::string swizzling =
        std::to_string(Integer(item, "swizzling")) + std::to_string(Integer(item, "rgba"));
    children.push_back(Text(item, "effect") + " " + *item.imagePath + " " + swizzling);
    ASSERT_GE(item.textureLocator, 0);
    const ItemData& locator = scene.items[static_cast<std::size_t>(item.textureLocator)];
    EXPECT_EQ(locator.type, "txtrLocator");
    EXPECT_EQ(Integer(locator, "projType"), 6);
    EXPECT_EQ(Text(locator, "uvMap"), "Texture");
  }
  EXPECT_THAT(children, ElementsAre("advancedMaterial", "glTFShader", "dissolve c.png 12",
                                    "baseColorGLTF c.png 10", "metallicGLTF m.png 15", "roughnessGLTF r.png 14",
                                    "emisGLTF e.png 00", "normalGLTF n.png 00"));
}

// What the exporter writes for a locator without rotation, applied to the flipped coordinates that it writes,
// must look up the image where the library says.
TEST(MtlReader, PlacesImagesAsTheLibrarySays) {
  const struct {
    const char* options;
    const char* file;
    double su, sv, ou, ov;
    std::int32_t tile;
  } kCases[] = {
      {"", "10 pictures.png", 1, 1, 0, 0, 1},
      {"-o 0.25 0.5 0 -s 2 3 1", "10 pictures.png", 2, 3, .25, .5, 1},
      {"-s 2", "a.png", 2, 1, 0, 0, 1},
      {"-o .5 -clamp on -s .5 -4", "-a.png", .5, -4, .5, 0, 3},
      {"-blendu on -mm 0 1 -imfchan r -bm 2 -texres 512 -type sphere -clamp off -o 1 2 3", "4", 1, 1, 1, 2, 1},
  };
  for (const auto& [options, file, su, sv, ou, ov, tile] : kCases) {
    const SceneData scene = ReadMaterials("newmtl m\nmap_Kd " + std::string(options) + " " + file + " \n");
    ASSERT_EQ(Items(scene, "imageMap").size(), 1u) << options;
    EXPECT_EQ(*Items(scene, "imageMap")[0]->imagePath, file) << options;
    const ItemData& locator = *Items(scene, "txtrLocator").at(0);
    EXPECT_EQ(Integer(locator, "tileU"), tile);
    EXPECT_EQ(Integer(locator, "tileV"), tile);
    const double scaleU = Number(locator, "wrapU");
    const double scaleV = Number(locator, "wrapV");
    const double offsetU = Number(locator, "m02") - (scaleU * 0.5 - 0.5);
    const double offsetV = Number(locator, "m12") - (scaleV * 0.5 - 0.5);
    EXPECT_FALSE(std::signbit(Number(locator, "m12")) && Number(locator, "m12") == 0);
    for (const double u : {0.0, 0.375, 1.0, -2.5}) {
      for (const double v : {0.0, 0.625, 1.0, 3.0}) {
        EXPECT_DOUBLE_EQ(u * scaleU + offsetU, u * su + ou) << options;
        EXPECT_DOUBLE_EQ(1 - ((1 - v) * scaleV + offsetV), v * sv + ov) << options;
      }
    }
  }
}

TEST(MtlReader, SharesNamesOnlyBetweenEqualTextures) {
  const SceneData scene = ReadMaterials(
      "newmtl a\nmap_Kd x/i.png\nmap_Pr x\\i.png\nmap_d -s 2 2 x/i.png\nnewmtl b\nmap_Kd ./x/i.png\nmap_Ke i.png\n"
      "map_Pm -clamp on x/i.png");
  std::map<std::string, std::vector<std::string>> namesByEffect;
  for (const ItemData* item : Items(scene, "imageMap")) namesByEffect[Text(*item, "effect")].push_back(item->name);
  const std::vector<std::string> colors = namesByEffect["baseColorGLTF"];
  ASSERT_EQ(colors.size(), 2u);
  EXPECT_EQ(colors[0], colors[1]);
  EXPECT_THAT(namesByEffect["roughnessGLTF"], ElementsAre(colors[0]));
  EXPECT_THAT((std::vector<std::string>{colors[0], namesByEffect["dissolve"][0], namesByEffect["emisGLTF"][0],
                                        namesByEffect["metallicGLTF"][0]}),
              UnorderedElementsAre("i.png", "i.png (2)", "i.png (3)", "i.png (4)"));
}

TEST(MtlReader, FindsLibrariesAndTheirImages) {
  const HostDirectory directory;
  directory.WriteFile("a.mtl", "newmtl a\nmap_Kd a.png\nnewmtl taken\n");
  directory.WriteFile("sub/my lib.mtl",
                      "newmtl b\nmap_Kd .\\in\\b.png\nnewmtl c\nmap_Kd ../c.png\nnewmtl d\nmap_Kd /abs/d.png\n"
                      "newmtl e\nmap_Kd C:\\e.png\nnewmtl taken\nmap_Kd lost.png\n");
  std::vector<std::string> warnings;
  const SceneData scene =
      ReadModel(directory, "mtllib a.mtl sub\\my lib.mtl gone.mtl\nmtllib sub/my lib.mtl\nusemtl f", warnings);
  std::vector<std::string> paths;
  for (const ItemData* item : Items(scene, "imageMap")) paths.push_back(*item->imagePath);
  EXPECT_THAT(paths, ElementsAre("a.png", "sub/in/b.png", "c.png", "/abs/d.png", "C:/e.png"));
  EXPECT_EQ(scene.directory, directory.Path().string());
  EXPECT_THAT(warnings, ElementsAre("sub/my lib.mtl: skipped 1 newmtl of a name that is taken",
                                    "material library not found: gone.mtl",
                                    "model.obj: 1 material is in no library (first \"f\")"));
}

TEST(MtlReader, TellsWhatItSkipsInOneLine) {
  const struct {
    const char* mtl;
    std::vector<std::string> warnings;
  } kCases[] = {
      {"newmtl m\nKa 1 1 1\nKs 1 1 1\nillum 2\n# map_Ka x \\\nKd 1 1 1\n", {}},
      {"newmtl m\nNi 1.5\nmap_Ka a.png\nillum 7\nrefl -type sphere r.png\nNi 1\ndisp d.png\nKd spectral x.rfl",
       {"lib.mtl: skipped 2 Ni, 1 map_Ka, 1 illum 7, 1 refl, 1 disp, 1 Kd spectral"}},
      {"Kd 1 1 1\nnewmtl m\nmap_Bump b.png\nnorm n.png\nmap_Kd -boost 2 k.png\nTr 1",
       {"lib.mtl: skipped 1 Kd before newmtl, 1 -boost, 1 \"Tr 1\" taken as opaque, 1 map_Bump beside norm"}},
      {"newmtl m\nKd 1 x 1\nd nan\nmap_Kd -s a b.png\nmap_Kd\nNs 3,5\n",
       {"lib.mtl:2: bad number \"x\"; 5 such statements skipped"}},
      {"newmtl m\n\nd\\\n nan\n", {"lib.mtl:3: bad number \"nan\"; 1 such statement skipped"}},
      {"newmtl m\nKd .5 \\\r\n .5 .5\nnewmtl m\nKd 2 2 2", {"lib.mtl: skipped 1 newmtl of a name that is taken"}},
  };
  for (const auto& [mtl, expected] : kCases) {
    std::vector<std::string> warnings;
    const SceneData scene = ReadMaterials(mtl, warnings);
    EXPECT_EQ(warnings, expected) << mtl;
    EXPECT_EQ(Items(scene, "mask").size(), 1u) << mtl;
    EXPECT_LE(Number(*Items(scene, "glTFShader").at(0), "baseColor.R"), 1) << mtl;
  }
}

TEST(MtlReader, ReadsAnyBytes) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += static_cast<char>(i * i * 31 + i / 7);
  EXPECT_LE(readers::ParseMtl("newmtl m\n" + text).skipped.size(), 21u);
}

}  // namespace
