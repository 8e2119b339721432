// The host's meshes: points, polygons and mesh maps, reached through accessors that stand on one of them.
#pragma once

#include "host/object.h"

using ZyPointId = std::uint64_t;
using ZyPolygonId = std::uint64_t;
using ZyMeshMapId = std::uint64_t;  // 0 for none

// Called once per visited thing; a failure ends the walk with that code.
struct CZyImpl_AbstractVisitor {
  virtual zyresult Evaluate() = 0;

 protected:
  ~CZyImpl_AbstractVisitor() = default;
};

// Floats per value: 3 for NORM and RGB, 4 for RGBA, 2 for TXUV, 6 for TBAS, 1 for WGHT.
struct IZyPoint : IZyObject {
  static constexpr std::uint32_t kId = 0x201;

  virtual zyresult SelectByIndex(std::uint32_t index) = 0;
  virtual zyresult SelectById(ZyPointId id) = 0;
  virtual zyresult Id(ZyPointId& id) = 0;
  virtual zyresult Index(std::uint32_t& index) = 0;
  virtual zyresult Position(float (&position)[3]) = 0;
  // The stored value of a map at the current point; ZYe_NO_VALUE when the point holds none.
  virtual zyresult MapValue(ZyMeshMapId map, float* value) = 0;
  // The shading normal of the current point on a polygon, as the host calculates it.
  virtual zyresult Normal(ZyPolygonId polygon, double (&normal)[3]) = 0;

 protected:
  ~IZyPoint() = default;
};

struct IZyPolygon : IZyObject {
  static constexpr std::uint32_t kId = 0x202;

  virtual zyresult SelectByIndex(std::uint32_t index) = 0;
  virtual zyresult SelectById(ZyPolygonId id) = 0;
  virtual zyresult Id(ZyPolygonId& id) = 0;
  // Triangles into which the host divides the current polygon; 0 is allowed.
  virtual zyresult TriangleCount(std::uint32_t& count) = 0;
  virtual zyresult TriangleByIndex(std::uint32_t index, ZyPointId (&points)[3]) = 0;
  // The polygon's string tag, null when missing.
  virtual const char* GetTag(std::uint32_t tagId) = 0;
  // Evaluates a map at the corner of a point: ZYe_OK when it wrote a value, anything else means none.
  virtual zyresult MapEvaluate(ZyMeshMapId map, ZyPointId point, float* value) = 0;
  // The polygon's own stored value at the corner; ZYe_NO_VALUE when it holds none.
  virtual zyresult MapValue(ZyMeshMapId map, ZyPointId point, float* value) = 0;

 protected:
  ~IZyPolygon() = default;
};

// What the polygon accessor of a host may offer beside IZyPolygon: which corners share a value, without the value.
struct IZyValueKeys : IZyObject {
  static constexpr std::uint32_t kId = 0x205;
  static constexpr std::uint32_t kNoKey = 0xFFFFFFFFu;

  // The points of a triangle of the current polygon, as IZyPolygon::TriangleByIndex gives them, with keys of the
  // values that maps have there: keys[c * count + m] is that of maps[m] at points[c]. Where a map has the same key
  // at two corners of one point, IZyPolygon::MapEvaluate writes the same floats at both, bit for bit, and MapValue
  // of the polygon or of the point finds a value. kNoKey says nothing of the corner; one without a value has no
  // other. On failure nothing is written.
  virtual zyresult TriangleKeys(std::uint32_t triangle, const ZyMeshMapId* maps, std::uint32_t count,
                                ZyPointId (&points)[3], std::uint32_t* keys) = 0;

 protected:
  ~IZyValueKeys() = default;
};

struct IZyMeshMap : IZyObject {
  static constexpr std::uint32_t kId = 0x203;

  // Walks that follow see only maps of this type.
  virtual zyresult FilterByType(std::uint32_t type) = 0;
  // Visits each map with the accessor standing on it, in the mesh's order. The accessor stays on the
  // map visited last.
  virtual zyresult Enumerate(CZyImpl_AbstractVisitor& visitor) = 0;
  virtual zyresult Name(const char*& text) = 0;
  virtual zyresult Id(ZyMeshMapId& id) = 0;
  virtual zyresult SelectByName(std::uint32_t type, const char* name) = 0;
  // Visits each point that has a value of its own in the current map, with `point` standing on it.
  // With no current map nothing is visited and the call fails.
  virtual zyresult EnumerateContents(CZyImpl_AbstractVisitor& visitor, IZyPoint* point) = 0;

 protected:
  ~IZyMeshMap() = default;
};

struct IZyMesh : IZyObject {
  static constexpr std::uint32_t kId = 0x204;

  virtual zyresult PointCount(std::uint32_t& count) = 0;
  virtual zyresult PolygonCount(std::uint32_t& count) = 0;
  virtual zyresult PointAccessor(IZyObject*& accessor) = 0;
  virtual zyresult PolygonAccessor(IZyObject*& accessor) = 0;
  virtual zyresult MeshMapAccessor(IZyObject*& accessor) = 0;

 protected:
  ~IZyMesh() = default;
};
