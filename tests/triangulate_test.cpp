#include "headless/triangulate.h"

#include "headless/polygon_area.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using headless::AreaVector;
using headless::Dot;
using headless::Triangulator;
using headless::Vector3;
using testing::ElementsAre;

struct Polygon {
  std::string name;
  std::vector<std::array<int, 2>> points;
  std::vector<std::uint32_t> corners;  // empty: the points in order
};

// Corners of a band that winds inwards, `turns` times around.
Polygon SquareSpiral(int turns) {
  Polygon spiral = {"spiral of " + std::to_string(turns), {}, {}};
  std::vector<std::array<int, 2>> inner;
  for (int turn = 0; turn < turns; ++turn) {
    const int low = 2 * turn;
    const int high = 4 * turns - 2 * turn;
    for (const auto& corner : {std::array{turn > 0 ? low - 2 : 0, low}, std::array{high, low},
                               std::array{high, high}, std::array{low, high}}) {
      spiral.points.push_back(corner);
    }
    inner.push_back({turn > 0 ? low - 1 : 0, low + 1});
    inner.push_back({high - 1, low + 1});
    inner.push_back({high - 1, high - 1});
    inner.push_back({low + 1, high - 1});
  }
  spiral.points.insert(spiral.points.end(), inner.rbegin(), inner.rend());
  return spiral;
}

Polygon Comb(int teeth) {
  Polygon comb = {"comb of " + std::to_string(teeth), {{2 * teeth, 0}}, {}};
  for (int tooth = teeth; tooth-- > 0;) {
    comb.points.push_back({2 * tooth + 2, 9 + tooth % 3});
    comb.points.push_back({2 * tooth + 1, 1});
  }
  comb.points.push_back({0, 12});
  comb.points.push_back({0, 0});
  return comb;
}

std::vector<Polygon> Corpus() {
  return {
      {"pentagon", {{0, 0}, {4, 0}, {6, 3}, {3, 6}, {-1, 3}}, {}},
      {"L", {{0, 0}, {4, 0}, {4, 1}, {1, 1}, {1, 4}, {0, 4}}, {}},
      {"arrow", {{0, 0}, {8, -8}, {4, 0}, {8, 8}, {-4, 0}}, {}},
      {"star", {{0, 10}, {-2, 3}, {-10, 3}, {-4, -2}, {-6, -9}, {0, -5}, {6, -9}, {4, -2}, {10, 3}, {2, 3}}, {}},
      {"plus",
       {{1, 0}, {2, 0}, {2, 1}, {3, 1}, {3, 2}, {2, 2}, {2, 3}, {1, 3}, {1, 2}, {0, 2}, {0, 1}, {1, 1}},
       {}},
      {"collinear runs", {{0, 0}, {1, 0}, {2, 0}, {5, 0}, {5, 1}, {5, 4}, {4, 4}, {2, 4}, {0, 4}, {0, 3}}, {}},
      {"collinear notch", {{0, 0}, {6, 0}, {6, 4}, {4, 4}, {4, 2}, {3, 2}, {2, 2}, {2, 4}, {0, 4}}, {}},
      {"keyhole",
       {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {3, 3}, {3, 6}, {6, 6}, {6, 3}},
       {0, 1, 2, 3, 0, 4, 5, 6, 7, 4}},
      {"keyhole of doubled points",
       {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}, {3, 3}, {3, 6}, {6, 6}, {6, 3}, {3, 3}},
       {}},
      {"two keyholes of one corner",
       {{0, 0}, {12, 0}, {12, 9}, {0, 9}, {2, 2}, {2, 4}, {4, 4}, {8, 2}, {7, 4}, {10, 3}},
       {0, 1, 2, 3, 0, 4, 5, 6, 4, 0, 7, 8, 9, 7}},
      {"keyholes in a chain",
       {{0, 0}, {12, 0}, {12, 9}, {0, 9}, {2, 2}, {2, 4}, {4, 4}, {8, 2}, {7, 4}, {10, 3}},
       {0, 1, 2, 3, 0, 4, 5, 6, 7, 8, 9, 7, 6, 4}},
      {"slit", {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {4, 4}}, {0, 1, 2, 3, 0, 4}},
      SquareSpiral(2),
      SquareSpiral(40),
      Comb(7),
      Comb(300),
  };
}

// Planes that all three axes are dropped from, in both directions; whole numbers stay whole. Each row is a
// coordinate: the factors of u and v, and a constant.
using Plane = std::array<std::array<int, 3>, 3>;
constexpr Plane kPlanes[] = {
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 7}}},  {{{0, 1, 0}, {1, 0, 0}, {1, 2, 0}}},
    {{{3, -1, 0}, {1, 0, 0}, {0, 1, 0}}}, {{{1, 0, 0}, {2, -5, 0}, {0, 1, 0}}},
    {{{0, 1, 0}, {2, 5, 0}, {1, 0, 0}}},
};

// How often each edge is passed forwards, less how often backwards.
using Chain = std::map<std::pair<std::uint32_t, std::uint32_t>, int>;

void AddEdge(Chain& chain, std::uint32_t from, std::uint32_t to) {
  const int step = from < to ? 1 : -1;
  const auto place = chain.try_emplace(std::minmax(from, to), 0).first;
  place->second += step;
  if (place->second == 0) chain.erase(place);
}

std::vector<float> PlacePoints(const Polygon& polygon, const Plane& plane) {
  std::vector<float> points;
  for (const auto& [u, v] : polygon.points) {
    for (const auto& [ofU, ofV, constant] : plane)
      points.push_back(static_cast<float>(ofU * u + ofV * v + constant));
  }
  return points;
}

std::vector<std::uint32_t> CornersOf(const Polygon& polygon) {
  std::vector<std::uint32_t> corners = polygon.corners;
  for (std::uint32_t point = 0; polygon.corners.empty() && point < polygon.points.size(); ++point) {
    corners.push_back(point);
  }
  return corners;
}

// All triangles turn the polygon's way and have its area together.
void ExpectCovers(const std::vector<float>& points, const std::vector<std::uint32_t>& corners,
                  const std::vector<std::uint32_t>& triangles) {
  const Vector3 normal = AreaVector(points.data(), corners);
  double covered = 0;
  for (std::size_t begin = 0; begin < triangles.size(); begin += 3) {
    const double area = Dot(AreaVector(points.data(), std::span(&triangles[begin], 3)), normal);
    EXPECT_GE(area, 0) << "triangle " << begin / 3;
    covered += area;
  }
  EXPECT_NEAR(covered, Dot(normal, normal), 1e-9 * Dot(normal, normal));
}

// As their edges add up to the outline, too, they cover the polygon exactly once.
void ExpectDivides(const std::vector<float>& points, const std::vector<std::uint32_t>& corners,
                   const std::vector<std::uint32_t>& triangles) {
  ASSERT_EQ(triangles.size(), (corners.size() - 2) * 3);
  ExpectCovers(points, corners, triangles);
  Chain outline;
  for (std::size_t corner = 0; corner < corners.size(); ++corner) {
    AddEdge(outline, corners[corner], corners[(corner + 1) % corners.size()]);
  }
  Chain edges;
  for (std::size_t place = 0; place < triangles.size(); ++place) {
    AddEdge(edges, triangles[place], triangles[place % 3 == 2 ? place - 2 : place + 1]);
  }
  EXPECT_EQ(edges, outline);
}

class TriangulateCorpus : public testing::TestWithParam<Polygon> {};

TEST_P(TriangulateCorpus, EveryTurnAndPlane) {
  const Polygon& polygon = GetParam();
  const std::vector<std::uint32_t> corners = CornersOf(polygon);
  const std::size_t step = std::max<std::size_t>(1, corners.size() / 16);
  Triangulator triangulator;
  for (const Plane& plane : kPlanes) {
    const std::vector<float> points = PlacePoints(polygon, plane);
    for (std::size_t turn = 0; turn < corners.size(); turn += step) {
      std::vector<std::uint32_t> turned = corners;
      std::rotate(turned.begin(), turned.begin() + static_cast<std::ptrdiff_t>(turn), turned.end());
      for (int direction = 0; direction < 2; ++direction) {
        SCOPED_TRACE("plane " + std::to_string(&plane - kPlanes) + " turn " + std::to_string(turn));
        std::vector<std::uint32_t> triangles;
        triangulator.Append(points.data(), turned, triangles);
        ASSERT_NO_FATAL_FAILURE(ExpectDivides(points, turned, triangles));
        if (HasFailure()) return;
        std::reverse(turned.begin(), turned.end());
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Polygons, TriangulateCorpus, testing::ValuesIn(Corpus()), [](const auto& test) {
  std::string name = test.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
  return name;
});

// A corner that lies on another edge must stay on it in any plane, else the polygon seems to cross itself.
TEST(Triangulate, CornersOnEdges) {
  const Polygon polygons[] = {
      {"tooth", {{0, 0}, {6, 0}, {6, 6}, {3, 0}, {0, 6}}, {}},
      {"teeth", {{0, 0}, {7, 21}, {4, 22}, {3, 9}, {-3, 20}, {2, 6}, {-9, 18}, {1, 3}, {-9, 6}}, {}},
      {"hole at an edge", {{0, 0}, {9, 6}, {0, 9}, {3, 2}, {3, 4}, {4, 4}}, {0, 1, 2, 0, 3, 4, 5, 3}},
  };
  for (const Polygon& polygon : polygons) {
    for (const Plane& plane : kPlanes) {
      SCOPED_TRACE(polygon.name + ", plane " + std::to_string(&plane - kPlanes));
      const std::vector<float> points = PlacePoints(polygon, plane);
      const std::vector<std::uint32_t> corners = CornersOf(polygon);
      std::vector<std::uint32_t> triangles;
      Triangulator().Append(points.data(), corners, triangles);
      ExpectCovers(points, corners, triangles);
    }
  }
}

TEST(Triangulate, WithoutAreaOrCrossingItselfIsAFan) {
  const std::pair<const char*, std::vector<float>> cases[] = {
      {"one place", {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}},
      {"one line", {0, 0, 0, 1, 1, 2, 2, 2, 4, 3, 3, 6, -1, -1, -2}},
      {"pentagram", {0, 10, 0, -6, -8, 0, 10, 3, 0, -10, 3, 0, 6, -8, 0}},
      {"two loops against each other", {0, 0, 0, 4, 0, 0, 1, 4, 0, 2, -3, 0, 6, 6, 0}},
  };
  for (const auto& [name, points] : cases) {
    SCOPED_TRACE(name);
    std::vector<std::uint32_t> triangles = {77};
    Triangulator().Append(points.data(), std::vector<std::uint32_t>{0, 1, 2, 3, 4}, triangles);
    EXPECT_THAT(triangles, ElementsAre(77, 0, 1, 2, 0, 2, 3, 0, 3, 4));
  }
}

// Most pairs of its edges cross; meeting all of the crossings would take minutes.
TEST(Triangulate, ATangleIsAFanAtOnce) {
  constexpr std::uint32_t kCorners = 6000;
  std::vector<float> points;
  std::vector<std::uint32_t> corners;
  for (std::uint32_t corner = 0; corner < kCorners; ++corner) {
    points.insert(points.end(),
                  {static_cast<float>(corner * 7919 % 6007), static_cast<float>(corner * 104729 % 6011), 0});
    corners.push_back(corner);
  }
  std::vector<std::uint32_t> triangles;
  Triangulator().Append(points.data(), corners, triangles);
  ASSERT_EQ(triangles.size(), 3 * (kCorners - 2));
  for (std::uint32_t place = 0; place < triangles.size(); place += 3) EXPECT_EQ(triangles[place], 0u);
}

TEST(Triangulate, SplitsQuads) {
  const std::array<std::uint32_t, 3> from0 = {0, 1, 2};
  const std::array<std::uint32_t, 3> from1 = {0, 1, 3};
  struct Case {
    const char* name;
    std::array<std::array<float, 2>, 4> corners;
    std::array<std::uint32_t, 3> first;
  };
  const Case cases[] = {
      {"square", {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}}, from0},
      {"shorter from 0", {{{0, 0}, {1, -3}, {2, 0}, {1, 3}}}, from0},
      {"shorter from 1", {{{0, 0}, {3, 1}, {4, 4}, {1, 3}}}, from1},
      {"concave at 0, longer diagonal", {{{1, 0}, {-9, -3}, {12, 0}, {-9, 3}}}, from0},
      {"concave at 1, longer diagonal", {{{-9, 3}, {1, 0}, {-9, -3}, {12, 0}}}, from1},
      {"concave at 2, longer diagonal", {{{12, 0}, {-9, 3}, {1, 0}, {-9, -3}}}, from0},
      {"concave at 3, longer diagonal", {{{-9, -3}, {12, 0}, {-9, 3}, {1, 0}}}, from1},
      {"straight at 1", {{{0, 0}, {2, 0}, {4, 0}, {2, 9}}}, from1},
      {"straight at 2", {{{9, 2}, {0, 4}, {0, 2}, {0, 0}}}, from0},
      {"no area", {{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}, from0},
  };
  const std::uint32_t corners[] = {0, 1, 2, 3};
  for (const Case& test : cases) {
    std::vector<float> points;
    for (const auto& [x, y] : test.corners) points.insert(points.end(), {x, y, x});
    const auto& split = headless::SplitQuad(points.data(), corners);
    EXPECT_EQ(std::to_array(split[0]), test.first) << test.name;
    EXPECT_EQ(std::to_array(split[1]), (test.first == from0 ? std::array{0u, 2u, 3u} : std::array{1u, 2u, 3u}))
        << test.name;
  }
}

}  // namespace
