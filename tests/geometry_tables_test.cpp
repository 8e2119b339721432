// The tables that fold corners into distinct values and vertices, against plain models of the same rules.
#include "geometry/point_index_table.h"
#include "geometry/tangent_basis.h"
#include "geometry/tangent_table.h"
#include "geometry/value_table.h"
#include "geometry/vertex_fold.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <unordered_set>

namespace {

TEST(ValueTable, FoldsByEquality) {
  ValueTable<double, 3> table;
  std::vector<std::array<double, 3>> data;
  EXPECT_EQ(table.Fold({-0.0, 1, 2}, data), 0u);
  EXPECT_EQ(table.Fold({0.0, 1, 2}, data), 0u);  // equal to -0.0, and the first one stays
  EXPECT_TRUE(std::signbit(data[0][0]));
  EXPECT_EQ(table.Fold({std::nextafter(0.0, 1.0), 1, 2}, data), 1u);  // no tolerance
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(table.Fold({nan, 0, 0}, data), 2u);
  EXPECT_EQ(table.Fold({nan, 0, 0}, data), 3u);
  for (int i = 0; i < 1000; ++i)
    EXPECT_EQ(table.Fold({i + 10.0, i * 0.5, -i + 0.0}, data), 4u + static_cast<unsigned>(i));
  for (int i = 0; i < 1000; ++i)
    EXPECT_EQ(table.Fold({i + 10.0, i * 0.5, -i + 0.0}, data), 4u + static_cast<unsigned>(i));
}

TEST(PointIndexTable, FirstPlaceOfAnIdStays) {
  const std::vector<std::vector<ZyPointId>> sequences = {{1, 2, 3, 4},         {7, 8, 9}, {1, 2, 2, 3, 4},
                                                         {1, 2, 2, 4, 5, 3},   {5, 5, 6}, {9, 4, 9, 10, 1},
                                                         {~ZyPointId{0}, 0, 1}};
  for (const std::vector<ZyPointId>& ids : sequences) {
    PointIndexTable table;
    std::map<ZyPointId, std::uint32_t> model;
    for (std::uint32_t place = 0; place < ids.size(); ++place) {
      table.Add(ids[place], place);
      model.try_emplace(ids[place], place);
    }
    for (ZyPointId id = 0; id < 12; ++id) {
      const auto expected = model.find(id);
      EXPECT_EQ(table.Find(id), expected == model.end() ? std::nullopt : std::optional(expected->second)) << id;
    }
    EXPECT_EQ(table.Find(ids.front()), 0u);
  }
}

struct RandomCorners {
  std::vector<std::vector<std::uint32_t>> streams;  // the points, then the attributes
  std::size_t pointCount;

  CornerTables Tables() const {
    CornerTables tables{streams[0], pointCount, {}};
    for (std::size_t i = 1; i < streams.size(); ++i) tables.attributes.push_back(streams[i]);
    return tables;
  }
  std::vector<std::uint32_t> Key(std::uint32_t corner) const {
    std::vector<std::uint32_t> key;
    for (const auto& stream : streams) key.push_back(stream[corner]);
    return key;
  }
};

RandomCorners MakeCorners(std::mt19937& random, std::size_t triangles, std::uint32_t points, std::uint32_t values,
                          std::size_t attributes) {
  RandomCorners corners{std::vector<std::vector<std::uint32_t>>(attributes + 1), points};
  for (std::size_t stream = 0; stream <= attributes; ++stream)
    for (std::size_t corner = 0; corner < 3 * triangles; ++corner)
      corners.streams[stream].push_back(static_cast<std::uint32_t>(random() % (stream == 0 ? points : values)));
  return corners;
}

// Vertices are numbered by first sight, two corners are one vertex exactly when all their entries are equal,
// and the list has the triangles' corners in order.
void ExpectFolded(const RandomCorners& corners, const std::vector<std::uint32_t>& triangles) {
  const VertexFold fold = FoldCorners(triangles, corners.Tables());
  std::map<std::vector<std::uint32_t>, std::uint32_t> model;
  std::size_t place = 0;
  ASSERT_EQ(fold.indices.size(), 3 * triangles.size());
  for (const std::uint32_t triangle : triangles)
    for (std::uint32_t c = 0; c < 3; ++c) {
      const auto vertex =
          model.try_emplace(corners.Key(3 * triangle + c), static_cast<std::uint32_t>(model.size()));
      ASSERT_EQ(fold.indices[place++], vertex.first->second);
      if (vertex.second) {
        ASSERT_EQ(fold.corners[vertex.first->second], 3 * triangle + c);
      }
    }
  EXPECT_EQ(fold.corners.size(), model.size());
}

TEST(VertexFold, MatchesAPlainModel) {
  std::mt19937 random(7);
  struct Case {
    std::size_t triangles;
    std::uint32_t points, values;
    std::size_t attributes;
  };
  // Many corners a point (the long lists), few (the short ones), a few corners of a large mesh (no full table).
  const Case cases[] = {
      {300, 40, 3, 1}, {2000, 3, 500, 2}, {2000, 1, 100000, 1}, {500, 100000, 2, 4}, {1, 3, 1, 0}};
  for (const Case& c : cases) {
    const RandomCorners corners = MakeCorners(random, c.triangles, c.points, c.values, c.attributes);
    std::vector<std::uint32_t> all, some;
    for (std::uint32_t t = 0; t < c.triangles; ++t) {
      all.push_back(t);
      if (random() % 3 == 0) some.push_back(t);
    }
    ExpectFolded(corners, all);
    ExpectFolded(corners, some);
  }
}

TEST(VertexFold, LeavesOutTrianglesBeyondTheTables) {
  const RandomCorners corners{{{0, 1, 2, 0, 1}, {0, 0, 0, 0, 0, 0}}, 3};
  const std::uint32_t triangles[] = {1, 0, 4000000000u};
  const VertexFold fold = FoldCorners(triangles, corners.Tables());
  EXPECT_EQ(fold.indices, (std::vector<std::uint32_t>{0, 1, 2}));
}

// The tangent table as its description has it: a list of entries, and the bucket of each worked out anew.
class TangentModel {
 public:
  std::uint32_t Fold(const TangentBasis& basis, std::uint32_t nextIndex) {
    for (const auto& [known, index] : entries_)
      if (Hash(known) % buckets_ == Hash(basis) % buckets_ && known[0] == basis[0] && known[1] == basis[1] &&
          known[2] == basis[2] && known[3] == basis[3])
        return index;
    if (entries_.size() + 1 > buckets_) buckets_ *= buckets_ < 512 ? 8 : 2;
    entries_.emplace_back(basis, nextIndex);
    return nextIndex;
  }

 private:
  static std::uint64_t Hash(const TangentBasis& basis) {
    std::uint64_t hash = 0x811C9DC5;
    for (const float number : basis) {
      unsigned char bytes[4];
      std::memcpy(bytes, &number, 4);
      for (const unsigned char byte : bytes) hash = (hash * 16777619) ^ byte;
    }
    return hash;
  }

  std::vector<std::pair<TangentBasis, std::uint32_t>> entries_;
  std::uint64_t buckets_ = 8;
};

TEST(TangentTable, ComparesFourFloatsWithinABucket) {
  std::mt19937 random(3);
  TangentTable table;
  TangentModel model;
  std::vector<TangentBasis> data;
  std::size_t foldedApart = 0;
  for (int i = 0; i < 4000; ++i) {
    // The first four floats repeat often, the last two seldom.
    const float a = static_cast<float>(random() % 40), b = static_cast<float>(random() % 3);
    const TangentBasis basis = {a, b, 0, 1, static_cast<float>(random() % 7), static_cast<float>(random() % 7)};
    const auto next = static_cast<std::uint32_t>(data.size());
    const std::uint32_t expected = model.Fold(basis, next);
    ASSERT_EQ(table.Fold(basis, data), expected) << i;
    foldedApart += expected != next && data[expected] != basis;
  }
  EXPECT_GT(foldedApart, 0u);    // the oddity came into play
  EXPECT_GT(data.size(), 512u);  // and so did both ways of growing
}

TEST(TangentTable, CarriesIndicesOverToTheNextMesh) {
  TangentTable table;
  std::vector<TangentBasis> firstMesh, secondMesh;
  EXPECT_EQ(table.Fold({1, 0, 0, 0, 1, 0}, firstMesh), 0u);
  EXPECT_EQ(table.Fold({0, 1, 0, 1, 0, 0}, firstMesh), 1u);
  EXPECT_EQ(table.Fold({0, 1, 0, 1, 0, 0}, secondMesh), 1u);
  EXPECT_TRUE(secondMesh.empty());
}

TEST(TangentBasis, VectorSignAndTest) {
  struct Case {
    TangentBasis basis;
    Normal3f normal;
    std::array<float, 4> tangent;
    bool passes;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Case cases[] = {
      {{1, 0, 0, 0, 1, 0}, {0, 0, 1}, {1, 0, 0, 1}, true},
      {{1, 0, 0, 0, -1, 0}, {0, 0, 1}, {1, 0, 0, -1}, false},  // t x b is -n
      {{2, 0, 0, 0, 2, 0}, {0, 0, 1}, {1, 0, 0, 1}, true},     // off by a positive amount
      {{0.5f, 0, 0, 0, 1, 0}, {0, 0, 1}, {1, 0, 0, 1}, false},
      {{0, 0, 0, 0, 0, 0}, {0, 0, 1}, {1, 0, 0, 1}, true},
      {{0, 3, 4, 1, 0, 0}, {0, -0.8f, 0.6f}, {0, 0.6f, 0.8f, -1}, true},
      {{nan, 0, 0, 0, 1, 0}, {0, 0, 1}, {1, 0, 0, 1}, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TangentOf(c.basis, c.normal), c.tangent) << c.basis[0] << " " << c.basis[1];
    EXPECT_EQ(PassesAsOrthonormal(c.basis, c.normal), c.passes) << c.basis[0] << " " << c.basis[1];
  }
  // The bound itself doesn't pass.
  const float bound = std::ldexp(1.0f, -19);
  EXPECT_FALSE(PassesAsOrthonormal({1, 0, 0, 0, 1, 0}, {0, 0, 1 + bound}));
  EXPECT_TRUE(PassesAsOrthonormal({1, 0, 0, 0, 1, 0}, {0, 0, 1 + bound / 2}));
}

}  // namespace
