#include "materials/shader_layer.h"
#include "tests/support/shader_rig.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <random>

namespace {

using headless::ItemIndex;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// All values of a material but its name, so that one comparison sees every field.
std::string Values(const GltfMaterial& material) {
  char text[512];
  const auto& base = material.baseColorFactor;
  const auto& emissive = material.emissiveFactor;
  std::snprintf(text, sizeof text,
                "model %u base %.17g %.17g %.17g %.17g metallic %.9g roughness %.9g emissive %.17g %.17g %.17g "
                "alpha %u cutoff %.9g double %d normal %.17g occlusion %.17g textures %d",
                static_cast<unsigned>(material.shadingModel), base[0], base[1], base[2], base[3],
                static_cast<double>(material.metallicFactor), static_cast<double>(material.roughnessFactor),
                emissive[0], emissive[1], emissive[2], static_cast<unsigned>(material.alphaMode),
                static_cast<double>(material.alphaCutoff), material.doubleSided, material.normalScale,
                material.occlusionStrength,
                !!material.baseColorTexture + !!material.metallicRoughnessTexture + !!material.normalTexture +
                    !!material.occlusionTexture + !!material.emissiveTexture);
  return text;
}

const std::string kDefaults =
    "model 0 base 1 1 1 1 metallic 1 roughness 1 emissive 0 0 0 alpha 0 cutoff 0.5 double 0 normal 1 "
    "occlusion 1 textures 0";

// A glTF shader without a channel of its own but "enable".
ItemIndex AddBareShader(ShaderScene& scene, ItemIndex mask, const ChannelValues& channels,
                        const std::string& type = "glTFShader") {
  const ItemIndex shader = scene.Add(type, type, mask);
  scene.Item(shader).channels.clear();
  scene.Set(shader, "enable", 1);
  for (const auto& [name, value] : channels) scene.Set(shader, name, value);
  return shader;
}

TEST(PolyTag, WithoutMaskGetsDefaults) {
  MaterialRun run{ShaderScene()};
  GltfMaterial& plain = run.Resolve("Other");
  EXPECT_EQ(plain.name, "Other");
  EXPECT_EQ(Values(plain), kDefaults);
  EXPECT_THAT(run.TakeLog(), IsEmpty());

  EXPECT_EQ(Values(run.Resolve("Default")), kDefaults);
  EXPECT_THAT(run.TakeLog(), ElementsAre("info|Failed to find the poly mask tag:Default, using default material"));

  EXPECT_EQ(&run.Resolve("Other"), &plain);
  run.Resolve("Default");
  EXPECT_THAT(run.TakeLog(), IsEmpty());
  EXPECT_EQ(run.State().gltfScene->materials.size(), 2u);
}

struct ValueCase {
  const char* about;
  ChannelValues shader;
  ChannelValues orvo;
  std::string expected;
  std::string warning;
};

const std::string kUnlitWarning =
    "warning|Material 'tag' uses glTF Unlit shader extension. At the point of making this warning Unlit extension "
    "is not fully ratified and could change at any point.";

std::string WithAlpha(const char* alpha, const char* mode, const char* sides = "0") {
  return std::string("model 0 base 1 1 1 ") + alpha + " metallic 1 roughness 1 emissive 0 0 0 alpha " + mode +
         " cutoff 0.5 double " + sides + " normal 1 occlusion 1 textures 0";
}

const ValueCase kValueCases[] = {
    {"no channels", {}, {}, kDefaults, ""},
    {"every channel, outside the usual ranges too",
     {{"baseColor.R", 0.1},
      {"baseColor.G", -2.0},
      {"baseColor.B", 3.5},
      {"shadeModel", 0},
      {"metallic", 0.1},
      {"roughness", 7.0},
      {"emissive.R", 0.5},
      {"emissive.G", 0.25},
      {"emissive.B", -1.0},
      {"emissivelevel", 4.0},
      {"normalscale", 0.3},
      {"aoscale", 2.5}},
     {},
     "model 0 base 0.10000000000000001 -2 3.5 1 metallic 0.100000001 roughness 7 emissive 2 1 -4 alpha 0 cutoff "
     "0.5 double 0 normal 0.29999999999999999 occlusion 2.5 textures 0",
     ""},
    {"emission without a level",
     {{"emissive.G", 0.5}},
     {},
     "model 0 base 1 1 1 1 metallic 1 roughness 1 emissive 0 0.5 0 alpha 0 cutoff 0.5 double 0 normal 1 "
     "occlusion 1 textures 0",
     ""},
    {"unlit keeps the base colour and the transparency only",
     {{"baseColor.G", 0.5},
      {"shadeModel", 1},
      {"metallic", 0.7},
      {"roughness", 0.2},
      {"emissive.R", 0.5},
      {"emissivelevel", 4.0},
      {"normalscale", 0.3},
      {"aoscale", 2.5}},
     {{"dissAmt", 0.25}},
     "model 1 base 1 0.5 1 0.75 metallic 0 roughness 1 emissive 0 0 0 alpha 2 cutoff 0.5 double 0 normal 1 "
     "occlusion 1 textures 0",
     kUnlitWarning},
    {"an unknown shading model is read as the usual one",
     {{"shadeModel", 7}, {"metallic", 0.5}},
     {},
     "model 7 base 1 1 1 1 metallic 0.5 roughness 1 emissive 0 0 0 alpha 0 cutoff 0.5 double 0 normal 1 "
     "occlusion 1 textures 0",
     ""},
    {"opaque", {}, {{"dissAmt", 0.0}}, WithAlpha("1", "0"), ""},
    {"blended", {}, {{"dissAmt", 0.25}}, WithAlpha("0.75", "2"), ""},
    {"gone", {}, {{"dissAmt", 1.0}}, WithAlpha("0", "2"), ""},
    {"more than gone", {}, {{"dissAmt", 1.5}}, WithAlpha("0", "2"), ""},
    {"less than opaque", {}, {{"dissAmt", -0.5}}, WithAlpha("1", "0"), ""},
    {"not a number", {}, {{"dissAmt", std::nan("")}}, WithAlpha("nan", "2"), ""},
    {"double-sided", {}, {{"dblSided", 2}}, WithAlpha("1", "0", "1"), ""},
    {"single-sided", {}, {{"dblSided", 0}}, WithAlpha("1", "0"), ""},
};

TEST(MaterialChannels, GiveValues) {
  for (const ValueCase& row : kValueCases) {
    SCOPED_TRACE(row.about);
    ShaderScene scene;
    const ItemIndex mask = scene.AddMask("tag");
    if (!row.orvo.empty()) AddBareShader(scene, mask, row.orvo, "advancedMaterial");
    AddBareShader(scene, mask, row.shader);
    MaterialRun run(scene);
    EXPECT_EQ(Values(run.Resolve("tag")), row.expected);
    const auto warnings = row.warning.empty() ? std::vector<std::string>() : std::vector<std::string>{row.warning};
    EXPECT_EQ(run.TakeWarnings(), warnings);
  }
}

// A channel that is there but can't be read counts like one that is missing.
TEST(MaterialChannels, UnreadableChannelsKeepFields) {
  ShaderScene scene;
  const ItemIndex mask = scene.AddMask("tag");
  const ChannelValues values = {{"baseColor.R", 0.1},   {"shadeModel", 1},    {"metallic", 0.5},
                                {"emissivelevel", 4.0}, {"normalscale", 0.5}, {"aoscale", 0.5}};
  const ItemIndex orvo = AddBareShader(scene, mask, {{"dissAmt", 0.5}, {"dblSided", 1}}, "advancedMaterial");
  const ItemIndex shader = AddBareShader(scene, mask, values);
  scene.Set(shader, "emissive.R", 0.5);
  for (const auto& [name, value] : values) scene.Channel(shader, name).extras.Make().readable = false;
  for (const char* name : {"dissAmt", "dblSided"}) scene.Channel(orvo, name).extras.Make().readable = false;
  MaterialRun run(scene);
  EXPECT_EQ(Values(run.Resolve("tag")),
            "model 0 base 1 1 1 1 metallic 1 roughness 1 emissive 0.5 0 0 alpha 0 cutoff 0.5 double 0 normal 1 "
            "occlusion 1 textures 0");
}

const char* const kNoLayerWarning = "warning|    Poly tag tag does not have material layer effect";

TEST(ShaderTree, DisabledMaskOrShaderGivesDefaults) {
  for (const bool maskOff : {true, false}) {
    ShaderScene scene;
    const ItemIndex mask = scene.AddMask("tag");
    const ItemIndex shader = scene.Add("glTFShader", "shader", mask, {{"metallic", 0.25}});
    scene.Channel(maskOff ? mask : shader, "enable").extras.Make().edit = headless::ChannelValue(maskOff ? 0 : -1);
    MaterialRun run(scene);
    EXPECT_EQ(Values(run.Resolve("tag")), kDefaults);
    EXPECT_THAT(run.TakeLog(), ElementsAre("info|Found mask:tag ptag:tag ptype:Material", kNoLayerWarning));
  }
}

// What a save can't read of the edit state stays as it is; the shader is there all the same.
TEST(ShaderTree, IsWalkedWithoutTheSavesOwnRead) {
  ShaderScene scene;
  scene.Add("glTFShader", "shader", scene.AddMask("tag"), {{"metallic", 0.25}});
  MaterialRun run(scene);
  run.State().chanEdit.Clear();
  EXPECT_EQ(Values(run.Resolve("tag")), kDefaults);
  EXPECT_THAT(run.TakeWarnings(), IsEmpty());
}

const std::string kSeveralWarning =
    "warning|    Found multiple Orvo materials in glTF layer 'mask tag' only the first Orvo material under the "
    "glTF material in the shader tree will be used for transparency!";
const std::string kBelowWarning =
    "warning|    Orvo material in glTF layer 'mask tag' must be placed below glTF material in the shader tree!";

struct PlacementCase {
  const char* children;  // G and g: a glTF shader and one that is off; O and o: the same of Orvo materials
  int accepted;          // index of the Orvo material that gives the alpha, -1 for none
  std::vector<std::string> warnings;
};

TEST(ShaderTree, OrvoMaterialMustStandBelowShader) {
  const PlacementCase cases[] = {
      {"OG", 0, {}},
      {"GO", -1, {kBelowWarning}},
      {"OOG", 1, {kSeveralWarning}},
      {"OGO", 0, {kBelowWarning}},
      {"oOoG", 1, {}},
      {"OgG", 0, {}},
      {"OOg", -1, {kBelowWarning, kNoLayerWarning}},
      {"O", -1, {kNoLayerWarning}},
      {"GOOG", 2, {kSeveralWarning, "warning|    Multiple material layers detected within poly tag tag"}},
  };
  for (const PlacementCase& row : cases) {
    ShaderScene scene;
    const ItemIndex mask = scene.AddMask("tag");
    for (int index = 0; row.children[index]; ++index) {
      const char letter = row.children[index];
      const bool orvo = letter == 'O' || letter == 'o';
      const ItemIndex child = AddBareShader(scene, mask, {}, orvo ? "advancedMaterial" : "glTFShader");
      scene.Set(child, "enable", letter == 'O' || letter == 'G' ? 1 : 0);
      if (orvo) scene.Set(child, "dissAmt", 1.0 / (2 << index));
    }
    MaterialRun run(scene);
    const double alpha = run.Resolve("tag").baseColorFactor[3];
    EXPECT_EQ(alpha, row.accepted < 0 ? 1 : 1 - 1.0 / (2 << row.accepted)) << row.children;
    EXPECT_EQ(run.TakeWarnings(), row.warnings) << row.children;
  }
}

// The whole log of one tree: lower siblings come before a nested mask, whose children come before the rest.
TEST(ShaderTree, LogFollowsWalk) {
  ShaderScene scene;
  const ItemIndex mask = scene.AddMask("tag");
  scene.Add("unityShader", "first", mask);
  const ItemIndex nested = scene.Add("mask", "nested", mask);
  scene.Add("unrealShader", "inner 0", nested);
  AddBareShader(scene, nested, {{"metallic", 0.25}});
  scene.AddImage("diffColor", "dropped", mask, "a.png");
  scene.AddImage("layerMask", "dropped too", mask, "a.png");
  scene.AddImage("albedoUT", "unity map", mask, "a.png");
  scene.AddImage("ccrUE", "unreal map", mask, "a.png");
  AddBareShader(scene, mask, {{"metallic", 0.75}});
  scene.Add("unityShader", "off", mask, {{"enable", 0}});
  scene.Add("someLayer", "unknown", mask);
  scene.data.types.push_back({"someLayer", ""});
  MaterialRun run(scene);
  EXPECT_EQ(run.Resolve("tag").metallicFactor, 0.25f);
  EXPECT_THAT(run.TakeLog(),
              ElementsAre("info|Found mask:tag ptag:tag ptype:Material",       //
                          "info|    Skipping Unity shader layer first",        //
                          "info|    Skipping Unreal shader layer inner 0",     //
                          "info|    Skipping Gltf shader layer glTFShader",    //
                          "info|    Skipping Unity shader layer unity map",    //
                          "info|    Skipping Unreal shader layer unreal map",  //
                          "info|    Skipping Gltf shader layer glTFShader",    //
                          "warning|    Multiple material layers detected within poly tag tag"));
}

TEST(Materials, ReachMeshesByTag) {
  ShaderScene scene;
  const ItemIndex mask = scene.AddMask("a");
  AddBareShader(scene, mask, {{"roughness", 0.5}});
  MaterialRun run(scene);
  SaveState& state = run.State();
  GltfMesh first, second;
  for (const char* tag : {"b", "a"}) state.collectedTags.insert(tag);
  state.meshTags = {{&first, {"b"}}, {&second, {"a", "b", "a"}}};

  state.options.materials = 0;
  EXPECT_EQ(CreateMaterials(state), ZYe_OK);
  EXPECT_THAT(run.TakeLog(), IsEmpty());
  EXPECT_TRUE(first.materialByTag.empty());

  state.options.materials = -1;
  EXPECT_EQ(CreateMaterials(state), ZYe_OK);
  EXPECT_EQ(run.TakeLog().front(), "info|Creating materials");
  const auto& made = state.gltfScene->materials;
  ASSERT_EQ(made.size(), 2u);
  EXPECT_EQ(made[0]->name, "b");
  EXPECT_EQ(made[1]->roughnessFactor, 0.5f);
  EXPECT_EQ(first.materialByTag.at(std::string("b")), made[0].get());
  EXPECT_EQ(second.materialByTag.at(std::string("a")), made[1].get());
  EXPECT_EQ(second.materialByTag.at(std::string("b")), made[0].get());
}

TEST(Materials, WithoutSceneAreErrors) {
  MaterialRun run{ShaderScene()};
  run.State().gltfScene = nullptr;
  for (const char* tag : {"b", "a"}) run.State().collectedTags.insert(tag);
  EXPECT_EQ(CreateMaterials(run.State()), ZYe_OK);
  EXPECT_THAT(run.TakeLog(), ElementsAre("info|Creating materials", "error|Failed to create material:b",
                                         "error|Failed to create material:a"));
}

// A shader tree at random, with what the walk must make of it worked out recursively while it is built.
struct RandomTree {
  explicit RandomTree(unsigned seed) : random(seed) {
    for (int tag = 0; tag < 6; ++tag) {
      const ItemIndex mask = scene.AddMask("tag" + std::to_string(tag));
      shaders.emplace_back();
      images.emplace_back();
      Fill(mask, true, 4);
    }
  }

  int Roll(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); }

  void Fill(ItemIndex mask, bool reached, int depth) {
    static constexpr const char* kTypes[] = {"glTFShader",  "imageMap",         "imageMap",
                                             "unityShader", "advancedMaterial", "mask"};
    static constexpr const char* kEffects[] = {"metallicGLTF", "baseColorGLTF", "roughnessGLTF", "aoGLTF",
                                               "dissolve",     "diffColor",     "smoothUT",      "nonsense"};
    for (int count = Roll(6); count > 0; --count) {
      const std::string type = kTypes[Roll(depth > 0 ? 6 : 5)];
      const bool enabled = Roll(4) != 0;
      const ItemIndex item = scene.Add(type, type + std::to_string(Roll(9)), mask, {{"enable", enabled ? 1 : 0}});
      if (type == "mask") Fill(item, reached && enabled, depth - 1);
      if (type == "glTFShader") {
        scene.Set(item, "roughness", static_cast<double>(item));
        if (reached && enabled) shaders.back().push_back(item);
      }
      if (type == "imageMap") {
        const int effect = Roll(8);
        scene.Set(item, "effect", std::string(kEffects[effect]));
        scene.Item(item).imagePath = "image" + std::to_string(Roll(3)) + ".png";
        if (reached && enabled && effect < 5) images.back().push_back(scene.Item(item).name);
      }
    }
  }

  std::mt19937 random;
  ShaderScene scene;
  std::vector<std::vector<ItemIndex>> shaders;   // per tag, in order of visit
  std::vector<std::vector<std::string>> images;  // per tag: names of image maps that a texture may come from
};

TEST(RandomShaderTrees, ObeyLaws) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    const RandomTree tree(seed);
    MaterialRun run(tree.scene);
    SaveState& state = run.State();
    for (std::size_t tag = 0; tag < tree.shaders.size(); ++tag) {
      const std::string text = "tag" + std::to_string(tag);
      const GltfMaterial& material = run.Resolve(text);
      const auto& shaders = tree.shaders[tag];
      const float roughness = shaders.empty() ? 1.0f : static_cast<float>(shaders.front());
      EXPECT_EQ(material.roughnessFactor, roughness);
      const auto warnings = run.TakeWarnings();
      EXPECT_EQ(std::count(warnings.begin(), warnings.end(),
                           "warning|    Multiple material layers detected within poly tag " + text),
                shaders.size() > 1);
      for (const GltfTexture* texture : {material.baseColorTexture, material.metallicRoughnessTexture})
        if (texture) {
          EXPECT_THAT(tree.images[tag], ::testing::Contains(texture->name));
        }
      EXPECT_EQ(&run.Resolve(text), &material);
    }
    EXPECT_EQ(state.gltfScene->materials.size(), tree.shaders.size());
    std::vector<std::string> names;
    for (const auto& texture : state.gltfScene->textures) names.push_back(texture->name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "a texture made twice";
  }
}

}  // namespace
