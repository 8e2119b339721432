#include "geometry/mesh_scan.h"

#include "geometry/corner_values.h"
#include "geometry/map_discovery.h"
#include "geometry/wedges.h"
#include "host/fourcc.h"

#include <algorithm>

namespace {

// With 16-bit indices a primitive has at most as many vertices as its mesh has corners.
constexpr std::int32_t kMaxShortCorners = 65535;

bool IsHidden(const SaveState& state, const CZyUser_Item& item) {
  std::int32_t channel = -1;
  if (ZyFailed(item.ChannelLookup("visible", channel))) return false;
  std::int32_t visible = 0;
  state.chanEdit.Integer(item, channel, visible);
  return visible != 0;  // as the channel stands: non-zero hides the mesh
}

// Triangle corners of the mesh, as a 32-bit sum.
std::int32_t CountCorners(const CZyUser_Mesh& mesh, const CZyUser_Polygon& polygon) {
  std::uint32_t polygons = 0, corners = 0;
  if (ZyFailed(mesh.PolygonCount(polygons))) return 0;
  for (std::uint32_t index = 0; index < polygons; ++index) {
    std::uint32_t triangles = 0;
    polygon.SelectByIndex(index);
    polygon.TriangleCount(triangles);
    corners += 3 * triangles;
  }
  return static_cast<std::int32_t>(corners);
}

void CollectTags(SaveState& state, GltfMesh& mesh) {
  std::vector<std::string>& tags = state.meshTags.emplace_back(&mesh, std::vector<std::string>()).second;
  for (const auto& [tag, triangles] : mesh.polygonsByTag) {
    tags.push_back(tag);
    state.collectedTags.insert(tag);
    state.log.Info("   material:%s polyInds:%lu", tag.c_str(), static_cast<unsigned long>(triangles.size()));
  }
}

using TrianglesByTag = InsertionMap<std::string, std::vector<std::uint32_t>>;

TagCursor CursorAt(TrianglesByTag& polygonsByTag, const char* tag) {
  return {tag, &polygonsByTag.try_emplace(tag).first.value()};
}

void AppendTriangle(TrianglesByTag& polygonsByTag, TagCursor& cursor, const char* tag, std::uint32_t triangle) {
  if (!tag) return;
  if (tag != cursor.text) cursor = CursorAt(polygonsByTag, tag);
  cursor.triangles->push_back(triangle);
}

void RecordTriangle(MeshScanState& scan, const char* materialTag, const char* partTag) {
  GltfMesh& mesh = *scan.currentMesh;
  AppendTriangle(mesh.polygonsByTag, scan.materialCursor, materialTag, scan.triangleCount);
  AppendTriangle(mesh.polygonsByPart, scan.partCursor, partTag, scan.triangleCount);
  ++mesh.triangleCount;
}

// `triangle` counts in the polygon.
void ScanTriangle(MeshScanState& scan, ZyPolygonId polygon, std::uint32_t triangle) {
  ZyPointId points[3] = {0, 0, 0};
  const bool hasKeys = ReadKeys(scan, triangle, points);
  if (!hasKeys) scan.currentPolygon.TriangleByIndex(triangle, points);
  for (std::size_t c = 0; c < 3; ++c) {
    const std::uint32_t place = scan.pointIndexById.Find(points[c]);
    const std::uint32_t* const keys = hasKeys ? &scan.keys[c * scan.keyMaps.size()] : nullptr;
    if (keys && AddKnownCorner(scan, place, keys)) continue;
    ReadCornerValues(scan, polygon, points[c]);
    AddCorner(scan, place, scan.isSelected ? keys : nullptr);  // else the values may be another polygon's
  }
}

}  // namespace

GltfMesh* CreateMeshForItem(SaveState& state, const CZyUser_Item& item) {
  SceneFrame& frame = *state.frame;
  const std::int64_t counted = frame.PointCount();  // a failed count isn't 0 and goes on
  const auto points = static_cast<std::uint32_t>(counted);
  if (points == 0) return nullptr;
  CZyUser_Mesh hostMesh;
  if (!frame.GetMesh(hostMesh)) {
    state.log.Error("Failed to get mesh for item:%s", frame.ItemName());
    return nullptr;
  }
  if (IsHidden(state, item)) return nullptr;
  const char* name = frame.ItemName();
  const char* type = frame.ItemTypeName();
  if (const auto known = state.meshesByItem.find(item.Raw()); known != state.meshesByItem.end()) {
    state.log.Info("Using mesh:%s type:%s which is already created", name, type);
    return known->second;
  }
  state.log.Info("Creating mesh:%s type:%s nPoints:%u", name, type, points);

  CZyUser_MeshMap maps;
  CZyUser_Point point;
  CZyUser_Polygon polygon;
  hostMesh.MeshMapAccessor(maps);
  hostMesh.PointAccessor(point);
  hostMesh.PolygonAccessor(polygon);
  const std::int32_t corners = CountCorners(hostMesh, polygon);
  if (corners > kMaxShortCorners && state.options.indicesExport == 0) {
    state.log.Error(
        "   Creating mesh:%s type:%s nPoints:%u polyInds:%d failed! Number of vertices goes over the maximum of "
        "unsigned short data type!",
        name, type, points, corners);
    return nullptr;
  }
  state.log.Info("   polyInds:%d", corners);

  MeshScanState& scan = state.scan;
  GltfMesh* mesh = state.gltfScene->CreateMesh();
  ResetScan(scan);
  scan.currentMesh = mesh;
  scan.meshMapAccessor = maps;
  scan.polygonAccessor = polygon;
  scan.pointAccessor = point;
  if (maps) DiscoverMeshMaps(state);
  if (counted > 0) mesh->positions.reserve(points);
  if (frame.PolyAccessor(scan.currentPolygon)) scan.valueKeys.Set(scan.currentPolygon.Raw());
  ChooseKeyMaps(scan);
  frame.ScanPoints(*state.visitor);
  StartWedges(scan, static_cast<std::size_t>(std::max(corners, 0)));
  frame.ScanPolygons(*state.visitor);
  if (state.options.materials != 0) CollectTags(state, *mesh);
  FinishWedges(scan);
  state.meshesByItem.try_emplace(item.Raw(), mesh);
  ResetScan(scan);
  return mesh;
}

void VisitScannedPoint(SaveState& state) {
  MeshScanState& scan = state.scan;
  if (!scan.currentMesh) return;
  double position[3] = {0, 0, 0};
  state.frame->PointCoords(position);
  scan.pointIndexById.Add(state.frame->PointIndex(), scan.pointCount);
  scan.currentMesh->AddPosition(position[0], position[1], position[2]);
  ++scan.pointCount;
}

void VisitScannedPolygon(SaveState& state) {
  MeshScanState& scan = state.scan;
  if (!scan.currentMesh) return;
  const char* materialTag = state.frame->PolyTag(kTagMaterial);
  const char* partTag = state.frame->PolyTag(kTagPart);
  ZyPolygonId polygon = 0;
  std::uint32_t triangles = 0;
  scan.currentPolygon.Id(polygon);
  scan.currentPolygon.TriangleCount(triangles);
  scan.isSelected = false;
  for (std::uint32_t index = 0; index < triangles; ++index) {
    RecordTriangle(scan, materialTag, partTag);
    ScanTriangle(scan, polygon, index);
    ++scan.triangleCount;
  }
}

void ResetScan(MeshScanState& scan) {
  std::vector<TangentTable> tangentTables = std::move(scan.tangentValueTables);
  scan = MeshScanState();
  scan.tangentValueTables = std::move(tangentTables);
}
