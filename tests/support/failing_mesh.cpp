// Meshes and deformers of the failing host.
#include "host/deform_api.h"
#include "host/mesh_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

class PointPart final : public Part<IZyPoint> {
 public:
  using Part<IZyPoint>::Part;
  zyresult SelectByIndex(std::uint32_t index) override { return Call(&IZyPoint::SelectByIndex, index); }
  zyresult SelectById(ZyPointId id) override { return Call(&IZyPoint::SelectById, id); }
  zyresult Id(ZyPointId& id) override { return Call(&IZyPoint::Id, id); }
  zyresult Index(std::uint32_t& index) override { return Call(&IZyPoint::Index, index); }
  zyresult Position(float (&position)[3]) override { return Call(&IZyPoint::Position, position); }
  zyresult MapValue(ZyMeshMapId map, float* value) override { return Call(&IZyPoint::MapValue, map, value); }
  zyresult Normal(ZyPolygonId polygon, double (&normal)[3]) override {
    return Call(&IZyPoint::Normal, polygon, normal);
  }
};

class PolygonPart final : public Part<IZyPolygon> {
 public:
  using Part<IZyPolygon>::Part;
  zyresult SelectByIndex(std::uint32_t index) override { return Call(&IZyPolygon::SelectByIndex, index); }
  zyresult SelectById(ZyPolygonId id) override { return Call(&IZyPolygon::SelectById, id); }
  zyresult Id(ZyPolygonId& id) override { return Call(&IZyPolygon::Id, id); }
  zyresult TriangleCount(std::uint32_t& count) override { return Call(&IZyPolygon::TriangleCount, count); }
  zyresult TriangleByIndex(std::uint32_t index, ZyPointId (&points)[3]) override {
    return Call(&IZyPolygon::TriangleByIndex, index, points);
  }
  const char* GetTag(std::uint32_t tagId) override { return Call(&IZyPolygon::GetTag, tagId); }
  zyresult MapEvaluate(ZyMeshMapId map, ZyPointId point, float* value) override {
    return Call(&IZyPolygon::MapEvaluate, map, point, value);
  }
  zyresult MapValue(ZyMeshMapId map, ZyPointId point, float* value) override {
    return Call(&IZyPolygon::MapValue, map, point, value);
  }
};

class ValueKeysPart final : public Part<IZyValueKeys> {
 public:
  using Part<IZyValueKeys>::Part;
  zyresult TriangleKeys(std::uint32_t triangle, const ZyMeshMapId* maps, std::uint32_t count,
                        ZyPointId (&points)[3], std::uint32_t* keys) override {
    return Call(&IZyValueKeys::TriangleKeys, triangle, maps, count, points, keys);
  }
};

class MeshMapPart final : public Part<IZyMeshMap> {
 public:
  using Part<IZyMeshMap>::Part;
  zyresult FilterByType(std::uint32_t type) override { return Call(&IZyMeshMap::FilterByType, type); }
  zyresult Enumerate(CZyImpl_AbstractVisitor& visitor) override { return Call(&IZyMeshMap::Enumerate, visitor); }
  zyresult Name(const char*& text) override { return Call(&IZyMeshMap::Name, text); }
  zyresult Id(ZyMeshMapId& id) override { return Call(&IZyMeshMap::Id, id); }
  zyresult SelectByName(std::uint32_t type, const char* name) override {
    return Call(&IZyMeshMap::SelectByName, type, name);
  }
  zyresult EnumerateContents(CZyImpl_AbstractVisitor& visitor, IZyPoint* point) override {
    return Call(&IZyMeshMap::EnumerateContents, visitor, point);
  }
};

class MeshPart final : public Part<IZyMesh> {
 public:
  using Part<IZyMesh>::Part;
  zyresult PointCount(std::uint32_t& count) override { return Call(&IZyMesh::PointCount, count); }
  zyresult PolygonCount(std::uint32_t& count) override { return Call(&IZyMesh::PolygonCount, count); }
  zyresult PointAccessor(IZyObject*& accessor) override { return CallFor(accessor, &IZyMesh::PointAccessor); }
  zyresult PolygonAccessor(IZyObject*& accessor) override { return CallFor(accessor, &IZyMesh::PolygonAccessor); }
  zyresult MeshMapAccessor(IZyObject*& accessor) override { return CallFor(accessor, &IZyMesh::MeshMapAccessor); }
};

class GroupDeformerPart final : public Part<IZyGroupDeformer> {
 public:
  using Part<IZyGroupDeformer>::Part;
  std::uint32_t DeformerCount() override { return Call(&IZyGroupDeformer::DeformerCount); }
  zyresult DeformerByIndex(std::uint32_t index, IZyObject*& deformer) override {
    return CallFor(deformer, &IZyGroupDeformer::DeformerByIndex, index);
  }
  zyresult PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                        std::uint32_t& count) override {
    return Call(&IZyGroupDeformer::PointWeights, mesh, point, deformers, weights, count);
  }
};

class DeformerServicePart final : public Part<IZyDeformerService> {
 public:
  using Part<IZyDeformerService>::Part;
  zyresult GroupDeformer(IZyItem* group, IZyChannelRead* read, IZyObject*& deformer) override {
    return CallFor(deformer, &IZyDeformerService::GroupDeformer, group, read);
  }
  zyresult MeshCount(IZyItem* group, std::uint32_t& count) override {
    return Call(&IZyDeformerService::MeshCount, group, count);
  }
  zyresult MeshByIndex(IZyItem* group, std::uint32_t index, IZyObject*& mesh) override {
    return CallFor(mesh, &IZyDeformerService::MeshByIndex, group, index);
  }
  zyresult DeformerDeformationItem(IZyItem* deformer, IZyObject*& item) override {
    return CallFor(item, &IZyDeformerService::DeformerDeformationItem, deformer);
  }
};

constexpr PartRow kParts[] = {RowOf<PointPart>(),          RowOf<PolygonPart>(), RowOf<ValueKeysPart>(),
                              RowOf<MeshMapPart>(),        RowOf<MeshPart>(),    RowOf<GroupDeformerPart>(),
                              RowOf<DeformerServicePart>()};

}  // namespace

std::span<const PartRow> MeshParts() { return kParts; }

}  // namespace test_support
