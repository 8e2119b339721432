// Imports small files made here: what models in the wild rarely show, and what they must not do.

#include "importer/import_model.h"
#include "importer/transform_math.h"
#include "tests/support/host_directory.h"
#include "tests/support/posed_file.h"
#include "tests/support/save_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using headless::ItemData;
using headless::SceneData;
using importer::ImportedScene;
using importer::ImportError;
using importer::ImportOptions;
using importer::Vector3;
using test_support::HostDirectory;
using test_support::Point;
using testing::ElementsAre;
using testing::HasSubstr;

// Three points, one triangle, and whatever else the parts add. The buffer: POSITION, indices.
std::string Gltf(const std::string& parts, const std::string& attributes = "") {
  return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"buffers":[{"byteLength":42,"uri":"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAABAAIA"}],
"bufferViews":[{"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":6}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]},
{"bufferView":1,"componentType":5123,"count":3,"type":"SCALAR"},{"bufferView":0,"componentType":5126,"count":3,"type":"VEC2"}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0)" +
         attributes + R"(},"indices":1,"material":0}]}],)" + parts + "}";
}

ImportedScene Import(const HostDirectory& directory, const std::string& name, const std::string& text,
                     ImportOptions options = {}) {
  directory.WriteFile(name, text);
  options.textureDirectory = directory.Path();
  return importer::ImportModel(directory / name, options);
}

std::string FaultOf(const std::string& name, const std::string& text) {
  const HostDirectory directory;
  try {
    Import(directory, name, text);
  } catch (const ImportError& error) {
    return error.what();
  }
  return "";
}

const ItemData& Find(const SceneData& scene, const std::string& type, const std::string& effect = "") {
  const auto item = std::find_if(scene.items.begin(), scene.items.end(), [&](const ItemData& candidate) {
    if (candidate.type != type) return false;
    const std::int32_t channel = headless::FindChannel(candidate, "effect");
    return effect.empty() ||
           std::get<headless::SharedText>(candidate.channels[static_cast<std::size_t>(channel)].setup) == effect;
  });
  if (item == scene.items.end()) throw std::runtime_error("no " + type + " " + effect);
  return *item;
}

headless::ChannelValue Value(const ItemData& item, const std::string& channel) {
  const std::int32_t index = headless::FindChannel(item, channel);
  if (index < 0) throw std::runtime_error(item.name + " has no channel " + channel);
  return item.channels[static_cast<std::size_t>(index)].setup;
}

double Number(const ItemData& item, const std::string& channel) { return std::get<double>(Value(item, channel)); }

test_support::GltfFile Export(SceneData scene) {
  scene.userValues["sceneio.gltf.save.exportType"] = 0;
  const test_support::SaveRun run = test_support::RunSave(std::move(scene));
  EXPECT_EQ(run.result, ZYe_OK);
  return test_support::ReadGltfFile(run.output);
}

std::string ExtensionText(const rapidjson::Value& texture) {
  return test_support::TextOf(texture["extensions"]["KHR_texture_transform"]);
}

TEST(ImportParts, MaterialsComeBackAsTheyWere) {
  const HostDirectory directory;
  for (const char* image : {"a.png", "b c.png"}) directory.WriteFile(image, "\x89PNG\r\n\x1A\n");
  SceneData scene = Import(directory, "m.gltf",
                           Gltf(R"("nodes":[{"mesh":0}],"extensionsUsed":["KHR_texture_transform"],
"materials":[{"name":"paint","doubleSided":true,"alphaMode":"BLEND","emissiveFactor":[1,0.5,0],
"pbrMetallicRoughness":{"metallicFactor":0.25,"roughnessFactor":0.5,"baseColorFactor":[0.125,0.25,0.5,0.75],
"baseColorTexture":{"index":0,"extensions":{"KHR_texture_transform":{"offset":[0.5,0.25],"rotation":0.5,"scale":[2,3]}}},
"metallicRoughnessTexture":{"index":1}},"normalTexture":{"index":0,"scale":0.75},"occlusionTexture":{"index":1,"strength":0.5}}],
"textures":[{"source":0,"sampler":0},{"source":1}],"samplers":[{"wrapS":33071,"wrapT":33648}],
"images":[{"uri":"a.png"},{"uri":"b%20c.png"}])",
                                R"(,"TEXCOORD_0":2)"))
                        .scene;
  EXPECT_EQ(Find(scene, "imageMap", "metallicGLTF").imagePath, "b c.png");
  EXPECT_EQ(Find(scene, "imageMap", "dissolve").imagePath, "a.png");
  scene.directory = directory.Path().string();
  const test_support::GltfFile file = Export(std::move(scene));
  const rapidjson::Value& paint = file.json["materials"][1];
  EXPECT_STREQ(paint["name"].GetString(), "paint");
  EXPECT_STREQ(paint["alphaMode"].GetString(), "BLEND");
  EXPECT_TRUE(paint["doubleSided"].GetBool());
  EXPECT_EQ(test_support::TextOf(paint["emissiveFactor"]), "[1.0,0.5,0.0]");
  const rapidjson::Value& surface = paint["pbrMetallicRoughness"];
  EXPECT_EQ(test_support::TextOf(surface["baseColorFactor"]), "[0.125,0.25,0.5,0.75]");
  EXPECT_EQ(surface["metallicFactor"].GetDouble(), 0.25);
  EXPECT_EQ(surface["roughnessFactor"].GetDouble(), 0.5);
  EXPECT_EQ(paint["normalTexture"]["scale"].GetDouble(), 0.75);
  EXPECT_EQ(paint["occlusionTexture"]["strength"].GetDouble(), 0.5);
  const rapidjson::Value& transform = surface["baseColorTexture"]["extensions"]["KHR_texture_transform"];
  EXPECT_NEAR(transform["offset"][0].GetDouble(), 0.5, 1e-6);
  EXPECT_NEAR(transform["offset"][1].GetDouble(), 0.25, 1e-6);
  EXPECT_EQ(transform["rotation"].GetDouble(), 0.5);
  EXPECT_EQ(test_support::TextOf(transform["scale"]), "[2.0,3.0]");
  EXPECT_EQ(ExtensionText(paint["normalTexture"]), R"({"offset":[0.0,0.0],"rotation":0.0,"scale":[1.0,1.0]})");
  const auto sampler = surface["baseColorTexture"]["index"].GetUint();
  EXPECT_EQ(test_support::TextOf(file.json["samplers"][file.json["textures"][sampler]["sampler"].GetUint()]),
            R"({"wrapS":33071,"wrapT":33648})");
}

TEST(ImportParts, SurfacesOfOtherFormatsAreMadeSenseOf) {
  struct Row {
    const char* effect;
    double roughness, alpha;
    const char* warning;
  };
  constexpr Row kRows[] = {
      {"<diffuse><color>1 1 1 1</color></diffuse><specular><color>1 1 1 1</color></specular>"
       "<shininess><float>6</float></shininess><transparency><float>0</float></transparency>",
       0.5, 1, "opacity 0 taken as opaque"},
      {"<diffuse><color>1 1 1 1</color></diffuse><specular><color>0 0 0 1</color></specular>"
       "<shininess><float>6</float></shininess><transparency><float>0.25</float></transparency>",
       1, 0.25, ""},
  };
  for (const Row& row : kRows) {
    const HostDirectory directory;
    const ImportedScene imported = Import(
        directory, "m.dae",
        R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit meter="0.5"/><up_axis>Z_UP</up_axis></asset>
<library_effects><effect id="e"><profile_COMMON><technique sid="t"><phong>)" +
            std::string(row.effect) +
            R"(</phong></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m" name="m"><instance_effect url="#e"/></material></library_materials>
<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="a" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>
<accessor source="#a" count="3" stride="3">
<param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor>
</technique_common></source><vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles material="s" count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
</mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="w"><node id="n" name="n"><instance_geometry url="#g"><bind_material>
<technique_common><instance_material symbol="s" target="#m"/></technique_common></bind_material>
</instance_geometry></node></visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#w"/></scene></COLLADA>)");
    const ItemData& shader = Find(imported.scene, "glTFShader");
    EXPECT_DOUBLE_EQ(Number(shader, "roughness"), row.roughness);
    EXPECT_EQ(Number(shader, "metallic"), 0);
    const bool opaque = row.alpha == 1;
    if (!opaque) {
      EXPECT_EQ(Number(Find(imported.scene, "advancedMaterial"), "dissAmt"), 1 - row.alpha);
    }
    EXPECT_THAT(imported.warnings, opaque ? testing::Contains(HasSubstr(row.warning))
                                          : testing::Matcher<std::vector<std::string>>(testing::IsEmpty()));
    EXPECT_EQ(Number(Find(imported.scene, "scale"), "scl.Y"), 0.5);
    EXPECT_NEAR(Number(Find(imported.scene, "rotation"), "rot.X"), -std::numbers::pi / 2, 1e-7);
  }
}

// A triangle with pivots that turns about z by a quarter in a second, in metres with z up.
constexpr char kPivotFbx[] = R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXHeaderVersion: 1003
	FBXVersion: 7400
}
GlobalSettings:  {
	Properties70:  {
		P: "UpAxis", "int", "Integer", "",2
		P: "UpAxisSign", "int", "Integer", "",1
		P: "FrontAxis", "int", "Integer", "",1
		P: "FrontAxisSign", "int", "Integer", "",-1
		P: "CoordAxis", "int", "Integer", "",0
		P: "CoordAxisSign", "int", "Integer", "",1
		P: "UnitScaleFactor", "double", "Number", "",100
		P: "TimeMode", "enum", "", "",11
	}
}
Objects:  {
	Geometry: 100, "Geometry::tri", "Mesh" {
		Vertices: *9 { a: 0,0,0,1,0,0,0,1,0 }
		PolygonVertexIndex: *3 { a: 0,1,-3 }
	}
	Model: 200, "Model::arm", "Mesh" {
		Properties70:  {
			P: "RotationPivot", "Vector3D", "Vector", "",1,0,0
			P: "ScalingPivot", "Vector3D", "Vector", "",1,0,0
			P: "RotationActive", "bool", "", "",1
			P: "Lcl Translation", "Lcl Translation", "", "A",0,0,5
			P: "Lcl Scaling", "Lcl Scaling", "", "A",2,2,2
		}
	}
	AnimationStack: 300, "AnimStack::turn", "" { Properties70:  { P: "LocalStop", "KTime", "Time", "",46186158000 } }
	AnimationLayer: 400, "AnimLayer::base", "" { }
	AnimationCurveNode: 500, "AnimCurveNode::R", "" { Properties70:  { P: "d|X", "Number", "", "A",0 } }
	AnimationCurve: 600, "AnimCurve::", "" {
		KeyTime: *2 { a: 0,46186158000 }
		KeyValueFloat: *2 { a: 0,90 }
	}
}
Connections:  {
	C: "OO",200,0 C: "OO",100,200 C: "OO",400,300 C: "OO",500,400
	C: "OP",500,200, "Lcl Rotation" C: "OP",600,500, "d|Z"
}
)";

TEST(ImportParts, PivotsAndScaleTurnWithTheirNode) {
  const HostDirectory directory;
  const ImportedScene imported = Import(directory, "pivot.fbx", kPivotFbx);
  const test_support::GltfFile file = Export(imported.scene);
  ASSERT_EQ(file.json["animations"].Size(), 1u);
  const std::vector<double> times =
      test_support::AccessorValues(file, file.json["animations"][0]["samplers"][0]["input"].GetUint());
  ASSERT_GE(times.size(), 25u);
  EXPECT_EQ(times[24], 1);
  const std::vector<Point> start = test_support::PoseFile(file, test_support::Moment{0, 0});
  const std::vector<Point> end = test_support::PoseFile(file, test_support::Moment{0, 24});
  ASSERT_EQ(end.size(), 3u);
  const Point wantedStart[] = {{-1, 5, 0}, {1, 5, 0}, {-1, 5, -2}};
  const Point wantedEnd[] = {{1, 5, 2}, {1, 5, 0}, {-1, 5, 2}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_LT(test_support::Distance(start[i], wantedStart[i]), 1e-5) << i;
    EXPECT_LT(test_support::Distance(end[i], wantedEnd[i]), 1e-5) << i;
  }
}

TEST(ImportParts, UnitsAndAxesCanBeOverruled) {
  const HostDirectory directory;
  ImportOptions options;
  options.metersPerUnit = 0.5;
  options.upAxis = importer::UpAxis::X;
  const test_support::GltfFile fbx = Export(Import(directory, "pivot.fbx", kPivotFbx, options).scene);
  // (-1, 0, 5) of the file, with x upwards: y is x, x is -y.
  EXPECT_LT(test_support::Distance(test_support::PoseFile(fbx, std::nullopt)[0], {0, -0.5, 2.5}), 1e-6);
  options.upAxis = importer::UpAxis::Z;
  const test_support::GltfFile stl =
      Export(Import(directory, "t.stl",
                    "solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 2 0\nvertex 1 0 0\nvertex 0 1 4\nendloop\n"
                    "endfacet\nendsolid t\n",
                    options)
                 .scene);
  EXPECT_LT(test_support::Distance(test_support::PoseFile(stl, std::nullopt)[2], {0, 2, -0.5}), 1e-6);
}

TEST(ImportParts, NamesOfEmbeddedTexturesAreSafe) {
  const HostDirectory directory;
  const std::string image = R"({"mimeType":"image/png","name":"NAME","uri":"data:image/png;base64,iVBORw0KGgo="})";
  std::string images;
  for (const char* name : {"../../etc/x", "con\\u0007trol", "same", "same"}) {
    std::string one = image;
    one.replace(one.find("NAME"), 4, name);
    images += (images.empty() ? "" : ",") + one;
  }
  const ImportedScene imported = Import(directory, "t.gltf",
                                        Gltf(R"("nodes":[{"mesh":0}],"materials":[{"emissiveTexture":{"index":3},
"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"metallicRoughnessTexture":{"index":1}},"normalTexture":{"index":2}}],
"textures":[{"source":0},{"source":1},{"source":2},{"source":3}],"images":[)" +
                                             images + "]"));
  ASSERT_EQ(imported.embeddedTextures.size(), 4u);
  for (const std::string& name : imported.embeddedTextures) {
    EXPECT_THAT(name, testing::MatchesRegex("[A-Za-z0-9_-][A-Za-z0-9._-]*")) << name;
    EXPECT_EQ(std::filesystem::file_size(directory / name), 8u) << name;
  }
  EXPECT_EQ(Find(imported.scene, "imageMap", "baseColorGLTF").imagePath, imported.embeddedTextures[0]);
}

TEST(ImportParts, ReadsNothingOutsideTheFolder) {
  const HostDirectory directory;
  const std::string bytes(42, '\0');
  directory.WriteFile("outside.bin", bytes);
  directory.WriteFile("in/inside.bin", bytes);
  std::filesystem::create_symlink(directory / "outside.bin", directory / "in/link.bin");
  const auto import = [&](const std::string& uri) {
    std::string text = Gltf(R"("nodes":[{"mesh":0}],"materials":[{}])");
    const std::size_t start = text.find("data:"), end = text.find('"', start);
    text.replace(start, end - start, uri);
    Import(directory, "in/m.gltf", text);
  };
  EXPECT_NO_THROW(import("inside.bin"));
  for (const std::string& uri : {std::string("../outside.bin"), (directory / "outside.bin").string(),
                                 std::string("link.bin"), std::string("/etc/hostname")})
    EXPECT_THROW(import(uri), ImportError) << uri;
}

TEST(ImportParts, FaultsNameTheirPlace) {
  EXPECT_THAT(FaultOf("a.ply",
                      "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                      "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                      "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 99\n"),
              HasSubstr("99"));
  EXPECT_THAT(FaultOf("a.stl",
                      "solid t\nfacet normal 0 0 1\nouter loop\nvertex nan 0 0\nvertex 1 0 0\n"
                      "vertex 0 1 4\nendloop\nendfacet\nendsolid t\n"),
              HasSubstr("vertex 0: not finite"));
  EXPECT_THAT(FaultOf("a.gltf", "{"), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(FaultOf("a.unknown", "hello"), testing::Not(HasSubstr("\n")));
  const HostDirectory directory;
  EXPECT_THROW(importer::ImportModel(directory / "absent.fbx", {}), ImportError);
}

TEST(ImportParts, SaysWhatStaysBehind) {
  const HostDirectory directory;
  const ImportedScene imported =
      Import(directory, "lines.ply",
             "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
             "element face 2\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"
             "2 0 1\n");
  EXPECT_THAT(imported.warnings, ElementsAre("mesh \"Mesh\": 1 lines not carried over"));
}

TEST(ImportTransforms, AnyMatrixIsAProductOfTurnsAndScales) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> number(-3, 3);
  for (int round = 0; round < 200; ++round) {
    Matrix4 matrix;
    for (std::size_t row = 0; row < 4; ++row)
      for (std::size_t column = 0; column < 3; ++column) matrix(row, column) = number(random);
    if (round % 5 == 0)
      for (std::size_t column = 0; column < 3; ++column) matrix(2, column) = matrix(1, column) * 2;
    const importer::ShearedPlacement sheared = importer::DecomposeSheared(matrix);
    const Matrix4 first = importer::MatrixOf({{1, 1, 1}, sheared.firstAngles, {0, 0, 0}});
    const Matrix4 made = first * importer::MatrixOf(sheared.placement);
    for (std::size_t i = 0; i < 16; ++i) ASSERT_NEAR(made.m[i], matrix.m[i], 1e-9) << "round " << round;
    EXPECT_FALSE(importer::Decompose(matrix));
    const importer::Placement placement = {{number(random), number(random), number(random)},
                                           {number(random), number(random), number(random)},
                                           {number(random), number(random), number(random)}};
    const Matrix4 plain = importer::MatrixOf(placement);
    const auto again = importer::Decompose(plain);
    ASSERT_TRUE(again) << "round " << round;
    for (std::size_t i = 0; i < 16; ++i) ASSERT_NEAR(importer::MatrixOf(*again).m[i], plain.m[i], 1e-9);
  }
}

TEST(ImportTransforms, AnglesRunOnWithoutJumps) {
  const Vector3 axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.6, 0.48, 0.64}};
  for (const Vector3& axis : axes) {
    Vector3 angles = {0, 0, 0};
    for (int step = 0; step <= 720; ++step) {
      const double half = step * std::numbers::pi / 360;
      const importer::Quaternion turn = {axis[0] * std::sin(half), axis[1] * std::sin(half),
                                         axis[2] * std::sin(half), std::cos(half)};
      const Vector3 next = importer::AnglesOf(turn, angles);
      const Matrix4 made = importer::MatrixOf({{1, 1, 1}, next, {0, 0, 0}});
      const importer::Quaternion back = importer::QuaternionOf(made);
      double dot = 0;
      for (std::size_t i = 0; i < 4; ++i) dot += back[i] * turn[i];
      ASSERT_NEAR(std::abs(dot), 1, 1e-9) << "step " << step;
      for (std::size_t i = 0; i < 3; ++i) ASSERT_LT(std::abs(next[i] - angles[i]), 0.5) << "step " << step;
      angles = next;
    }
    // Two whole turns about one of the host's axes are that, and not back where they began.
    const double sum = angles[0] + angles[1] + angles[2];
    if (axis[1] == 0) {
      EXPECT_NEAR(sum, 4 * std::numbers::pi, 1e-3);
    }
  }
}

}  // namespace
