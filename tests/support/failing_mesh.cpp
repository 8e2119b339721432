// Meshes and deformers of the failing host.
#include "host/deform_api.h"
#include "host/mesh_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

struct PointPart final : Part<IZyPoint> {
  zyresult SelectByIndex(std::uint32_t index) override { return Call(&Host::SelectByIndex, index); }
  zyresult SelectById(ZyPointId id) override { return Call(&Host::SelectById, id); }
  zyresult Id(ZyPointId& id) override { return Call(&Host::Id, id); }
  zyresult Index(std::uint32_t& index) override { return Call(&Host::Index, index); }
  zyresult Position(float (&position)[3]) override { return Call(&Host::Position, position); }
  zyresult MapValue(ZyMeshMapId map, float* value) override { return Call(&Host::MapValue, map, value); }
  zyresult Normal(ZyPolygonId polygon, double (&normal)[3]) override {
    return Call(&Host::Normal, polygon, normal);
  }
};

struct PolygonPart final : Part<IZyPolygon> {
  zyresult SelectByIndex(std::uint32_t index) override { return Call(&Host::SelectByIndex, index); }
  zyresult SelectById(ZyPolygonId id) override { return Call(&Host::SelectById, id); }
  zyresult Id(ZyPolygonId& id) override { return Call(&Host::Id, id); }
  zyresult TriangleCount(std::uint32_t& count) override { return Call(&Host::TriangleCount, count); }
  zyresult TriangleByIndex(std::uint32_t index, ZyPointId (&points)[3]) override {
    return Call(&Host::TriangleByIndex, index, points);
  }
  const char* GetTag(std::uint32_t tagId) override { return Call(&Host::GetTag, tagId); }
  zyresult MapEvaluate(ZyMeshMapId map, ZyPointId point, float* value) override {
    return Call(&Host::MapEvaluate, map, point, value);
  }
  zyresult MapValue(ZyMeshMapId map, ZyPointId point, float* value) override {
    return Call(&Host::MapValue, map, point, value);
  }
};

struct ValueKeysPart final : Part<IZyValueKeys> {
  zyresult TriangleKeys(std::uint32_t triangle, const ZyMeshMapId* maps, std::uint32_t count,
                        ZyPointId (&points)[3], std::uint32_t* keys) override {
    return Call(&Host::TriangleKeys, triangle, maps, count, points, keys);
  }
};

struct MeshMapPart final : Part<IZyMeshMap> {
  zyresult FilterByType(std::uint32_t type) override { return Call(&Host::FilterByType, type); }
  zyresult Enumerate(CZyImpl_AbstractVisitor& visitor) override { return Call(&Host::Enumerate, visitor); }
  zyresult Name(const char*& text) override { return Call(&Host::Name, text); }
  zyresult Id(ZyMeshMapId& id) override { return Call(&Host::Id, id); }
  zyresult SelectByName(std::uint32_t type, const char* name) override {
    return Call(&Host::SelectByName, type, name);
  }
  zyresult EnumerateContents(CZyImpl_AbstractVisitor& visitor, IZyPoint* point) override {
    return Call(&Host::EnumerateContents, visitor, point);
  }
};

struct MeshPart final : Part<IZyMesh> {
  zyresult PointCount(std::uint32_t& count) override { return Call(&Host::PointCount, count); }
  zyresult PolygonCount(std::uint32_t& count) override { return Call(&Host::PolygonCount, count); }
  zyresult PointAccessor(IZyObject*& accessor) override { return CallFor(accessor, &Host::PointAccessor); }
  zyresult PolygonAccessor(IZyObject*& accessor) override { return CallFor(accessor, &Host::PolygonAccessor); }
  zyresult MeshMapAccessor(IZyObject*& accessor) override { return CallFor(accessor, &Host::MeshMapAccessor); }
};

struct GroupDeformerPart final : Part<IZyGroupDeformer> {
  std::uint32_t DeformerCount() override { return Call(&Host::DeformerCount); }
  zyresult DeformerByIndex(std::uint32_t index, IZyObject*& deformer) override {
    return CallFor(deformer, &Host::DeformerByIndex, index);
  }
  zyresult PointWeights(std::uint32_t mesh, ZyPointId point, std::uint32_t* deformers, float* weights,
                        std::uint32_t& count) override {
    return Call(&Host::PointWeights, mesh, point, deformers, weights, count);
  }
};

struct DeformerServicePart final : Part<IZyDeformerService> {
  zyresult GroupDeformer(IZyItem* group, IZyChannelRead* read, IZyObject*& deformer) override {
    return CallFor(deformer, &Host::GroupDeformer, group, read);
  }
  zyresult MeshCount(IZyItem* group, std::uint32_t& count) override {
    return Call(&Host::MeshCount, group, count);
  }
  zyresult MeshByIndex(IZyItem* group, std::uint32_t index, IZyObject*& mesh) override {
    return CallFor(mesh, &Host::MeshByIndex, group, index);
  }
  zyresult DeformerDeformationItem(IZyItem* deformer, IZyObject*& item) override {
    return CallFor(item, &Host::DeformerDeformationItem, deformer);
  }
};

constexpr PartRow kParts[] = {RowOf<PointPart>(),          RowOf<PolygonPart>(), RowOf<ValueKeysPart>(),
                              RowOf<MeshMapPart>(),        RowOf<MeshPart>(),    RowOf<GroupDeformerPart>(),
                              RowOf<DeformerServicePart>()};

}  // namespace

std::span<const PartRow> MeshParts() { return kParts; }

}  // namespace test_support
