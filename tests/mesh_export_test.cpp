// Meshes from the host to the primitives of a file: which meshes are taken, which maps, and what vertices come
// out.
#include "host/fourcc.h"
#include "tests/support/mesh_scenes.h"
#include "tests/support/polygon_meshes.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using headless::kNone;
using headless::LogLine;
using headless::MeshData;
using namespace test_support;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Rows = std::vector<std::vector<double>>;

constexpr double kFullTurn = 6.3;  // radians: smooths everything

MeshData TaggedCube(double smoothingAngle) {
  MeshData mesh = CubeMesh();
  TagAll(mesh, "Default");
  mesh.smoothingAngle = smoothingAngle;
  return mesh;
}

struct Exported {
  SaveRun run;
  GltfFile file;
  std::vector<std::string> Texts(LogLine::Kind kind) const { return TextsOf(run.log, kind); }
};

Exported Export(headless::SceneData scene) {
  SaveRun run = RunSave(std::move(scene));
  GltfFile file = ReadGltfFile(run.output);
  return {std::move(run), std::move(file)};
}

bool HasMesh(const GltfFile& file, unsigned node) { return file.json["nodes"][node].HasMember("mesh"); }

TEST(Vertices, HardEdgesSplitAndSmoothOnesDont) {
  const Exported hard = Export(MeshScene({TaggedCube(0.5)}));
  EXPECT_EQ(PrimitiveOf(hard.file, 0, 0).Rows("POSITION").size(), 24u);
  EXPECT_EQ(PrimitiveOf(hard.file, 0, 0).indices.size(), 36u);
  const Exported smooth = Export(MeshScene({TaggedCube(kFullTurn)}));
  EXPECT_EQ(PrimitiveOf(smooth.file, 0, 0).Rows("POSITION").size(), 8u);
}

TEST(Vertices, PointsAtOnePlaceStayApart) {
  MeshData mesh =
      MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 1, 0}, {-1, 0, 0}}, {{0, 1, 2}, {3, 4, 5}});
  TagAll(mesh, "Default");
  EXPECT_EQ(PrimitiveOf(Export(MeshScene({mesh})).file, 0, 0).Rows("POSITION").size(), 6u);
}

TEST(Primitives, OnePerMaterialTagInOrderOfFirstSight) {
  MeshData mesh = StripMesh(5);
  mesh.material.texts = {"B", "A"};
  mesh.material.perPolygon = std::vector<std::uint32_t>{0, 1, kNone, 1, 0};
  const Exported exported = Export(MeshScene({mesh}));
  ASSERT_EQ(exported.file.json["meshes"][0]["primitives"].Size(), 2u);
  // B has triangles 0 and 4, A has 1 and 3, and triangle 2 is in none. The border points are in both.
  EXPECT_THAT(PrimitiveOf(exported.file, 0, 0).indices, ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_THAT(PrimitiveOf(exported.file, 0, 1).indices, ElementsAre(0, 1, 2, 2, 3, 4));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Info),
              testing::IsSupersetOf({"   material:B polyInds:2", "   material:A polyInds:2"}));
}

TEST(MeshScan, RefusedMeshesKeepTheirNodes) {
  MeshData untagged = StripMesh(2);
  untagged.material = {};
  headless::SceneData scene = MeshScene({MeshData(), untagged, StripMesh(2), MeshOf({{0, 0, 0}}, {})});
  headless::SetChannel(scene.items[3], "visible", std::int32_t{1});  // item 0 is the scene
  const Exported exported = Export(std::move(scene));
  ASSERT_EQ(exported.file.json["nodes"].Size(), 4u);
  for (unsigned node = 0; node < 4; ++node) EXPECT_FALSE(HasMesh(exported.file, node)) << node;
  EXPECT_EQ(exported.run.result, ZYe_OK);
  EXPECT_THAT(exported.Texts(LogLine::Kind::Error), IsEmpty());
}

TEST(MeshScan, SixteenBitIndicesBoundTheCorners) {
  struct Case {
    std::uint32_t triangles;
    std::int32_t indices32;
    bool taken;
  };
  for (const Case& c : {Case{21845, 0, true}, Case{21846, 0, false}, Case{21846, 1, true}}) {
    headless::SceneData scene = MeshScene({StripMesh(c.triangles)});
    SetOption(scene, "indicesExport", c.indices32);
    const Exported exported = Export(std::move(scene));
    EXPECT_EQ(HasMesh(exported.file, 0), c.taken) << c.triangles << " " << c.indices32;
    const std::vector<std::string> errors = exported.Texts(LogLine::Kind::Error);
    if (c.taken) {
      EXPECT_THAT(errors, IsEmpty());
    } else {
      EXPECT_THAT(errors,
                  ElementsAre("   Creating mesh:Mesh0 type:mesh nPoints:21848 polyInds:65538 failed! Number of "
                              "vertices goes over the maximum of unsigned short data type!"));
    }
  }
}

TEST(MeshScan, AnItemReachedTwiceIsScannedOnce) {
  headless::SceneData scene = MeshScene({StripMesh(1)});
  SetOption(scene, "exportType", 1);
  scene.selection = {1, 1};
  const Exported exported = Export(std::move(scene));
  EXPECT_EQ(exported.file.json["meshes"].Size(), 2u);  // written for each node
  const std::vector<std::string> lines = exported.Texts(LogLine::Kind::Info);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Using mesh:Mesh0 type:mesh which is already created"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Creating mesh:Mesh0 type:mesh nPoints:3"), 1);
}

TEST(ColorMaps, RgbBeforeRgbaAndGapsAreZero) {
  MeshData mesh = StripMesh(1);
  mesh.maps.push_back(MakeMap(kMapRgba, "alpha", {0.5f, 0.25f, 1, 0.75f}, {0, 0, kNone}, {}));
  mesh.maps.push_back(MakeMap(kMapRgb, "UV Distortion", {1, 1, 1}, {0, 0, 0}, {}));
  mesh.maps.push_back(MakeMap(kMapRgb, "plain", {1, 0, 0, 0, 1, 0}, {0, 0, 0}, {kNone, 1, kNone}));
  const Exported exported = Export(MeshScene({mesh}));
  const SavedPrimitive primitive = PrimitiveOf(exported.file, 0, 0);
  EXPECT_EQ(primitive.Corners("COLOR_0"), (Rows{{1, 0, 0, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}}));
  EXPECT_EQ(primitive.Corners("COLOR_1"), (Rows{{0.5, 0.25, 1, 0.75}, {0.5, 0.25, 1, 0.75}, {0, 0, 0, 0}}));
  EXPECT_FALSE(primitive.Has("COLOR_2"));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Info),
              testing::IsSupersetOf({"   vcolRGB vmap:plain", "   vcolRGBA vmap:alpha"}));
}

TEST(UvMaps, SortedByNameWithTheCountOfTheMapVisitedLast) {
  MeshData mesh = StripMesh(1);
  mesh.maps.push_back(MakeMap(kMapUv, "b", {0.25f, 0.25f}, {0, 0, 0}, {}));
  mesh.maps.push_back(MakeMap(kMapUv, "A", {0.5f, 0}, {}, {0, kNone, 0}));
  mesh.maps.push_back(MakeMap(kMapUv, "c", {0.75f, 1}, {0, 0, kNone}, {}));
  mesh.maps.push_back(MakeMap(kMapUv, "uv distortion", {2, 2}, {0, kNone, kNone}, {}));
  const Exported exported = Export(MeshScene({mesh}));
  const SavedPrimitive primitive = PrimitiveOf(exported.file, 0, 0);
  EXPECT_EQ(primitive.Corners("TEXCOORD_0"), (Rows{{0.5, 1}, {0, 1}, {0.5, 1}}));  // a gap comes out as (0, 1)
  EXPECT_EQ(primitive.Corners("TEXCOORD_1"), (Rows{{0.25, 0.75}, {0.25, 0.75}, {0.25, 0.75}}));
  EXPECT_EQ(primitive.Corners("TEXCOORD_2"), (Rows{{0.75, 0}, {0.75, 0}, {0, 1}}));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Info),
              testing::IsSupersetOf({"   uv vmap:A count:1", "   uv vmap:b count:1", "   uv vmap:c count:1",
                                     "   uv vmap:uv distortion count:1"}));
}

// Two triangles over an edge of points 1 and 2. Entry 0, for corners without a value, is no value: a corner with
// a value of (0, 0) is a vertex of its own.
TEST(UvMaps, SeamsAndGapsSplitVertices) {
  struct Case {
    std::vector<std::uint32_t> cornerValues;
    std::size_t vertices;
  };
  const Case cases[] = {
      {{0, 0, 0, 0, 0, 0}, 4},          // one value everywhere
      {{0, 0, 0, 1, 0, 0}, 5},          // a seam at one point
      {{0, 0, 0, 2, 2, 0}, 6},          // (0, 0) at both
      {{2, 2, 2, kNone, kNone, 2}, 6},  // (0, 0) and no value differ
      {{3, 3, 3, 2, 2, 2}, 4},          // -0 equals 0
      {{kNone, kNone, kNone, kNone, kNone, kNone}, 4},
  };
  for (const Case& c : cases) {
    MeshData mesh = MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2}, {2, 1, 3}});
    TagAll(mesh, "Default");
    mesh.maps.push_back(MakeMap(kMapUv, "uv", {0.5f, 0.5f, 0.25f, 0.5f, 0, 0, -0.0f, -0.0f}, {}, c.cornerValues));
    EXPECT_EQ(PrimitiveOf(Export(MeshScene({mesh})).file, 0, 0).Rows("POSITION").size(), c.vertices)
        << testing::PrintToString(c.cornerValues);
  }
}

TEST(Normals, MapWhereItHasValuesElseCalculated) {
  MeshData mesh = StripMesh(1);  // faces +z
  mesh.maps.push_back(MakeMap(kMapNormal, "first", {0, 3, 4, 0, 0, 0}, {0, kNone, kNone}, {1, kNone, kNone}));
  mesh.maps.push_back(MakeMap(kMapNormal, "second", {1, 0, 0}, {0, 0, 0}, {}));
  const Exported exported = Export(MeshScene({mesh}));
  const float y = 0.6f, z = 0.8f;
  EXPECT_EQ(PrimitiveOf(exported.file, 0, 0).Corners("NORMAL"), (Rows{{1, 0, 0}, {0, y, z}, {0, 0, 1}}));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Info), Contains("   normal vmap:first"));

  const Exported calculated = Export(MeshScene({StripMesh(1)}));
  EXPECT_EQ(PrimitiveOf(calculated.file, 0, 0).Corners("NORMAL"), (Rows{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}));
  EXPECT_THAT(calculated.Texts(LogLine::Kind::Info),
              Contains("   adding calculated normals (normals mesh map not found)"));
}

// The second mesh's first basis was entered by the first mesh, so its index is that of the first mesh's data and
// its own data begin with its second basis. An index beyond them reads as zeros.
TEST(Tangents, TableIsCarriedOverBetweenMeshes) {
  MeshData first = StripMesh(1), second = StripMesh(1);
  const std::vector<float> a = {1, 0, 0, 0, 1, 0}, b = {0, 1, 0, -1, 0, 0}, c = {-1, 0, 0, 0, -1, 0};
  const auto joined = [](const std::vector<float>& left, const std::vector<float>& right) {
    std::vector<float> both = left;
    both.insert(both.end(), right.begin(), right.end());
    return both;
  };
  first.maps.push_back(MakeMap(kMapTangentBasis, "t", joined(a, b), {1, 0, 1}, {}));
  second.maps.push_back(MakeMap(kMapTangentBasis, "t", joined(b, c), {1, 0, 1}, {}));
  headless::SceneData scene = MeshScene({first, second});
  SetOption(scene, "tangentsBitangents", 1);
  const Exported exported = Export(std::move(scene));
  EXPECT_EQ(PrimitiveOf(exported.file, 0, 0).Corners("TANGENT"), (Rows{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 1, 0, 1}}));
  // b has index 1, beyond the one basis c of the second mesh; c has index 0.
  EXPECT_EQ(PrimitiveOf(exported.file, 1, 0).Corners("TANGENT"),
            (Rows{{1, 0, 0, 1}, {-1, 0, 0, 1}, {-1, 0, 0, 1}}));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Warning), IsEmpty());
}

TEST(Tangents, OnlyWhenAskedForAndWarnedOfOncePerPrimitive) {
  MeshData mesh = StripMesh(2);
  mesh.maps.push_back(MakeMap(kMapTangentBasis, "t", {1, 0, 0, 0, -1, 0}, {0, 0, 0, 0}, {}));
  EXPECT_FALSE(PrimitiveOf(Export(MeshScene({mesh})).file, 0, 0).Has("TANGENT"));
  headless::SceneData scene = MeshScene({mesh});
  SetOption(scene, "tangentsBitangents", 2);
  const Exported exported = Export(std::move(scene));
  EXPECT_EQ(PrimitiveOf(exported.file, 0, 0).Rows("TANGENT").front(), (std::vector<double>{1, 0, 0, -1}));
  EXPECT_THAT(exported.Texts(LogLine::Kind::Warning),
              ElementsAre("Tangent basis is not orthonormal. External previewers could have unexpected surface "
                          "results."));
}

}  // namespace
