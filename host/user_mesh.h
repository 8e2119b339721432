// Wrappers of the mesh interfaces. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/mesh_api.h"

class CZyUser_Point : public CountedRef<IZyPoint> {
 public:
  zyresult SelectByIndex(std::uint32_t index) const { return Call(&IZyPoint::SelectByIndex, index); }
  zyresult SelectById(ZyPointId id) const { return Call(&IZyPoint::SelectById, id); }
  zyresult Id(ZyPointId& id) const { return Call(&IZyPoint::Id, id); }
  zyresult Index(std::uint32_t& index) const { return Call(&IZyPoint::Index, index); }
  zyresult Position(float (&position)[3]) const { return Call(&IZyPoint::Position, position); }
  zyresult MapValue(ZyMeshMapId map, float* value) const { return Call(&IZyPoint::MapValue, map, value); }
  zyresult Normal(ZyPolygonId polygon, double (&normal)[3]) const {
    return Call(&IZyPoint::Normal, polygon, normal);
  }
};

class CZyUser_Polygon : public CountedRef<IZyPolygon> {
 public:
  zyresult SelectByIndex(std::uint32_t index) const { return Call(&IZyPolygon::SelectByIndex, index); }
  zyresult SelectById(ZyPolygonId id) const { return Call(&IZyPolygon::SelectById, id); }
  zyresult Id(ZyPolygonId& id) const { return Call(&IZyPolygon::Id, id); }
  zyresult TriangleCount(std::uint32_t& count) const { return Call(&IZyPolygon::TriangleCount, count); }
  zyresult TriangleByIndex(std::uint32_t index, ZyPointId (&points)[3]) const {
    return Call(&IZyPolygon::TriangleByIndex, index, points);
  }
  const char* GetTag(std::uint32_t tagId) const { return Raw() ? Raw()->GetTag(tagId) : nullptr; }
  zyresult MapEvaluate(ZyMeshMapId map, ZyPointId point, float* value) const {
    return Call(&IZyPolygon::MapEvaluate, map, point, value);
  }
  zyresult MapValue(ZyMeshMapId map, ZyPointId point, float* value) const {
    return Call(&IZyPolygon::MapValue, map, point, value);
  }
};

class CZyUser_ValueKeys : public CountedRef<IZyValueKeys> {
 public:
  zyresult TriangleKeys(std::uint32_t triangle, const ZyMeshMapId* maps, std::uint32_t count,
                        ZyPointId (&points)[3], std::uint32_t* keys) const {
    return Call(&IZyValueKeys::TriangleKeys, triangle, maps, count, points, keys);
  }
};

class CZyUser_MeshMap : public CountedRef<IZyMeshMap> {
 public:
  zyresult FilterByType(std::uint32_t type) const { return Call(&IZyMeshMap::FilterByType, type); }
  zyresult Enumerate(CZyImpl_AbstractVisitor& visitor) const { return Call(&IZyMeshMap::Enumerate, visitor); }
  zyresult Name(const char*& text) const { return Call(&IZyMeshMap::Name, text); }
  zyresult Id(ZyMeshMapId& id) const { return Call(&IZyMeshMap::Id, id); }
  zyresult SelectByName(std::uint32_t type, const char* name) const {
    return Call(&IZyMeshMap::SelectByName, type, name);
  }
  zyresult EnumerateContents(CZyImpl_AbstractVisitor& visitor, const CZyUser_Point& point) const {
    return Call(&IZyMeshMap::EnumerateContents, visitor, point.Raw());
  }
};

class CZyUser_Mesh : public CountedRef<IZyMesh> {
 public:
  zyresult PointCount(std::uint32_t& count) const { return Call(&IZyMesh::PointCount, count); }
  zyresult PolygonCount(std::uint32_t& count) const { return Call(&IZyMesh::PolygonCount, count); }
  zyresult PointAccessor(CZyUser_Point& accessor) const { return CallFor(accessor, &IZyMesh::PointAccessor); }
  zyresult PolygonAccessor(CZyUser_Polygon& accessor) const {
    return CallFor(accessor, &IZyMesh::PolygonAccessor);
  }
  zyresult MeshMapAccessor(CZyUser_MeshMap& accessor) const {
    return CallFor(accessor, &IZyMesh::MeshMapAccessor);
  }
};
