// The tables that fold corners into distinct values and vertices, against plain models of the same rules.
#include "geometry/point_index_table.h"
#include "geometry/tangent_basis.h"
#include "geometry/tangent_table.h"
#include "geometry/value_table.h"
#include "geometry/vertex_fold.h"
#include "geometry/wedges.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>

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
      EXPECT_EQ(table.Find(id), expected == model.end() ? kUnknownPoint : expected->second) << id;
    }
    EXPECT_EQ(table.Find(ids.front()), 0u);
  }
}

// A mesh with two UV maps and a colour map whose corners take few values each, signed zeros among them.
class WedgeRig {
 public:
  WedgeRig(std::uint32_t points, std::uint32_t seed) : random_(seed), points_(points) {
    scan_.currentMesh = &mesh_;
    for (int k = 0; k < 2; ++k) scan_.uvScans.push_back({mesh_.CreateUvMap()});
    scan_.colorScans.push_back({mesh_.CreateColorMap()});
    for (std::uint32_t point = 0; point < points; ++point) {
      mesh_.AddPosition(point, 0, 0);
    }
    scan_.keyMaps = {1, 2, 3, 4};
    StartWedges(scan_, 0);
  }

  // A point id of every `unknown` is none of the mesh's; 0 for none. Of `spread` values each number takes one.
  void AddCorners(std::uint32_t spread, std::uint32_t unknown) {
    for (std::size_t c = 0; c < 3; ++c) {
      CornerValues& corner = scan_.corner;
      corner.normal = {Number(spread), 1, 0};
      for (std::size_t k = 0; k < 2; ++k) {
        corner.missingUvs[k] = Below(4) == 0;
        corner.uvs[k] = {};
        if (corner.missingUvs[k] == 0) corner.uvs[k] = {0, static_cast<float>(Number(2))};
      }
      corner.colors[0] = {static_cast<float>(Number(2)), 0, 0, 1};
      values_.push_back(corner);
      const std::uint32_t place = unknown != 0 && Below(unknown) == 0 ? kUnknownPoint : Below(points_);
      if (place != kUnknownPoint) places_.push_back(place);
      EnterCorner(place, corner);
    }
  }

  void ExpectMatchesModel();

 private:
  // Half of the corners have keys; a key may be missing, and equal values may have several.
  void EnterCorner(std::uint32_t place, const CornerValues& corner) {
    if (Below(2) == 0) return AddCorner(scan_, place, nullptr);
    const auto key = [&](double a, double b, double c) {
      const std::vector<std::uint64_t> value = {Bits(a), Bits(b), Bits(c), Below(8) / 7};
      const auto number = static_cast<std::uint32_t>(keys_.size());
      return Below(12) == 0 ? IZyValueKeys::kNoKey : keys_.try_emplace(value, number).first->second;
    };
    const auto uvKey = [&](std::size_t k) {
      return key(corner.uvs[k][0], corner.uvs[k][1], corner.missingUvs[k]);
    };
    const std::uint32_t keys[] = {key(corner.normal[0], 1, 0), uvKey(0), uvKey(1), key(corner.colors[0][0], 0, 0)};
    scan_.corner = {};  // isn't to be looked at when the keys are known
    if (AddKnownCorner(scan_, place, keys)) {
      ++known_;
      scan_.corner = values_.back();
    } else {
      scan_.corner = values_.back();
      AddCorner(scan_, place, keys);
    }
  }

  // Bits of a number, in which the zeros differ.
  static std::uint64_t Bits(double number) { return std::bit_cast<std::uint64_t>(number); }

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
  double Number(std::uint32_t spread) {
    const double sign = Below(4) != 0 ? 1 : -1;
    return sign * Below(spread);
  }

  std::mt19937 random_;
  std::uint32_t points_;
  GltfMesh mesh_;
  MeshScanState scan_;
  std::vector<CornerValues> values_;   // per corner
  std::vector<std::uint32_t> places_;  // of the corners with a known point
  std::map<std::vector<std::uint64_t>, std::uint32_t> keys_;
  std::size_t known_ = 0;  // corners that were entered by their keys
};

// Corner k has the place of the k-th known point. Corners with equal places and values are one wedge, and equal
// values have the signs of zeros that came first: of all normals and colours, and of the UVs of a point.
void WedgeRig::ExpectMatchesModel() {
  FinishWedges(scan_);
  using Row = std::vector<double>;
  std::map<Row, std::uint32_t> wedges;
  std::map<Row, Row> normals, colors, uvs[2];  // as they came first
  ASSERT_EQ(mesh_.wedgeIndex.size(), places_.size());
  for (std::size_t corner = 0; corner < places_.size(); ++corner) {
    const CornerValues& v = values_[corner];
    const double place = places_[corner];
    const double length = std::sqrt(v.normal[0] * v.normal[0] + 1);
    const Row normal = {v.normal[0] / length, 1 / length, 0};
    const Row color(v.colors[0].begin(), v.colors[0].end());
    Row key = {place, color[0]};
    key.insert(key.end(), normal.begin(), normal.end());
    const std::uint32_t wedge = mesh_.wedgeIndex[corner];
    for (std::size_t k = 0; k < 2; ++k) {
      const Row uv = {place, v.uvs[k][0], v.uvs[k][1]};
      key.insert(key.end(), {uv[1], uv[2], static_cast<double>(v.missingUvs[k])});
      const Row first = v.missingUvs[k] != 0 ? Row{place, 0, 0} : uvs[k].try_emplace(uv, uv).first->second;
      for (std::size_t i = 0; i < 2; ++i)
        ASSERT_EQ(Bits(double{scan_.uvScans[k].uvMap->data[wedge][i]}), Bits(first[i + 1])) << corner;
    }
    ASSERT_EQ(wedges.try_emplace(key, static_cast<std::uint32_t>(wedges.size())).first->second, wedge) << corner;
    ASSERT_EQ(mesh_.positionIndex[wedge], places_[corner]);
    const Row& firstNormal = normals.try_emplace(normal, normal).first->second;
    for (std::size_t i = 0; i < 3; ++i) ASSERT_EQ(Bits(mesh_.normals[wedge][i]), Bits(firstNormal[i])) << corner;
    const Row& firstColor = colors.try_emplace(color, color).first->second;
    ASSERT_EQ(Bits(double{mesh_.colorMaps[0]->data[wedge][0]}), Bits(firstColor[0])) << corner;
  }
  EXPECT_EQ(mesh_.positionIndex.size(), wedges.size());
  EXPECT_EQ(mesh_.normals.size(), wedges.size());
  EXPECT_EQ(known_ > 0, places_.size() == values_.size());  // values that wait keep all behind them from it
}

TEST(Wedges, MatchAPlainModel) {
  struct Case {
    std::uint32_t triangles, points, spread, unknown;
  };
  // Few values a point, so many that lists go on in the hash table, and points that weren't seen.
  const Case cases[] = {{1000, 40, 2, 0}, {3000, 2, 300, 0}, {300, 10, 2, 5}, {1000, 10, 2, 400}, {2, 3, 2, 1}};
  std::uint32_t seed = 1;
  for (const Case& c : cases) {
    SCOPED_TRACE(seed);
    WedgeRig rig(c.points, seed++);
    for (std::uint32_t t = 0; t < c.triangles; ++t) rig.AddCorners(c.spread, c.unknown);
    rig.ExpectMatchesModel();
  }
}

TEST(VertexFold, NumbersWedgesByFirstSight) {
  const std::vector<std::uint32_t> wedges = {4, 2, 4, 0, 2, 9, 9, 9, 1, 3, 4};  // the last triangle isn't whole
  const std::uint32_t triangles[] = {1, 0, 3, 4000000000u, 2};
  for (const std::size_t wedgeCount : {10, 1000000}) {  // a full table, and none for few corners of a large mesh
    const VertexFold fold = FoldCorners(triangles, wedges, wedgeCount);
    EXPECT_EQ(fold.indices, (std::vector<std::uint32_t>{0, 1, 2, 3, 1, 3, 2, 2, 4}));
    EXPECT_EQ(fold.wedges, (std::vector<std::uint32_t>{0, 2, 9, 4, 1}));
  }
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
