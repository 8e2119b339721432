#include "headless/mesh_access.h"
#include "host/fourcc.h"
#include "host/user_mesh.h"
#include "tests/support/polygon_meshes.h"
#include "tests/support/visitor.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using headless::kNone;
using headless::MeshData;
using test_support::Visitor;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kUntouched = -77;

// The accessors of a mesh; they are gone at the end of the test.
class OpenMesh {
 public:
  explicit OpenMesh(MeshData data) {
    auto shared = std::make_shared<const MeshData>(std::move(data));
    mesh.Take(headless::NewMesh(headless::MakeMeshStore(std::move(shared)), live_));
    EXPECT_EQ(mesh.PointAccessor(point), ZYe_OK);
    EXPECT_EQ(mesh.PolygonAccessor(polygon), ZYe_OK);
    EXPECT_EQ(mesh.MeshMapAccessor(map), ZYe_OK);
    EXPECT_EQ(live_, 4u);
  }
  ~OpenMesh() {
    mesh.Clear();
    point.Clear();
    polygon.Clear();
    map.Clear();
    EXPECT_EQ(live_, 0u);
  }

  // All triangles of a polygon as point ids.
  std::vector<std::array<ZyPointId, 3>> Triangles(std::uint32_t index) const {
    EXPECT_EQ(polygon.SelectByIndex(index), ZYe_OK);
    std::uint32_t count = 99;
    EXPECT_EQ(polygon.TriangleCount(count), ZYe_OK);
    std::vector<std::array<ZyPointId, 3>> triangles;
    for (std::uint32_t triangle = 0; triangle < count; ++triangle) {
      ZyPointId points[3] = {};
      EXPECT_EQ(polygon.TriangleByIndex(triangle, points), ZYe_OK);
      triangles.push_back(std::to_array(points));
    }
    ZyPointId points[3] = {};
    EXPECT_TRUE(ZyFailed(polygon.TriangleByIndex(count, points)));
    return triangles;
  }

 private:
  std::size_t live_ = 0;

 public:
  CZyUser_Mesh mesh;
  CZyUser_Point point;
  CZyUser_Polygon polygon;
  CZyUser_MeshMap map;
};

TEST(MeshAccess, SelectsByIndexAndId) {
  MeshData given = TwoPolygonMesh();
  given.pointIds = std::vector<std::uint64_t>{900, 0, 7, ~std::uint64_t{0}, 7};
  for (const bool explicitIds : {false, true}) {
    SCOPED_TRACE(explicitIds);
    const OpenMesh open(explicitIds ? given : TwoPolygonMesh());
    ZyPointId id = 5;
    std::uint32_t index = 5;
    float position[3] = {kUntouched, 0, 0};
    EXPECT_TRUE(ZyFailed(open.point.Id(id)));
    EXPECT_TRUE(ZyFailed(open.point.Index(index)));
    EXPECT_TRUE(ZyFailed(open.point.Position(position)));
    EXPECT_EQ(std::tuple(id, index, position[0]), std::tuple(5u, 5u, kUntouched));

    for (std::uint32_t point = 0; point < 4; ++point) {
      ASSERT_EQ(open.point.SelectByIndex(point), ZYe_OK);
      EXPECT_EQ(open.point.Id(id), ZYe_OK);
      EXPECT_EQ(id, explicitIds ? given.pointIds[point] : point + 1);
      EXPECT_EQ(open.point.SelectByIndex((point + 1) % 4), ZYe_OK);
      EXPECT_EQ(open.point.SelectById(id), ZYe_OK);
      EXPECT_EQ(open.point.Index(index), ZYe_OK);
      EXPECT_EQ(index, point);
      // What isn't there leaves the accessor where it is.
      EXPECT_TRUE(ZyFailed(open.point.SelectByIndex(5)));
      EXPECT_TRUE(ZyFailed(open.point.SelectById(explicitIds ? 1 : 0)));
      EXPECT_TRUE(ZyFailed(open.point.SelectById(6)));
      EXPECT_EQ(open.point.Position(position), ZYe_OK);
      EXPECT_EQ(position[0], given.points[point * 3]);
      EXPECT_EQ(position[1], given.points[point * 3 + 1]);
    }
    EXPECT_TRUE(ZyFailed(open.polygon.Id(id)));
    for (std::uint32_t polygon = 0; polygon < 2; ++polygon) {
      ASSERT_EQ(open.polygon.SelectById(polygon + 1), ZYe_OK);
      for (const ZyPolygonId unknown : {ZyPolygonId{0}, ZyPolygonId{3}, ZyPolygonId{1} << 32}) {
        EXPECT_TRUE(ZyFailed(open.polygon.SelectById(unknown)));
      }
      EXPECT_TRUE(ZyFailed(open.polygon.SelectByIndex(2)));
      EXPECT_EQ(open.polygon.Id(id), ZYe_OK);
      EXPECT_EQ(id, polygon + 1);
    }
  }
}

TEST(MeshAccess, TagsAndTriangles) {
  MeshData mesh = TwoPolygonMesh();
  {
    const OpenMesh open(mesh);
    EXPECT_EQ(open.polygon.GetTag(kTagMaterial), nullptr);
    EXPECT_THAT(open.Triangles(0), ElementsAre(ElementsAre(1, 2, 3), ElementsAre(1, 3, 4)));
    EXPECT_STREQ(open.polygon.GetTag(kTagMaterial), "Blue");
    EXPECT_EQ(open.polygon.GetTag(kTagPart), nullptr);
    EXPECT_THAT(open.Triangles(1), ElementsAre(ElementsAre(3, 2, 5)));
    EXPECT_EQ(open.polygon.GetTag(kTagMaterial), nullptr);
  }
  mesh.pointIds = std::vector<std::uint64_t>{10, 20, 30, 40, 50};
  mesh.triangleStarts = std::vector<std::uint32_t>{0, 3, 3};
  mesh.trianglePoints = std::vector<std::uint32_t>{1, 3, 0, 3, 1, 2, 0, 0, 0};
  const OpenMesh open(mesh);
  EXPECT_THAT(open.Triangles(0),
              ElementsAre(ElementsAre(20, 40, 10), ElementsAre(40, 20, 30), ElementsAre(10, 10, 10)));
  EXPECT_THAT(open.Triangles(1), IsEmpty());
}

TEST(MeshAccess, TrianglesOfEveryCornerCount) {
  const OpenMesh open(MeshOf({{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {1, 1, 0}, {1, 4, 0}, {0, 4, 0}},
                             {{}, {0}, {0, 1}, {0, 1, 2}, {3, 4, 5, 0, 1, 2}, {5, 0, 2, 3}, {0, 1, 2, 3, 4}}));
  for (const std::uint32_t small : {0u, 1u, 2u}) EXPECT_THAT(open.Triangles(small), IsEmpty());
  EXPECT_THAT(open.Triangles(3), ElementsAre(ElementsAre(1, 2, 3)));
  EXPECT_EQ(open.Triangles(4).size(), 4u);
  EXPECT_THAT(open.Triangles(5), ElementsAre(ElementsAre(6, 1, 4), ElementsAre(1, 3, 4)));
  EXPECT_EQ(open.Triangles(6).size(), 3u);
}

TEST(MeshAccess, MapValuesWithGaps) {
  const OpenMesh open(TwoPolygonMesh());
  constexpr ZyMeshMapId kBoth = 1, kPoints = 2, kCorners = 3, kEmpty = 4;
  struct Case {
    std::uint32_t polygon;
    ZyMeshMapId map;
    ZyPointId point;
    zyresult evaluated, own, ofPoint;
    float value, ownValue;
  };
  const zyresult none = ZYe_NO_VALUE;
  const Case cases[] = {
      {0, kBoth, 1, ZYe_OK, none, ZYe_OK, 1, kUntouched},  // only the point's
      {0, kBoth, 2, ZYe_OK, ZYe_OK, ZYe_OK, 5, 5},         // the corner's before the point's
      {0, kBoth, 3, ZYe_OK, ZYe_OK, none, 5, 5},           // only the corner's
      {0, kBoth, 4, none, none, none, kUntouched, kUntouched},
      {1, kBoth, 2, ZYe_OK, ZYe_OK, ZYe_OK, 1, 1},
      {1, kBoth, 3, none, none, none, kUntouched, kUntouched},
      {1, kPoints, 5, ZYe_OK, none, ZYe_OK, 0.5f, kUntouched},
      {1, kPoints, 3, none, none, none, kUntouched, kUntouched},
      {0, kCorners, 2, ZYe_OK, ZYe_OK, none, 7, 7},
      {1, kCorners, 2, none, none, none, kUntouched, kUntouched},
      {0, kEmpty, 1, none, none, none, kUntouched, kUntouched},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::Message() << "polygon " << test.polygon << " map " << test.map << " point "
                                    << test.point);
    ASSERT_EQ(open.polygon.SelectByIndex(test.polygon), ZYe_OK);
    ASSERT_EQ(open.point.SelectById(test.point), ZYe_OK);
    float value[3] = {kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(open.polygon.MapEvaluate(test.map, test.point, value), test.evaluated);
    EXPECT_EQ(value[0], test.value);
    EXPECT_EQ(value[2], kUntouched) << "wrote past the map's dimension";
    value[0] = kUntouched;
    EXPECT_EQ(open.polygon.MapValue(test.map, test.point, value), test.own);
    EXPECT_EQ(value[0], test.ownValue);
    EXPECT_EQ(open.point.MapValue(test.map, value), test.ofPoint);
  }
  float value[2] = {kUntouched, kUntouched};
  for (const ZyMeshMapId unknown : {ZyMeshMapId{0}, ZyMeshMapId{5}}) {
    EXPECT_TRUE(ZyFailed(open.polygon.MapEvaluate(unknown, 2, value)));
    EXPECT_TRUE(ZyFailed(open.polygon.MapValue(unknown, 2, value)));
    EXPECT_TRUE(ZyFailed(open.point.MapValue(unknown, value)));
  }
  for (const ZyPointId foreign : {ZyPointId{5}, ZyPointId{6}, ZyPointId{0}}) {
    EXPECT_NE(open.polygon.MapEvaluate(kBoth, foreign, value), ZYe_OK) << foreign;
  }
  EXPECT_EQ(value[0], kUntouched);
}

// All that a map says at a corner: the evaluated floats, the result, and whether the corner or its point holds a
// value.
std::vector<float> AnswersAt(const OpenMesh& open, ZyMeshMapId map, ZyPointId point) {
  std::vector<float> answers(8, kUntouched);
  float stored[6];
  open.point.SelectById(point);
  answers[6] = static_cast<float>(open.polygon.MapEvaluate(map, point, answers.data()));
  const bool isStored = open.polygon.MapValue(map, point, stored) != ZYe_NO_VALUE ||
                        open.point.MapValue(map, stored) != ZYe_NO_VALUE;
  answers[7] = isStored ? 1 : 0;
  return answers;
}

// Equal keys at corners of a point mean equal answers. Gives how often a key came again.
std::size_t CountSharedKeys(const MeshData& data) {
  const OpenMesh open(data);
  CZyUser_ValueKeys keys;
  EXPECT_TRUE(keys.Set(open.polygon.Raw()));
  const std::vector<ZyMeshMapId> maps = {1, 2, data.maps.size() + 1, 3};
  std::map<std::tuple<std::size_t, ZyPointId, std::uint32_t>, std::vector<float>> known;
  std::size_t shared = 0;
  for (std::uint32_t polygon = 0; polygon < data.PolygonCount(); ++polygon) {
    const auto triangles = open.Triangles(polygon);
    for (std::size_t triangle = 0; triangle < triangles.size(); ++triangle) {
      ZyPointId points[3];
      std::uint32_t found[12];
      EXPECT_EQ(keys.TriangleKeys(static_cast<std::uint32_t>(triangle), maps.data(), 4, points, found), ZYe_OK);
      EXPECT_TRUE(std::equal(points, points + 3, std::begin(triangles[triangle])));
      for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t m = 0; m < 4; ++m) {
          if (found[4 * c + m] == IZyValueKeys::kNoKey) continue;
          const std::vector<float> answers = AnswersAt(open, maps[m], points[c]);
          const auto entry = known.try_emplace({m, points[c], found[4 * c + m]}, answers);
          shared += entry.second ? 0 : 1;
          EXPECT_EQ(answers[6], static_cast<float>(ZYe_OK));
          EXPECT_EQ(answers[7], 1);
          EXPECT_EQ(entry.first->second, answers) << "polygon " << polygon << ", map " << m << ", corner " << c;
        }
    }
    ZyPointId noPoints[3] = {7};
    std::uint32_t untouched[12] = {7};
    EXPECT_TRUE(ZyFailed(keys.TriangleKeys(999, maps.data(), 4, noPoints, untouched)));
    EXPECT_EQ(noPoints[0], 7u);
    EXPECT_EQ(untouched[0], 7u);
  }
  return shared;
}

TEST(MeshAccess, EqualKeysMeanEqualValues) {
  MeshData mesh = TwoPolygonMesh();
  EXPECT_GT(CountSharedKeys(mesh), 0u);
  mesh.pointIds = std::vector<std::uint64_t>{9, 7, 30, 31, 8};
  EXPECT_GT(CountSharedKeys(mesh), 0u);
  mesh.pointIds = std::vector<std::uint64_t>{9, 7, 30, 9, 8};
  const OpenMesh open(mesh);
  open.polygon.SelectByIndex(0);
  CZyUser_ValueKeys keys;
  keys.Set(open.polygon.Raw());
  ZyPointId points[3];
  std::uint32_t key = 0;
  const ZyMeshMapId map = 1;
  EXPECT_TRUE(ZyFailed(keys.TriangleKeys(0, &map, 1, points, &key)))
      << "values are those of the first point of an id";
  // A second corner at a polygon's point is never asked for, so its value is that of the first.
  MeshData repeated = MeshOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{0, 0, 1}, {1, 0, 0}, {2, 0, 2, 1}});
  repeated.maps = {{kMapWeight, "corners", 1, std::vector<float>{1, 2, 3, 4}, std::vector<std::uint32_t>{0, 1, 2},
                    std::vector<std::uint32_t>{0, 1, 2, 2, 1, 0, 3, kNone, kNone, 2}}};
  EXPECT_GT(CountSharedKeys(repeated), 0u);
}

// Three polygons of many corners that share points, one of them with a slit, asked in turns.
TEST(MeshAccess, CornersOfHugePolygons) {
  constexpr std::uint32_t kCount = 3000;
  MeshPoints points;
  std::vector<std::uint32_t> up, down;
  for (std::uint32_t point = 0; point < kCount; ++point) {
    const double turn = point * 6.283185307179586 / kCount;
    points.push_back({static_cast<float>(std::cos(turn)), static_cast<float>(std::sin(turn)), 0});
    up.push_back(point);
    down.push_back(kCount - 1 - point);
  }
  std::vector<std::uint32_t> slit = up;
  slit.insert(slit.end(), {0, 1, 2});
  const MeshPolygons polygons = {up, down, {0, 1, 2}, slit};
  MeshData mesh = MeshOf(points, polygons);
  std::vector<float> values;
  std::vector<std::uint32_t> cornerValues;
  std::vector<double> normals;
  for (std::uint32_t corner = 0; corner < mesh.polygonPoints.size(); ++corner) {
    values.push_back(static_cast<float>(corner));
    cornerValues.push_back(corner);
    normals.insert(normals.end(), {corner + 0.25, 0, -1.0});
  }
  mesh.maps = {{FourCC("TEST"), "number of the corner", 1, values, {}, cornerValues}};
  mesh.cornerNormals = normals;
  const OpenMesh open(mesh);
  for (std::uint32_t point = 0; point < kCount; point += 17) {
    const std::uint32_t wanted[] = {point, 2 * kCount - 1 - point, 2 * kCount + point, 2 * kCount + 3 + point};
    for (const std::uint32_t polygon : {0u, 1u, 2u, 3u, 1u, 3u, 0u}) {
      if (polygon == 2 && point > 2) continue;
      ASSERT_EQ(open.polygon.SelectByIndex(polygon), ZYe_OK);
      ASSERT_EQ(open.point.SelectByIndex(point), ZYe_OK);
      float value = kUntouched;
      EXPECT_EQ(open.polygon.MapEvaluate(1, point + 1, &value), ZYe_OK);
      EXPECT_EQ(value, static_cast<float>(wanted[polygon])) << "polygon " << polygon;
      double normal[3] = {};
      EXPECT_EQ(open.point.Normal(polygon + 1, normal), ZYe_OK);
      EXPECT_EQ(normal[0], wanted[polygon] + 0.25) << "polygon " << polygon;
      EXPECT_EQ(normal[2], -1);
    }
  }
}

TEST(MeshAccess, CalculatedNormals) {
  const OpenMesh open(CubeMesh());
  double normal[3] = {kUntouched, 0, 0};
  EXPECT_TRUE(ZyFailed(open.point.Normal(1, normal))) << "on no point";
  ASSERT_EQ(open.point.SelectByIndex(6), ZYe_OK);
  EXPECT_TRUE(ZyFailed(open.point.Normal(0, normal)));
  EXPECT_TRUE(ZyFailed(open.point.Normal(7, normal)));
  EXPECT_TRUE(ZyFailed(open.point.Normal(1, normal))) << "the point isn't on the polygon";
  EXPECT_EQ(normal[0], kUntouched);
  EXPECT_EQ(open.point.Normal(4, normal), ZYe_OK);
  EXPECT_THAT(normal, ElementsAre(1, 0, 0));
  EXPECT_EQ(open.point.Normal(2, normal), ZYe_OK);
  EXPECT_THAT(normal, ElementsAre(0, 0, 1));
}

TEST(MeshAccess, WalksMaps) {
  const OpenMesh open(TwoPolygonMesh());
  std::vector<std::string> names;
  Visitor note([&] {
    const char* name = nullptr;
    EXPECT_EQ(open.map.Name(name), ZYe_OK);
    names.push_back(name);
    return ZYe_OK;
  });
  const auto walk = [&](std::uint32_t type) {
    names.clear();
    EXPECT_EQ(open.map.FilterByType(type), ZYe_OK);
    EXPECT_EQ(open.map.Enumerate(note), ZYe_OK);
    return names;
  };
  const auto current = [&] {
    ZyMeshMapId id = 0;
    EXPECT_EQ(open.map.Id(id), ZYe_OK);
    return id;
  };
  const char* name = nullptr;
  ZyMeshMapId id = 0;
  EXPECT_TRUE(ZyFailed(open.map.Name(name)));
  EXPECT_TRUE(ZyFailed(open.map.Id(id)));
  EXPECT_THAT(walk(kMapUv), ElementsAre("both", "corners"));
  EXPECT_EQ(current(), 3u);
  EXPECT_THAT(walk(kMapNormal), IsEmpty());
  EXPECT_EQ(current(), 3u) << "a walk without visits moves nothing";
  EXPECT_THAT(walk(kMapWeight), ElementsAre("points", "empty"));
  EXPECT_EQ(current(), 4u);

  int visits = 0;
  Visitor refuse([&] { return ++visits == 1 ? ZYe_NO_VALUE : ZYe_ABORTED; });
  EXPECT_THAT(walk(0), ElementsAre("both", "points", "corners", "empty"));
  EXPECT_EQ(open.map.Enumerate(refuse), ZYe_ABORTED);
  EXPECT_EQ(visits, 2) << "only a failure ends the walk";
  EXPECT_EQ(current(), 2u);

  EXPECT_EQ(open.map.SelectByName(kMapUv, "corners"), ZYe_OK);
  EXPECT_EQ(current(), 3u);
  EXPECT_TRUE(ZyFailed(open.map.SelectByName(kMapWeight, "corners")));
  EXPECT_TRUE(ZyFailed(open.map.Id(id))) << "still on another map";
}

TEST(MeshAccess, WalksThePointsOfAMap) {
  const OpenMesh open(TwoPolygonMesh());
  std::vector<std::pair<std::uint32_t, float>> seen;
  ZyMeshMapId map = 0;
  Visitor note([&] {
    std::uint32_t index = kNone;
    float value[2] = {kUntouched, kUntouched};
    EXPECT_EQ(open.point.Index(index), ZYe_OK);
    EXPECT_EQ(open.point.MapValue(map, value), ZYe_OK);
    seen.push_back({index, value[0]});
    return ZYe_OK;
  });
  EXPECT_TRUE(ZyFailed(open.map.EnumerateContents(note, open.point)));
  EXPECT_THAT(seen, IsEmpty());
  const auto contents = [&](std::uint32_t type, const char* name) {
    seen.clear();
    EXPECT_EQ(open.map.SelectByName(type, name), ZYe_OK);
    EXPECT_EQ(open.map.Id(map), ZYe_OK);
    EXPECT_EQ(open.map.EnumerateContents(note, open.point), ZYe_OK);
    return seen;
  };
  EXPECT_THAT(contents(kMapWeight, "points"), ElementsAre(std::pair(1u, 0.25f), std::pair(4u, 0.5f)));
  EXPECT_THAT(contents(kMapUv, "both"), ElementsAre(std::pair(0u, 1.0f), std::pair(1u, 3.0f)));
  EXPECT_THAT(contents(kMapUv, "corners"), IsEmpty());

  EXPECT_EQ(open.map.SelectByName(kMapWeight, "points"), ZYe_OK);
  int visits = 0;
  Visitor refuse([&] { return ++visits, ZYe_FAILED; });
  EXPECT_EQ(open.map.EnumerateContents(refuse, open.point), ZYe_FAILED);
  EXPECT_EQ(visits, 1);
  EXPECT_TRUE(ZyFailed(open.map.EnumerateContents(note, CZyUser_Point())));
}

}  // namespace
