#include "materials/channel_images.h"
#include "tests/support/shader_rig.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <tuple>

namespace {

using headless::ItemIndex;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// One tag "tag" whose mask holds a glTF shader and image maps.
struct TexturedScene : ShaderScene {
  TexturedScene() : mask(AddMask("tag")) { Add("glTFShader", "shader", mask); }

  // An image map with a UV projection and the given swizzling; -1 leaves a channel out.
  ItemIndex AddMap(const std::string& effect, const std::string& path, int swizzling, int rgba) {
    const ItemIndex image = AddImage(effect, "map " + effect, mask, path);
    for (const auto& [name, value] : {std::pair("swizzling", swizzling), std::pair("rgba", rgba)}) {
      RemoveChannel(image, name);
      if (value >= 0) Set(image, name, value);
    }
    AddLocator(image, {{"projType", 6}, {"uvMap", std::string("Texture")}});
    return image;
  }

  ItemIndex mask;
};

std::string Placement(const GltfTexture& texture) {
  char text[256];
  std::snprintf(text, sizeof text, "wrap %u %u offset %.17g %.17g rotation %.17g scale %.17g %.17g",
                static_cast<unsigned>(texture.wrapU), static_cast<unsigned>(texture.wrapV), texture.offsetU,
                texture.offsetV, texture.rotation, texture.scaleU, texture.scaleV);
  return text;
}

const ChannelValues kPlacement = {{"tileU", 2},        {"tileV", 3},   {"m02", 1.75},    {"m12", -2.5},
                                  {"uvRotation", 0.5}, {"wrapU", 4.5}, {"wrapV", -1e300}};

enum class Locator { Absent, Bare, Full, Unreadable };

TEST(Texture, TakesPlacementFromLocator) {
  const std::tuple<Locator, const char*> cases[] = {
      {Locator::Absent, "wrap 1 1 offset 0 0 rotation 0 scale 1 1"},
      {Locator::Bare, "wrap 0 0 offset 0 0 rotation 0 scale 0 0"},
      {Locator::Full, "wrap 2 3 offset 1.75 -2.5 rotation 0.5 scale 4.5 -1.0000000000000001e+300"},
      {Locator::Unreadable, "wrap 1 1 offset 0 0 rotation 0 scale 1 1"},
  };
  for (const auto& [locator, expected] : cases) {
    TexturedScene scene;
    const ItemIndex image = scene.AddImage("baseColorGLTF", "map", scene.mask, "a.png");
    if (locator != Locator::Absent) {
      const ItemIndex item = scene.AddLocator(image, {});
      scene.Item(item).channels.clear();
      if (locator != Locator::Bare) {
        for (const auto& [name, value] : kPlacement) {
          scene.Set(item, name, value);
          scene.Channel(item, name).extras.Make().readable = locator == Locator::Full;
        }
      }
    }
    MaterialRun run(scene);
    const GltfTexture* texture = run.Resolve("tag").baseColorTexture;
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(Placement(*texture), expected);
  }
}

TEST(Texture, LogsWholeNumbers) {
  TexturedScene scene;
  const ItemIndex image = scene.AddImage("normalGLTF", "map (Image)", scene.mask, "dir/a.png");
  const ItemIndex locator = scene.AddLocator(image, kPlacement);
  scene.Set(locator, "projType", 6);
  scene.Set(locator, "uvMap", std::string("Texture"));
  scene.Set(locator, "m12", std::nan(""));
  scene.Set(locator, "wrapU", std::numeric_limits<double>::infinity());
  MaterialRun run(scene);
  const std::string path = [&] {
    const GltfTexture* texture = run.Resolve("tag").normalTexture;
    EXPECT_EQ(texture->name, "map ");
    EXPECT_EQ(texture->uvMapName, "Texture");
    return texture->filePath;
  }();
  EXPECT_THAT(run.TakeLog(),
              ElementsAre("info|Found mask:tag ptag:tag ptype:Material",                                 //
                          "info|    Skipping Gltf shader layer shader",                                  //
                          "info|    Skipping Gltf shader layer map (Image)",                             //
                          "info|      imageMap:map (Image) file:" + path + " uvmap:Texture projMode:6",  //
                          "info|      Creating texture:map (Image) texLoc:locator",                      //
                          "info|       offsetU:1 offsetV:0",                                             //
                          "info|       uvRotation:0",                                                    //
                          "info|       scaleU:2147483647 scaleV:-2147483648"));
}

TEST(Texture, NameLosesFirstSuffix) {
  const std::pair<const char*, const char*> cases[] = {
      {"wood (Image)", "wood "}, {"(Image)", ""},    {"(Image) x (Image)", " x (Image)"},
      {"(image)", "(image)"},    {"Image", "Image"}, {"", ""},
  };
  for (const auto& [name, expected] : cases) {
    TexturedScene scene;
    scene.AddImage("baseColorGLTF", name, scene.mask, "a.png");
    MaterialRun run(scene);
    EXPECT_EQ(run.Resolve("tag").baseColorTexture->name, expected);
    EXPECT_TRUE(run.State().texturesByName.contains(std::string(name)));
  }
}

TEST(Texture, OtherProjectionIsMadeWithWarning) {
  for (const int projection : {0, 1, 5, 7, -1}) {
    TexturedScene scene;
    const ItemIndex image = scene.AddImage("emisGLTF", "map", scene.mask, "a.png");
    if (projection >= 0) scene.AddLocator(image, {{"projType", projection}, {"uvMap", std::string("Texture")}});
    MaterialRun run(scene);
    EXPECT_EQ(run.Resolve("tag").emissiveTexture->uvMapName, "");
    EXPECT_THAT(run.TakeWarnings(),
                ElementsAre("warning|Creating texture:map failed! Textures need to have texture locators and "
                            "'UVMap' projection type."));
  }
}

// Image maps are known by name: another one of the same name is taken for the first.
TEST(Texture, IsSharedByName) {
  TexturedScene scene;
  const ItemIndex second = scene.AddMask("second");
  scene.Add("glTFShader", "shader", second);
  scene.AddImage("normalGLTF", "shared", scene.mask, "a.png");
  scene.AddImage("emisGLTF", "shared", second, "b.png");
  scene.AddImage("aoGLTF", "own", second, "a.png");
  MaterialRun run(scene);
  const GltfTexture* shared = run.Resolve("tag").normalTexture;
  run.TakeLog();
  const GltfMaterial& material = run.Resolve("second");
  EXPECT_EQ(material.emissiveTexture, shared);
  EXPECT_NE(material.occlusionTexture, shared);
  EXPECT_EQ(material.occlusionTexture->filePath, shared->filePath);
  EXPECT_EQ(run.State().gltfScene->textures.size(), 2u);
}

TEST(Texture, NeedsImage) {
  TexturedScene scene;
  const ItemIndex first = scene.AddMap("baseColorGLTF", "a.png", 0, 0);
  scene.AddMap("baseColorGLTF", "b.png", 0, 0);  // not taken instead
  scene.AddMap("dissolve", "c.png", 1, 2);
  scene.Item(first).imagePath.reset();
  MaterialRun run(scene);
  const GltfMaterial& material = run.Resolve("tag");
  EXPECT_EQ(material.baseColorTexture, nullptr);
  EXPECT_EQ(material.alphaMode, GltfAlphaMode::Blend);
  EXPECT_THAT(run.TakeWarnings(), IsEmpty());
  EXPECT_EQ(run.State().gltfScene->textures.size(), 1u);
}

struct SwizzleCase {
  const char* effect;
  const char* word;
  const char* channelWord;  // empty: not checked
  int rgba;
};

constexpr SwizzleCase kSwizzleCases[] = {
    {"normalGLTF", "", "", 0},
    {"emisGLTF", "", "", 0},
    {"aoGLTF", "GLTF_AmbientOclussion", "Red", 3},
    {"metallicGLTF", "GLTF_Metallic", "Blue", 5},
    {"roughnessGLTF", "GLTF_Roughness", "Green", 4},
    {"baseColorGLTF", "GLTF_BaseColor", "RGB", 0},
    {"dissolve", "Dissolve", "Alpha", 2},
};

const std::string kPreview = " Orvo preview render and external preview results possibly wont match.";

std::string OffWarning(const SwizzleCase& row) {
  return std::string("warning|    Swizzling is not turned on for ") + row.word + " image map map " + row.effect +
         "." + kPreview;
}

std::string WrongWarning(const SwizzleCase& row) {
  return std::string("warning|    Swizzling channel must be '") + row.channelWord + "' for " + row.word +
         " image map map " + row.effect + "." + kPreview;
}

std::vector<std::string> Only(const SwizzleCase& row, std::string (*text)(const SwizzleCase&)) {
  return *row.word ? std::vector<std::string>{text(row)} : std::vector<std::string>();
}

TEST(ImageChecks, Swizzling) {
  for (const SwizzleCase& row : kSwizzleCases) {
    for (const int swizzling : {-1, 0, 1, 3}) {
      for (const int rgba : {-1, 0, 1, 2, 3, 4, 5}) {
        TexturedScene scene;
        scene.AddMap(row.effect, "a.png", swizzling, rgba);
        MaterialRun run(scene);
        run.Resolve("tag");
        std::vector<std::string> expected;
        if (swizzling <= 0)
          expected = Only(row, OffWarning);
        else if (std::max(rgba, 0) != row.rgba)
          expected = Only(row, WrongWarning);
        EXPECT_EQ(run.TakeWarnings(), expected) << row.effect << ' ' << swizzling << ' ' << rgba;
      }
    }
  }
}

TEST(ImageChecks, MissingChannelsKeepValuesOfMapBefore) {
  TexturedScene scene;
  scene.AddMap("metallicGLTF", "a.png", 1, 5);
  scene.AddMap("normalGLTF", "a.png", 0, 0);       // reads neither
  scene.AddMap("roughnessGLTF", "a.png", -1, -1);  // on, blue
  scene.AddMap("aoGLTF", "a.png", 0, 3);           // off; its red isn't read
  scene.AddMap("dissolve", "a.png", 7, -1);        // still blue
  MaterialRun run(scene);
  run.Resolve("tag");
  EXPECT_THAT(run.TakeWarnings(), ElementsAre(WrongWarning(kSwizzleCases[4]), OffWarning(kSwizzleCases[2]),
                                              WrongWarning(kSwizzleCases[6])));
}

const std::string kMetallicDiffers =
    "warning|    GLTF_Metallic and GLTF_Roughness image maps in one material group must use the same image. "
    "GLTF_Metallic image map :map metallicGLTF." +
    kPreview;
const std::string kRoughnessDiffers =
    "warning|    GLTF_Metallic and GLTF_Roughness image maps in one material group must use the same image. "
    "GLTF_Roughness image map :map roughnessGLTF." +
    kPreview;
const std::string kOcclusionDiffers =
    "warning|    GLTF_Metallic, GLTF_Roughness and GLTF_AmbientOclussion image maps in one material group should "
    "use the same image. GLTF_AmbientOclussion image map :map aoGLTF. If they share the same image file resulting "
    "export file will be smaller in size.";
const std::string kDissolveDiffers =
    "warning|    Dissolve and GLTF_BaseColor image maps in one material group must use the same image. Dissolve "
    "image map :map dissolve." +
    kPreview;

struct SharedImageCase {
  std::vector<const char*> effects;  // in order of visit; the last map has an image of its own
  std::vector<std::string> warnings;
};

TEST(ImageChecks, SeeOnlyWhatCameBefore) {
  const SharedImageCase cases[] = {
      {{"metallicGLTF", "roughnessGLTF"}, {kRoughnessDiffers}},
      {{"roughnessGLTF", "metallicGLTF"}, {kMetallicDiffers}},
      {{"metallicGLTF", "aoGLTF"}, {kOcclusionDiffers}},
      {{"roughnessGLTF", "metallicGLTF", "aoGLTF"}, {kOcclusionDiffers}},
      {{"aoGLTF", "metallicGLTF"}, {}},
      {{"aoGLTF", "metallicGLTF", "roughnessGLTF"}, {kRoughnessDiffers}},
      // The later one of these two comes first.
      {{"dissolve", "baseColorGLTF"}, {kDissolveDiffers}},
      {{"baseColorGLTF", "dissolve"}, {}},
      {{"baseColorGLTF", "emisGLTF", "normalGLTF", "aoGLTF"}, {}},
  };
  for (const SharedImageCase& row : cases) {
    TexturedScene scene;
    for (const char* effect : row.effects) {
      const auto* swizzle =
          std::find_if(std::begin(kSwizzleCases), std::end(kSwizzleCases),
                       [&](const SwizzleCase& entry) { return entry.effect == std::string(effect); });
      scene.AddMap(effect, effect == row.effects.back() ? "own.png" : "shared.png", 1, swizzle->rgba);
    }
    MaterialRun run(scene);
    run.Resolve("tag");
    EXPECT_EQ(run.TakeWarnings(), row.warnings) << ::testing::PrintToString(row.effects);
  }
}

// One slot serves both channels: the first map keeps it.
TEST(ImageChecks, SecondOfMetallicAndRoughnessIsLost) {
  const std::pair<const char*, const char*> orders[] = {{"metallicGLTF", "roughnessGLTF"},
                                                        {"roughnessGLTF", "metallicGLTF"}};
  for (const auto& [first, second] : orders) {
    TexturedScene scene;
    scene.AddMap(first, "a.png", 0, 0);
    scene.AddMap(second, "b.png", 0, 0);
    MaterialRun run(scene);
    EXPECT_EQ(run.Resolve("tag").metallicRoughnessTexture->name, std::string("map ") + first);
  }
}

TEST(ImageChecks, StoreByChannel) {
  TexturedScene scene;
  for (const SwizzleCase& row : kSwizzleCases) scene.AddMap(row.effect, "a.png", 1, row.rgba);
  MaterialRun run(scene);
  const GltfMaterial& material = run.Resolve("tag");
  EXPECT_THAT(run.TakeWarnings(), IsEmpty());
  EXPECT_EQ(material.normalTexture->name, "map normalGLTF");
  EXPECT_EQ(material.emissiveTexture->name, "map emisGLTF");
  EXPECT_EQ(material.occlusionTexture->name, "map aoGLTF");
  EXPECT_EQ(material.metallicRoughnessTexture->name, "map metallicGLTF");
  EXPECT_EQ(material.baseColorTexture->name, "map baseColorGLTF");
  EXPECT_EQ(material.alphaMode, GltfAlphaMode::Blend);
  EXPECT_EQ(material.baseColorFactor[3], 1.0);
}

// All orders of the seven channels: they stay in order of insertion, but of the base colour and the dissolve
// the later one stands directly before the other.
TEST(ChannelImages, KeepHashTableOrder) {
  const std::string kBase = "baseColorGLTF", kDissolve = "dissolve";
  std::vector<std::string> order = {"aoGLTF",       "baseColorGLTF", "dissolve",     "emisGLTF",
                                    "metallicGLTF", "normalGLTF",    "roughnessGLTF"};
  do {
    std::vector<std::string> expected;
    for (const std::string& channel : order) {
      const auto partner = std::find(expected.begin(), expected.end(), channel == kBase ? kDissolve : kBase);
      expected.insert(channel == kBase || channel == kDissolve ? partner : expected.end(), channel);
    }
    ChannelImages images;
    for (const std::string& channel : order) {
      images.Insert(channel, nullptr);
      images.Insert(order.front(), nullptr);  // no second entry of a channel
    }
    std::vector<std::string> actual;
    for (const ChannelImage& entry : images.Entries()) actual.emplace_back(entry.channel);
    ASSERT_EQ(actual, expected);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(ChannelImages, LowestMapOfChannelWins) {
  TexturedScene scene;
  scene.AddImage("normalGLTF", "first", scene.mask, "a.png");
  const ItemIndex nested = scene.Add("mask", "nested", scene.mask);
  scene.AddImage("baseColorGLTF", "nested map", nested, "b.png");
  scene.AddImage("normalGLTF", "second", scene.mask, "c.png");
  scene.AddImage("baseColorGLTF", "third", scene.mask, "d.png");
  MaterialRun run(scene);
  const GltfMaterial& material = run.Resolve("tag");
  EXPECT_EQ(material.normalTexture->name, "first");
  EXPECT_EQ(material.baseColorTexture->name, "nested map");
  EXPECT_EQ(run.State().gltfScene->textures.size(), 2u);
}

}  // namespace
