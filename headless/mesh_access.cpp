#include "headless/mesh_access.h"

#include "headless/host_object.h"
#include "headless/mesh_finders.h"
#include "headless/mesh_store.h"
#include "headless/triangulate.h"
#include "host/fourcc.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace headless {
namespace {

// The maps of a mesh; ids are the place in its list + 1.
class MapFinder {
 public:
  explicit MapFinder(const std::vector<MapView>& maps) : maps_(maps.data()), count_(maps.size()) {}

  const MapView* Find(ZyMeshMapId id) const { return id - 1 < count_ ? maps_ + (id - 1) : nullptr; }

 private:
  const MapView* maps_;
  std::size_t count_;
};

zyresult WriteValue(const MapView& map, std::uint32_t value, float* out) {
  if (value == kNone) return ZYe_NO_VALUE;
  // Without memcpy, behind which the compiler would read everything anew.
  const float* const from = map.values + std::size_t{value} * map.dimension;
  out[0] = from[0];
  if (map.dimension > 1) out[1] = from[1];
  if (map.dimension > 2) out[2] = from[2];
  for (std::uint32_t place = 3; place < map.dimension; ++place) out[place] = from[place];
  return ZYe_OK;
}

// An accessor begins on nothing; selecting what isn't there fails and leaves it where it was.
class PointAccessor final : public HostObject<IZyPoint> {
 public:
  PointAccessor(std::shared_ptr<MeshStore> store, std::size_t& live)
      : HostObject(live),
        store_(std::move(store)),
        positions_(store_->Data().points.data()),
        maps_(store_->Maps()),
        points_(*store_),
        corners_(store_->Data()) {}

  zyresult SelectByIndex(std::uint32_t index) override {
    if (index >= points_.Count()) return ZYe_FAILED;
    point_ = index;
    return ZYe_OK;
  }

  zyresult SelectById(ZyPointId id) override {
    const std::uint32_t point = points_.Find(id);
    if (point == kNone) return ZYe_FAILED;
    point_ = point;
    return ZYe_OK;
  }

  zyresult Id(ZyPointId& id) override {
    if (point_ == kNone) return ZYe_FAILED;
    id = points_.IdOf(point_);
    return ZYe_OK;
  }

  zyresult Index(std::uint32_t& index) override {
    if (point_ == kNone) return ZYe_FAILED;
    index = point_;
    return ZYe_OK;
  }

  zyresult Position(float (&position)[3]) override {
    if (point_ == kNone) return ZYe_FAILED;
    const float* from = positions_ + std::size_t{3} * point_;
    for (int axis = 0; axis < 3; ++axis) position[axis] = from[axis];
    return ZYe_OK;
  }

  zyresult MapValue(ZyMeshMapId map, float* value) override {
    const MapView* view = maps_.Find(map);
    if (!view || point_ == kNone) return ZYe_FAILED;
    return WriteValue(*view, view->pointValues ? view->pointValues[point_] : kNone, value);
  }

  zyresult Normal(ZyPolygonId polygonId, double (&normal)[3]) override {
    const std::uint32_t polygon = corners_.FindPolygon(polygonId);
    if (polygon == kNone || point_ == kNone) return ZYe_FAILED;
    const std::uint32_t corner = corners_.Find(polygon, point_);
    if (corner == kNone) return ZYe_FAILED;
    if (!normals_) normals_ = store_->CornerNormals();
    const double* from = normals_.get() + std::size_t{3} * corner;
    for (int axis = 0; axis < 3; ++axis) normal[axis] = from[axis];
    return ZYe_OK;
  }

 private:
  std::shared_ptr<MeshStore> store_;
  const float* positions_;
  std::shared_ptr<const double> normals_;
  MapFinder maps_;
  PointFinder points_;
  CornerFinder corners_;
  std::uint32_t point_ = kNone;
};

class PolygonAccessor final : public HostObject<IZyPolygon, IZyValueKeys> {
 public:
  PolygonAccessor(std::shared_ptr<MeshStore> store, std::size_t& live)
      : HostObject(live),
        store_(std::move(store)),
        mesh_(store_->Data()),
        starts_(mesh_.polygonStarts.data()),
        cornerPoints_(mesh_.polygonPoints.data()),
        maps_(store_->Maps()),
        recorded_(!mesh_.triangleStarts.empty()),
        points_(*store_),
        corners_(mesh_) {}

  zyresult SelectByIndex(std::uint32_t index) override {
    return Select(corners_.FindPolygon(ZyPolygonId{index} + 1));
  }

  zyresult SelectById(ZyPolygonId id) override { return Select(corners_.FindPolygon(id)); }

  zyresult Id(ZyPolygonId& id) override {
    if (polygon_ == kNone) return ZYe_FAILED;
    id = ZyPolygonId{polygon_} + 1;
    return ZYe_OK;
  }

  zyresult TriangleCount(std::uint32_t& count) override {
    if (polygon_ == kNone) return ZYe_FAILED;
    count = CountTriangles();
    return ZYe_OK;
  }

  zyresult TriangleByIndex(std::uint32_t index, ZyPointId (&points)[3]) override {
    std::uint32_t found[3];
    if (!FindTriangle(index, found)) return ZYe_FAILED;
    HandOut(found, points);
    return ZYe_OK;
  }

  const char* GetTag(std::uint32_t tagId) override {
    if (tagId == kTagMaterial) return TextOf(mesh_.material);
    return tagId == kTagPart ? TextOf(mesh_.part) : nullptr;
  }

  zyresult MapEvaluate(ZyMeshMapId map, ZyPointId point, float* value) override {
    const MapView* view = maps_.Find(map);
    if (!view || !FindCorner(point)) return ZYe_FAILED;
    return WriteValue(*view, ValueAt(*view, corner_), value);
  }

  zyresult MapValue(ZyMeshMapId map, ZyPointId point, float* value) override {
    const MapView* view = maps_.Find(map);
    if (!view || !FindCorner(point)) return ZYe_FAILED;
    return WriteValue(*view, view->cornerValues ? view->cornerValues[corner_] : kNone, value);
  }

  zyresult TriangleKeys(std::uint32_t triangle, const ZyMeshMapId* maps, std::uint32_t count,
                        ZyPointId (&points)[3], std::uint32_t* keys) override {
    // Values are asked for by the id, which gives those of another point here.
    if (!points_.AreDistinct()) return ZYe_FAILED;
    std::uint32_t found[3], corners[3];
    if (!FindTriangle(triangle, found) || !FindCorners(found, corners)) return ZYe_FAILED;
    HandOut(found, points);
    for (std::uint32_t map = 0; map < count; ++map) {
      const MapView* view = maps_.Find(maps[map]);
      for (std::size_t place = 0; place < 3; ++place)
        keys[place * count + map] = view ? ValueAt(*view, corners[place]) : kNoKey;
    }
    return ZYe_OK;
  }

 private:
  // The corner's own value, else its point's.
  std::uint32_t ValueAt(const MapView& map, std::uint32_t corner) const {
    const std::uint32_t own = map.cornerValues ? map.cornerValues[corner] : kNone;
    return own == kNone && map.pointValues ? map.pointValues[cornerPoints_[corner]] : own;
  }

  zyresult Select(std::uint32_t polygon) {
    if (polygon == kNone) return ZYe_FAILED;
    if (polygon == polygon_) return ZYe_OK;
    polygon_ = polygon;
    begin_ = starts_[polygon];
    size_ = starts_[polygon + 1] - begin_;
    corner_ = kNone;
    return ZYe_OK;
  }

  const TriangleTable& Table() {
    if (!table_) table_ = &store_->Triangles();
    return *table_;
  }

  const char* TextOf(const PolygonTagData& tag) const {
    if (polygon_ == kNone || tag.perPolygon.empty() || tag.perPolygon[polygon_] == kNone) return nullptr;
    return tag.texts[tag.perPolygon[polygon_]].c_str();
  }

  // Makes the polygon's corner at the point current. The questions about a corner come in a row.
  bool FindCorner(ZyPointId id) { return (corner_ != kNone && id == cornerId_) || FindOtherCorner(id); }

  bool FindOtherCorner(ZyPointId id);

  bool HasTable() const { return recorded_ || size_ > 4; }

  std::uint32_t CountTriangles() {
    if (!HasTable()) return size_ < 3 ? 0 : size_ - 2;
    const TriangleTable& table = Table();
    return table.starts[polygon_ + 1] - table.starts[polygon_];
  }

  // The points of a triangle of the current polygon; false when there is none.
  bool FindTriangle(std::uint32_t index, std::uint32_t (&points)[3]) {
    if (polygon_ == kNone || index >= CountTriangles()) return false;
    if (HasTable()) {
      const TriangleTable& table = Table();
      std::copy_n(table.points + (std::size_t{table.starts[polygon_]} + index) * 3, 3, points);
    } else if (size_ == 3) {
      std::copy_n(cornerPoints_ + begin_, 3, points);
    } else {
      const std::uint32_t* triangle = SplitQuad(mesh_.points.data(), cornerPoints_ + begin_)[index];
      for (int place = 0; place < 3; ++place) points[place] = cornerPoints_[begin_ + triangle[place]];
    }
    return true;
  }

  void HandOut(const std::uint32_t (&triangle)[3], ZyPointId (&points)[3]) {
    store_->CountTriangle();
    for (int place = 0; place < 3; ++place) points[place] = points_.IdOf(triangle[place]);
  }

  // The polygon's first corners at a triangle's points; false when one isn't there.
  bool FindCorners(const std::uint32_t (&points)[3], std::uint32_t (&corners)[3]) {
    const bool isDistinct = points[0] != points[1] && points[0] != points[2] && points[1] != points[2];
    const bool isPolygon = size_ == 3 && !HasTable() && isDistinct;
    for (std::uint32_t place = 0; place < 3; ++place) {
      corners[place] = isPolygon ? begin_ + place : corners_.Find(polygon_, points[place]);
      if (corners[place] == kNone) return false;
    }
    return true;
  }

  std::shared_ptr<MeshStore> store_;
  const MeshData& mesh_;
  const std::uint32_t* starts_;
  const std::uint32_t* cornerPoints_;
  MapFinder maps_;
  const TriangleTable* table_ = nullptr;
  const bool recorded_;
  PointFinder points_;
  CornerFinder corners_;
  std::uint32_t polygon_ = kNone;
  std::uint32_t begin_ = 0;
  std::uint32_t size_ = 0;
  std::uint32_t corner_ = kNone;
  ZyPointId cornerId_ = 0;
};

bool PolygonAccessor::FindOtherCorner(ZyPointId id) {
  if (polygon_ == kNone) return false;
  const std::uint32_t point = points_.Find(id);
  corner_ = point == kNone ? kNone : corners_.Find(polygon_, point);
  cornerId_ = id;
  return corner_ != kNone;
}

class MeshMapAccessor final : public HostObject<IZyMeshMap> {
 public:
  MeshMapAccessor(std::shared_ptr<MeshStore> store, std::size_t& live)
      : HostObject(live), store_(std::move(store)), maps_(store_->Data().maps) {}

  zyresult FilterByType(std::uint32_t type) override {
    filter_ = type;
    return ZYe_OK;
  }

  zyresult Enumerate(CZyImpl_AbstractVisitor& visitor) override {
    for (std::size_t map = 0; map < maps_.size(); ++map) {
      if (filter_ != 0 && maps_[map].type != filter_) continue;
      current_ = map;
      if (const zyresult result = visitor.Evaluate(); ZyFailed(result)) return result;
    }
    return ZYe_OK;
  }

  zyresult Name(const char*& text) override {
    if (current_ == kNoMap) return ZYe_FAILED;
    text = maps_[current_].name.c_str();
    return ZYe_OK;
  }

  zyresult Id(ZyMeshMapId& id) override {
    if (current_ == kNoMap) return ZYe_FAILED;
    id = current_ + 1;
    return ZYe_OK;
  }

  // An unknown name leaves no map current, so that a walk doesn't take another map's values for it.
  zyresult SelectByName(std::uint32_t type, const char* name) override {
    current_ = kNoMap;
    for (std::size_t map = 0; map < maps_.size() && name; ++map) {
      if (maps_[map].type == type && maps_[map].name == name) {
        current_ = map;
        return ZYe_OK;
      }
    }
    return ZYe_FAILED;
  }

  zyresult EnumerateContents(CZyImpl_AbstractVisitor& visitor, IZyPoint* point) override {
    if (current_ == kNoMap || !point) return ZYe_FAILED;
    const Array<std::uint32_t>& values = maps_[current_].pointValues;
    for (std::uint32_t index = 0; index < values.size(); ++index) {
      if (values[index] == kNone) continue;
      if (const zyresult result = point->SelectByIndex(index); ZyFailed(result)) return result;
      if (const zyresult result = visitor.Evaluate(); ZyFailed(result)) return result;
    }
    return ZYe_OK;
  }

 private:
  static constexpr std::size_t kNoMap = static_cast<std::size_t>(-1);

  std::shared_ptr<MeshStore> store_;
  const std::vector<MeshMapData>& maps_;
  std::uint32_t filter_ = 0;  // 0 lets every type through
  std::size_t current_ = kNoMap;
};

class Mesh final : public HostObject<IZyMesh> {
 public:
  Mesh(std::shared_ptr<MeshStore> store, std::size_t& live) : HostObject(live), store_(std::move(store)) {}

  zyresult PointCount(std::uint32_t& count) override {
    count = store_->Data().PointCount();
    return ZYe_OK;
  }

  zyresult PolygonCount(std::uint32_t& count) override {
    count = store_->Data().PolygonCount();
    return ZYe_OK;
  }

  zyresult PointAccessor(IZyObject*& accessor) override {
    return Give<IZyPoint, headless::PointAccessor>(accessor);
  }
  zyresult PolygonAccessor(IZyObject*& accessor) override {
    return Give<IZyPolygon, headless::PolygonAccessor>(accessor);
  }
  zyresult MeshMapAccessor(IZyObject*& accessor) override {
    return Give<IZyMeshMap, headless::MeshMapAccessor>(accessor);
  }

 private:
  template <class Interface, class Accessor>
  zyresult Give(IZyObject*& accessor) {
    accessor = static_cast<Interface*>(new Accessor(store_, LiveCounter()));
    return ZYe_OK;
  }

  std::shared_ptr<MeshStore> store_;
};

}  // namespace

IZyMesh* NewMesh(std::shared_ptr<MeshStore> store, std::size_t& live) { return new Mesh(std::move(store), live); }

}  // namespace headless
