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

// The tables as their description has them: a list of entries, and the bucket of each worked out anew.
template <class T, std::size_t N, std::size_t Compared = N>
class TableModel {
 public:
  using Value = std::array<T, N>;

  std::size_t Fold(const Value& value) {
    for (std::size_t entry = 0; entry < entries.size(); ++entry)
      if (Hash(entries[entry]) % buckets_ == Hash(value) % buckets_ &&
          std::equal(value.begin(), value.begin() + Compared, entries[entry].begin()))
        return entry;
    if (entries.size() + 1 > buckets_) buckets_ *= buckets_ < 512 ? 8 : 2;
    entries.push_back(value);
    return entries.size() - 1;
  }

  std::vector<Value> entries;

 private:
  static std::uint64_t Hash(const Value& value) {
    std::uint64_t hash = 0x811C9DC5;
    for (const T number : value) {
      unsigned char bytes[sizeof(T)];
      std::memcpy(bytes, &number, sizeof(T));
      for (const unsigned char byte : bytes) hash = (hash * 16777619) ^ byte;
    }
    return hash;
  }

  std::uint64_t buckets_ = 8;
};

// Zeros of both signs are one entry in a small table and two in a large one; of two signs that differ, some stay
// one.
TEST(ValueTable, ComparesNumbersWithinABucketOfBytes) {
  std::mt19937 random(7);
  ValueTable<double, 3> table;
  TableModel<double, 3> model;
  std::size_t foldedUnlike = 0, lastUnlike = 0;
  for (std::size_t i = 0; i < 4000; ++i) {
    const auto number = [&](std::size_t below) {
      const double sign = random() % 2 != 0 ? 1 : -1;
      return sign * static_cast<double>(random() % below);
    };
    const double x = number(2), y = number(1 + i / 10), z = number(2);
    const std::array<double, 3> value = {x, y, z}, folded = table.Fold(value);
    const std::array<double, 3>& expected = model.entries[model.Fold(value)];
    ASSERT_EQ(std::memcmp(&folded, &expected, sizeof folded), 0) << i;
    if (std::memcmp(&folded, &value, sizeof folded) == 0) continue;
    ++foldedUnlike;
    lastUnlike = i;
  }
  EXPECT_GT(foldedUnlike, 10u);
  EXPECT_GT(lastUnlike, 600u);
  EXPECT_GT(model.entries.size(), 512u);
  ValueTable<double, 3> nans;
  for (int i = 0; i < 9; ++i) nans.Fold({std::numeric_limits<double>::quiet_NaN(), 0, 0});
  EXPECT_EQ(nans.BucketCount(), 64u) << "each is an entry";
}

// Past many buckets the one table is given up, and made anew for values that may still share one.
TEST(ValueEntries, AreThoseOfOneTable) {
  std::mt19937 random(13);
  for (const auto& [step, lateAlias] : {std::pair(0.0, 64), std::pair(1.0, 5000), std::pair(0.7, 30000)}) {
    ValueTable<double, 3> table;
    ValueEntries<double, 3> entries;
    std::vector<std::array<double, 3>> known;
    int lastAlias = 0;
    std::uint64_t generation = 0;
    for (int i = 0; i < 60000; ++i) {
      const auto zero = [&] { return random() % 2 != 0 ? 0.0 : -0.0; };
      const double y = random() % 4 != 0 ? static_cast<double>(i) : step * (1 + random() % 512);
      const std::array<double, 3> value = {zero(), y, zero()};
      const std::array<double, 3> entry = entries.Take(value, known);
      ASSERT_TRUE(IsSame(entry, table.Fold(value))) << i;
      known.push_back(entry);
      if (!IsSame(entry, value)) lastAlias = i;
      ASSERT_GE(entries.Generation(), generation);
      generation = entries.Generation();
    }
    EXPECT_GT(lastAlias, lateAlias);
    EXPECT_GE(generation, 7u) << "growths to many buckets, and giving up";
    EXPECT_GE(table.BucketCount(), 32768u);
  }
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

// A mesh with two UV and two colour maps whose corners take few values each, signed zeros among them.
class WedgeRig {
 public:
  WedgeRig(std::uint32_t points, std::uint32_t seed) : random_(seed), points_(points) {
    scan_.currentMesh = &mesh_;
    for (int k = 0; k < 2; ++k) scan_.uvScans.push_back({mesh_.CreateUvMap()});
    for (int k = 0; k < 2; ++k) scan_.colorScans.push_back({mesh_.CreateColorMap()});
    for (std::uint32_t point = 0; point < points; ++point) {
      mesh_.AddPosition(point, 0, 0);
    }
    scan_.keyMaps = {1, 2, 3, 4, 5};
    StartWedges(scan_, 0);
  }

  // A point id of every `unknown` is none of the mesh's; 0 for none.
  void AddCorners(std::uint32_t normals, std::uint32_t colors, std::uint32_t unknown) {
    for (std::size_t c = 0; c < 3; ++c) {
      CornerValues& corner = scan_.corner;
      corner.hostNormal = {Number(normals), 1, 0};
      for (std::size_t k = 0; k < 2; ++k) {
        corner.missingUvs[k] = Below(4) == 0;
        corner.uvs[k] = {};
        if (corner.missingUvs[k] == 0) corner.uvs[k] = {0, static_cast<float>(Number(2))};
      }
      corner.colors[0] = {static_cast<float>(Number(colors)), 0, 0, 1};
      corner.colors[1] = {static_cast<float>(Number(1)), 0, 0, 1};
      values_.push_back(corner);
      const std::uint32_t place = unknown != 0 && Below(unknown) == 0 ? kUnknownPoint : Below(points_);
      if (place != kUnknownPoint) places_.push_back(place);
      EnterCorner(place, corner);
    }
  }

  void ExpectMatchesModel();
  std::size_t KnownCount() const { return known_; }

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
    const std::uint32_t keys[] = {key(corner.hostNormal[0], 1, 0), uvKey(0), uvKey(1),
                                  key(corner.colors[0][0], 0, 0), key(corner.colors[1][0], 0, 0)};
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

// Corner k has the place of the k-th known point. Corners with equal places and entries are one wedge. Normals and
// colours have an entry in a table of the mesh; equal UVs of a point have the signs of zeros that came first.
void WedgeRig::ExpectMatchesModel() {
  FinishWedges(scan_);
  using Row = std::vector<double>;
  std::map<Row, std::uint32_t> wedges;
  std::map<Row, Row> uvs[2];  // as they came first
  TableModel<double, 3> normals;
  TableModel<float, 4> colors[2];
  ASSERT_EQ(mesh_.wedgeIndex.size(), places_.size());
  for (std::size_t corner = 0; corner < places_.size(); ++corner) {
    const CornerValues& v = values_[corner];
    const double place = places_[corner];
    const double length = std::sqrt(v.hostNormal[0] * v.hostNormal[0] + 1);
    const std::size_t normal = normals.Fold({v.hostNormal[0] / length, 1 / length, 0});
    Row key = {place, static_cast<double>(normal)};
    const std::uint32_t wedge = mesh_.wedgeIndex[corner];
    for (std::size_t k = 0; k < 2; ++k) {
      const std::size_t color = colors[k].Fold(v.colors[k]);
      key.push_back(static_cast<double>(color));
      const auto& expected = colors[k].entries[color];
      ASSERT_EQ(std::memcmp(&mesh_.colorMaps[k]->data[wedge], &expected, sizeof expected), 0) << corner;
    }
    for (std::size_t k = 0; k < 2; ++k) {
      const Row uv = {place, v.uvs[k][0], v.uvs[k][1]};
      key.insert(key.end(), {uv[1], uv[2], static_cast<double>(v.missingUvs[k])});
      const Row first = v.missingUvs[k] != 0 ? Row{place, 0, 0} : uvs[k].try_emplace(uv, uv).first->second;
      for (std::size_t i = 0; i < 2; ++i)
        ASSERT_EQ(Bits(double{scan_.uvScans[k].uvMap->data[wedge][i]}), Bits(first[i + 1])) << corner;
    }
    ASSERT_EQ(wedges.try_emplace(key, static_cast<std::uint32_t>(wedges.size())).first->second, wedge) << corner;
    ASSERT_EQ(mesh_.positionIndex[wedge], places_[corner]);
    ASSERT_EQ(std::memcmp(&mesh_.normals[wedge], &normals.entries[normal], sizeof mesh_.normals[0]), 0) << corner;
  }
  EXPECT_EQ(mesh_.positionIndex.size(), wedges.size());
  EXPECT_EQ(mesh_.normals.size(), wedges.size());
}

TEST(Wedges, MatchAPlainModel) {
  struct Case {
    std::uint32_t triangles, points, normals, colors, unknown;
  };
  // Few values a point, so many that lists go on in the hash table, and points that weren't seen.
  const Case cases[] = {{4000, 40, 2, 1, 0}, {3000, 2, 300, 2, 0},  {3000, 20, 2, 100, 0}, {3000, 20, 40, 2, 0},
                        {300, 10, 2, 2, 5},  {1000, 10, 2, 2, 400}, {2, 3, 2, 2, 1}};
  std::uint32_t seed = 1;
  std::size_t known = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(seed);
    WedgeRig rig(c.points, seed++);
    for (std::uint32_t t = 0; t < c.triangles; ++t) rig.AddCorners(c.normals, c.colors, c.unknown);
    rig.ExpectMatchesModel();
    known += rig.KnownCount();
  }
  EXPECT_GT(known, 50u);
}

// A corner whose value has another's signs of zeros is known again, until the table grows.
TEST(Wedges, AliasesAreKnownUntilATableGrows) {
  for (const bool hasKeys : {false, true}) {
    SCOPED_TRACE(hasKeys);
    GltfMesh mesh;
    mesh.AddPosition(0, 0, 0);
    MeshScanState scan;
    scan.currentMesh = &mesh;
    scan.uvScans.push_back({mesh.CreateUvMap()});
    scan.colorScans.push_back({mesh.CreateColorMap()});
    if (hasKeys) scan.keyMaps = {1, 2, 3};
    StartWedges(scan, 0);
    std::size_t known = 0;
    // The number is the normal's without keys, the colour's with them.
    const auto enter = [&](double number, std::uint32_t uv, std::uint32_t numberKey) {
      scan.corner.hostNormal = {hasKeys ? 0 : number, 1, 0};
      scan.corner.colors[0] = {hasKeys ? static_cast<float>(number) : 0, 0, 0, 1};
      scan.corner.uvs[0] = {static_cast<float>(uv), 0};
      const std::uint32_t keys[] = {1, uv, numberKey};
      if (hasKeys && AddKnownCorner(scan, 0, keys))
        ++known;
      else
        AddCorner(scan, 0, hasKeys ? keys : nullptr);
      const std::uint32_t wedge = mesh.wedgeIndex.back();
      const double entry = hasKeys ? mesh.colorMaps[0]->data[wedge][0] : mesh.normals[wedge][0];
      return std::pair(wedge, std::signbit(entry));
    };
    EXPECT_EQ(enter(0.0, 1, 1), std::pair(0u, false));
    EXPECT_EQ(enter(-0.0, 2, 2), std::pair(1u, false));
    EXPECT_EQ(enter(-0.0, 2, 2), std::pair(1u, false));
    EXPECT_EQ(known, hasKeys ? 1u : 0u);
    EXPECT_EQ(enter(-0.0, 3, 2), std::pair(2u, false));
    for (std::uint32_t number = 1; number <= 70; ++number) enter(number, 1, 10 + number);
    EXPECT_EQ(enter(-0.0, 2, 2), std::pair(73u, true));
    EXPECT_EQ(enter(-0.0, 2, 2), std::pair(73u, true));
    EXPECT_EQ(enter(-0.0, 3, 2), std::pair(74u, true));
    EXPECT_EQ(enter(0.0, 1, 1), std::pair(0u, false));
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

TEST(TangentTable, ComparesFourFloatsWithinABucket) {
  std::mt19937 random(3);
  TangentTable table;
  TableModel<float, 6, 4> model;
  std::vector<TangentBasis> data;
  std::size_t foldedApart = 0;
  for (int i = 0; i < 4000; ++i) {
    // The first four floats repeat often, the last two seldom.
    const float a = static_cast<float>(random() % 40), b = static_cast<float>(random() % 3);
    const TangentBasis basis = {a, b, 0, 1, static_cast<float>(random() % 7), static_cast<float>(random() % 7)};
    const std::size_t expected = model.Fold(basis);
    ASSERT_EQ(table.Fold(basis, data), expected) << i;
    foldedApart += data[expected] != basis;
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
