#include "document/document.h"
#include "tests/support/glb_reader.h"
#include "tests/support/host_directory.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using test_support::AccessorValues;
using test_support::GltfFile;
using test_support::TextOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class DocumentJson : public testing::Test {
 protected:
  GltfFile Write() {
    EXPECT_TRUE(WriteDocument(document, dir.HostPath("scene.glb")));
    return test_support::ReadGltfFile(dir / "scene.glb");
  }

  GltfNode* AddNode(const std::string& name, GltfNode* parent = nullptr) {
    GltfNode* node = scene->CreateNode(name);
    (parent ? parent : scene)->AddChild(node);
    return node;
  }

  // A node with a mesh of one triangle per tag.
  GltfMesh* AddMesh(const std::string& nodeName, std::initializer_list<const char*> tags) {
    GltfMesh* mesh = scene->CreateMesh();
    mesh->AddPosition(0, 0, 0);
    std::uint32_t triangle = 0;
    for (const char* tag : tags) mesh->polygonsByTag[tag].push_back(triangle++);
    AddNode(nodeName)->SetMesh(mesh);
    return mesh;
  }

  GltfMaterial* AddMaterial(GltfMesh* mesh, const std::string& tag) {
    return mesh->materialByTag[tag] = scene->CreateMaterial(tag);
  }

  GltfTexture* AddTexture(const std::string& name, const std::string& uvMap, const std::string& file = "i.png") {
    GltfTexture* texture = scene->CreateTexture(name);
    texture->filePath = dir.WriteFile(file, "1234");
    texture->uvMapName = uvMap;
    return texture;
  }

  test_support::HostDirectory dir;
  GltfDocument document;
  GltfScene* scene = document.CreateScene();
};

TEST_F(DocumentJson, WithoutAHostTheGeneratorHasNoVersion) {
  EXPECT_THAT(Write().text,
              testing::StartsWith(R"({"asset":{"generator":"Kelbrin Orvo 0.0v0","version":"2.0"},)"));
}

TEST_F(DocumentJson, RootKeysStandInOrder) {
  GltfMesh* mesh = AddMesh("body", {"skin"});
  mesh->uvIndexByName["uv"] = 0;
  GltfMaterial* material = AddMaterial(mesh, "skin");
  material->shadingModel = GltfShadingModel::Unlit;
  material->baseColorTexture = AddTexture("t", "uv");
  mesh->AddSkin(std::make_unique<GltfSkin>());
  mesh->node->SetCamera(scene->CreateCamera("cam"));
  GltfAnimation* animation = scene->CreateAnimation();
  animation->CreateSampler(GltfPath::Scale);
  std::string keys;
  const GltfFile file = Write();
  for (auto member = file.json.MemberBegin(); member < file.json.MemberEnd(); ++member)
    keys += std::string(member->name.GetString()) + " ";
  EXPECT_EQ(
      keys,
      "asset extensionsUsed scene extensionsUsed scenes nodes meshes buffers bufferViews accessors materials "
      "textures images samplers animations skins cameras ");
}

TEST_F(DocumentJson, NodesAreWrittenDepthFirst) {
  GltfNode* a = AddNode("a");
  GltfNode* b = AddNode("b", a);
  AddNode("c", b);
  AddNode("b", a);
  AddNode("");
  EXPECT_EQ(scene->FindNode("b"), b);
  EXPECT_EQ(scene->FindNode("none"), nullptr);
  const GltfFile file = Write();
  EXPECT_EQ(
      TextOf(file.json["nodes"]),
      R"([{"name":"a","children":[1,3]},{"name":"b","children":[2]},{"name":"c"},{"name":"b"},{"name":""}])");
  EXPECT_EQ(TextOf(file.json["scenes"]), R"([{"nodes":[0,4]}])");
}

TEST_F(DocumentJson, TransformsTakeTheFormOfTheirNode) {
  AddNode("identity")->useMatrix = true;
  GltfNode* asMatrix = AddNode("matrix");
  asMatrix->useMatrix = true;
  asMatrix->matrix.m[12] = 0.1;
  AddNode("moved")->matrix.m = {2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.1, 2, -3, 1};
  EXPECT_EQ(TextOf(Write().json["nodes"]),
            R"([{"name":"identity"},)"
            R"({"name":"matrix","matrix":[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,)"
            R"(0.10000000149011612,0.0,0.0,1.0]},)"
            R"({"name":"moved","rotation":[0.0,0.0,0.0,1.1180340051651],)"
            R"("translation":[0.10000000149011612,2.0,-3.0],"scale":[2.0,1.0,1.0]}])");
}

TEST_F(DocumentJson, ASkinnedMeshInWorldSpaceNeverHasAMatrix) {
  for (const std::uint32_t inWorldSpace : {0u, 1u, 2u}) {
    GltfDocument one;
    GltfNode* node = one.CreateScene()->CreateNode("n");
    one.scenes[0]->AddChild(node);
    node->useMatrix = true;
    node->matrix.m[13] = 5;
    node->SetMesh(one.scenes[0]->CreateMesh());
    node->mesh->AddSkin(std::make_unique<GltfSkin>());
    one.skinnedMeshInWS = inWorldSpace;
    ASSERT_TRUE(WriteDocument(one, dir.HostPath("one.glb")));
    const GltfFile file = test_support::ReadGltfFile(dir / "one.glb");
    EXPECT_EQ(file.json["nodes"][0].HasMember("matrix"), inWorldSpace != 1) << inWorldSpace;
  }
}

TEST_F(DocumentJson, EmptyMeshesAreLeftOutAndCamerasShareALens) {
  AddMesh("no polygons", {})->node->SetCamera(scene->CreateCamera("one"));
  GltfMesh* mesh = AddMesh("no positions", {"tag"});
  mesh->positions.clear();
  AddNode("two")->SetCamera(scene->CreateCamera("two"));
  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["nodes"]),
            R"([{"name":"no polygons","camera":0},{"name":"no positions"},{"name":"two","camera":1}])");
  EXPECT_EQ(TextOf(file.json["meshes"]), "[]");
  EXPECT_EQ(TextOf(file.json["cameras"]),
            R"([{"name":"one","type":"perspective","perspective":{"znear":0.01,"yfov":0.8726}},)"
            R"({"name":"two","type":"perspective","perspective":{"znear":0.01,"yfov":0.8726}}])");
}

TEST_F(DocumentJson, AMeshUnderTwoNodesIsWrittenTwice) {
  GltfMesh* mesh = AddMesh("first", {"b", "a"});
  mesh->AddSkin(std::make_unique<GltfSkin>())->name = "s";
  AddNode("second")->SetMesh(mesh);
  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["meshes"]),
            R"([{"primitives":[{"indices":0},{"indices":1}]},{"primitives":[{"indices":2},{"indices":3}]}])");
  EXPECT_THAT(AccessorValues(file, 1), ElementsAre(1));
  // Both skins are the last node's, as the mesh is.
  EXPECT_EQ(TextOf(file.json["nodes"]),
            R"([{"name":"first","mesh":0},{"name":"second","mesh":1,"skin":0,"skin":1}])");
  EXPECT_EQ(TextOf(file.json["skins"]),
            R"([{"inverseBindMatrices":4,"name":"s"},{"inverseBindMatrices":5,"name":"s"}])");
}

TEST_F(DocumentJson, AMaterialHoldsItsTexturesInOrder) {
  GltfMesh* mesh = AddMesh("n", {"m"});
  mesh->uvIndexByName["uv0"] = 0;
  mesh->uvIndexByName["uv1"] = 1;
  GltfMaterial* material = AddMaterial(mesh, "m");
  material->baseColorFactor = {0.1, 0.2, 0.3, 0.4};
  material->metallicFactor = 0.1f;
  material->roughnessFactor = 0.2f;
  material->emissiveFactor = {0.1, 0, 2};
  material->alphaMode = GltfAlphaMode::Blend;
  material->doubleSided = true;
  material->emissiveTexture = AddTexture("emissive", "uv0", "e.png");
  material->occlusionTexture = AddTexture("ao", "uv1", "o.jpg");
  material->occlusionStrength = 0.1;
  material->normalTexture = AddTexture("normal", "uv0", "n.png");
  material->normalScale = 2;
  material->metallicRoughnessTexture = AddTexture("mr", "uv1", "m.png");
  material->baseColorTexture = AddTexture("base", "uv0", "b.png");
  material->baseColorTexture->wrapU = GltfWrapMode::MirroredRepeat;
  material->baseColorTexture->wrapV = GltfWrapMode::ClampToEdge;
  material->baseColorTexture->offsetU = 0.1;
  material->emissiveTexture->wrapU = static_cast<GltfWrapMode>(0);

  const GltfFile file = Write();
  const std::string neutral =
      R"("extensions":{"KHR_texture_transform":{"offset":[0.0,0.0],"rotation":0.0,"scale":[1.0,1.0]}}})";
  EXPECT_EQ(TextOf(file.json["materials"][1]),
            R"({"name":"m","emissiveFactor":[0.1,0.0,2.0],"alphaMode":"BLEND","doubleSided":true,)"
            R"("normalTexture":{"index":2,"texCoord":0,"scale":2.0,)" +
                neutral + R"(,"occlusionTexture":{"index":3,"texCoord":1,"strength":0.10000000149011612,)" +
                neutral + R"(,"emissiveTexture":{"index":4,"texCoord":0,)" + neutral +
                R"(,"pbrMetallicRoughness":{"baseColorFactor":[0.1,0.2,0.3,0.4],)"
                R"("metallicFactor":0.10000000149011612,"roughnessFactor":0.20000000298023225,)"
                R"("baseColorTexture":{"index":0,"texCoord":0,)"
                R"("extensions":{"KHR_texture_transform":{"offset":[0.1,0.0],"rotation":0.0,"scale":[1.0,1.0]}}},)"
                R"("metallicRoughnessTexture":{"index":1,"texCoord":1,)" +
                neutral + "}}");
  EXPECT_EQ(TextOf(file.json["textures"]),
            R"([{"name":"base","sampler":0,"source":0},{"name":"mr","sampler":1,"source":1},)"
            R"({"name":"normal","sampler":2,"source":2},{"name":"ao","sampler":3,"source":3},)"
            R"({"name":"emissive","sampler":4,"source":4}])");
  EXPECT_EQ(TextOf(file.json["samplers"][0]), R"({"wrapS":33648,"wrapT":33071})");
  EXPECT_EQ(TextOf(file.json["samplers"][4]), R"({"wrapS":10497,"wrapT":10497})");
}

TEST_F(DocumentJson, AnUnlitMaterialKeepsOnlyItsBaseColor) {
  GltfMesh* mesh = AddMesh("n", {"m"});
  mesh->uvIndexByName["uv"] = 3;
  GltfMaterial* material = AddMaterial(mesh, "m");
  material->shadingModel = GltfShadingModel::Unlit;
  material->alphaMode = static_cast<GltfAlphaMode>(9);
  material->baseColorTexture = AddTexture("base", "uv");
  material->normalTexture = AddTexture("normal", "uv");
  const GltfFile file = Write();
  EXPECT_THAT(file.text, HasSubstr(R"("scene":0,"extensionsUsed":["KHR_materials_unlit"],"scenes")"));
  EXPECT_THAT(TextOf(file.json["materials"][1]), HasSubstr(R"("alphaMode":"OPAQUE")"));
  EXPECT_THAT(TextOf(file.json["materials"][1]), HasSubstr(R"("baseColorTexture":{"index":0,"texCoord":3,)"));
  EXPECT_THAT(TextOf(file.json["materials"][1]), HasSubstr(R"(,"extensions":{"KHR_materials_unlit":{}}})"));
  EXPECT_THAT(TextOf(file.json["materials"][1]), Not(HasSubstr("normalTexture")));
  EXPECT_EQ(file.json["textures"].Size(), 1u);
}

TEST_F(DocumentJson, TexturesWithoutTheirUvMap) {
  GltfMesh* mesh = AddMesh("n", {"base", "normal"});
  AddMaterial(mesh, "base")->baseColorTexture = AddTexture("base", "none");
  AddMaterial(mesh, "normal")->normalTexture = AddTexture("normal", "none");
  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["textures"]), R"([{"name":"normal","sampler":0,"source":0}])");
  EXPECT_THAT(TextOf(file.json["materials"]), Not(HasSubstr("texCoord")));
}

TEST_F(DocumentJson, MaterialsAndTexturesAreShared) {
  GltfMesh* first = AddMesh("first", {"none", "m", "other"});
  GltfMesh* second = AddMesh("second", {"m"});
  first->uvIndexByName["uv"] = 1;
  second->uvIndexByName["uv"] = 0;
  GltfMaterial* shared = AddMaterial(first, "m");
  second->materialByTag["m"] = shared;
  shared->baseColorTexture = AddTexture("t", "uv");
  AddMaterial(first, "other")->emissiveTexture = shared->baseColorTexture;
  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["meshes"]),
            R"([{"primitives":[{"indices":0},{"indices":1,"material":1},{"indices":2,"material":2}]},)"
            R"({"primitives":[{"indices":3,"material":1}]}])");
  EXPECT_EQ(file.json["materials"].Size(), 3u);
  EXPECT_EQ(file.json["textures"].Size(), 1u);
  EXPECT_EQ(file.json["samplers"].Size(), 1u);
  EXPECT_EQ(file.json["materials"][1]["pbrMetallicRoughness"]["baseColorTexture"]["texCoord"].GetInt(), 1);
}

TEST_F(DocumentJson, ASkinNamesTheJointsThatAreThere) {
  GltfMesh* mesh = AddMesh("body", {"m"});
  GltfNode* bone = AddNode("bone");
  GltfNode* outside = scene->CreateNode("outside");
  GltfSkin* good = mesh->AddSkin(std::make_unique<GltfSkin>());
  good->name = "good";
  good->joints = {bone, outside, mesh->node};
  good->inverseBindMatrices.resize(2);
  good->inverseBindMatrices[1].m[12] = 0.1;
  GltfSkin* bad = mesh->AddSkin(std::make_unique<GltfSkin>());
  bad->joints = {outside, bone};
  mesh->AddSkin(std::make_unique<GltfSkin>());
  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["skins"]),
            R"([{"inverseBindMatrices":1,"skeleton":1,"joints":[1,0],"name":"good"},)"
            R"({"inverseBindMatrices":2,"joints":[1],"name":""},{"inverseBindMatrices":3,"name":""}])");
  EXPECT_EQ(TextOf(file.json["nodes"][0]), R"({"name":"body","mesh":0,"skin":0,"skin":1,"skin":2})");
  EXPECT_EQ(TextOf(file.json["accessors"][1]), R"({"bufferView":1,"type":"MAT4","componentType":5126,"count":2})");
  const std::vector<double> matrices = AccessorValues(file, 1);
  EXPECT_EQ(matrices[16 + 12], static_cast<double>(0.1f));
  EXPECT_EQ(matrices[16 + 3], 0);
  EXPECT_THAT(AccessorValues(file, 3), ElementsAre());
}

TEST_F(DocumentJson, InfluencesBeyondFourAreRefused) {
  GltfSkin skin;
  skin.ExtendPoints(1);
  skin.ExtendPoints(2);
  for (std::uint32_t joint = 0; joint < 4; ++joint) EXPECT_TRUE(skin.AddInfluence(2, 0.1f, joint + 5));
  EXPECT_FALSE(skin.AddInfluence(2, 1, 9));
  EXPECT_THAT(skin.influenceCount, ElementsAre(0, 0, 4));
  EXPECT_THAT(skin.jointIndices[2], ElementsAre(5, 6, 7, 8));
  EXPECT_THAT(skin.jointWeights[2], testing::Each(static_cast<double>(0.1f)));
  EXPECT_THAT(skin.jointWeights[1], testing::Each(0));
}

GltfKeyframe Key(double time, std::array<double, 4> value) { return {time, value}; }

TEST_F(DocumentJson, AnimationsNameSamplersAndNodes) {
  GltfNode* node = AddNode("n");
  GltfAnimation* animation = scene->CreateAnimation();
  animation->name = "walk";
  GltfAnimationSampler* move = animation->CreateSampler(GltfPath::Translation);
  GltfAnimationSampler* turn = animation->CreateSampler(GltfPath::Rotation);
  GltfAnimationSampler* weigh = animation->CreateSampler(GltfPath::Weights);
  move->keyframes = {Key(0.1, {1, 2, 3, 9}), Key(-1, {4, 5, 6, 9}), Key(7.3, {0.1, 8, 9, 9})};
  turn->keyframes = {Key(0, {0, 0, 0, 4}), Key(1, {0, 0, 0, 0}), Key(2, {1, 1, 1, 1})};
  weigh->keyframes = {Key(0, {0.5, 9, 9, 9})};
  animation->CreateChannel(node, turn, GltfPath::Rotation);
  animation->CreateChannel(node, move, GltfPath::Translation);
  animation->CreateChannel(scene->CreateNode("outside"), weigh, GltfPath::Weights);
  animation->CreateChannel(node, weigh, static_cast<GltfPath>(7));
  scene->CreateAnimation();  // has nothing and is left out
  scene->CreateAnimation()->CreateSampler(GltfPath::Scale);

  const GltfFile file = Write();
  EXPECT_EQ(TextOf(file.json["animations"]),
            R"([{"channels":[{"sampler":1,"target":{"node":0,"path":"rotation"}},)"
            R"({"sampler":0,"target":{"node":0,"path":"translation"}},)"
            R"({"sampler":2,"target":{"path":"weights"}},{"sampler":2,"target":{"node":0,"path":""}}],)"
            R"("samplers":[{"input":0,"output":1,"interpolation":"LINEAR"},)"
            R"({"input":2,"output":3,"interpolation":"LINEAR"},{"input":4,"output":5,"interpolation":"LINEAR"}],)"
            R"("name":"walk"},)"
            R"({"channels":[],"samplers":[{"input":6,"output":7,"interpolation":"LINEAR"}]}])");
  EXPECT_EQ(
      TextOf(file.json["accessors"][0]),
      R"({"bufferView":0,"type":"SCALAR","componentType":5126,"count":3,"min":[-1.0],"max":[7.300000190734863]})");
  EXPECT_EQ(TextOf(file.json["accessors"][6]),
            R"({"bufferView":6,"type":"SCALAR","componentType":5126,"count":0,"min":[0.0],"max":[0.0]})");
  EXPECT_THAT(AccessorValues(file, 1), ElementsAre(1, 2, 3, 4, 5, 6, static_cast<double>(0.1f), 8, 9));
  EXPECT_THAT(AccessorValues(file, 3), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0.5, 0.5, 0.5, 0.5));
  EXPECT_THAT(AccessorValues(file, 5), ElementsAre(0.5));
  EXPECT_EQ(file.json["accessors"][7]["type"], "VEC3");
}

TEST_F(DocumentJson, ANumberThatJsonCantSayCutsTheText) {
  AddNode("bad")->matrix.m[12] = std::numeric_limits<double>::quiet_NaN();
  AddNode("after");
  ASSERT_TRUE(WriteDocument(document, dir.HostPath("nan.glb")));
  const test_support::GlbChunks chunks = test_support::ReadGlbChunks(dir / "nan.glb");
  EXPECT_THAT(chunks.text,
              testing::EndsWith(R"("nodes":[{"name":"bad","rotation":[0.0,0.0,0.0,1.0],"translation":[)"));
  document.format = GltfFormat::Gltf;
  ASSERT_TRUE(WriteDocument(document, dir.HostPath("nan.gltf")));
  EXPECT_EQ(test_support::ReadWholeFile(dir / "nan.gltf"), chunks.text);
}

}  // namespace
