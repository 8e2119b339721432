#include "host/scene_frame.h"

#include <algorithm>

zyresult SceneFrame::Bind(IZyObject* target, IZyMonitor* monitor, bool subset) {
  monitor_.Set(monitor);
  subset_ = subset;
  if (!scene_.Set(target) || ZyFailed(scene_.SetupChannels(setup_))) return ZYe_NO_FRAME;
  sceneService_.ItemTypeLookup("mesh", typeMesh_);
  sceneService_.ItemTypeLookup("meshInst", typeMeshInst_);
  sceneService_.ItemTypeLookup("triSurf", typeTriSurf_);
  if (subset_) CZyItemSelection().GetList(selection_);
  return ZYe_OK;
}

void SceneFrame::StartScan(const char* typeName) {
  scanIndex_ = scanCount_ = 0;
  scanType_ = kAllItems;
  item_.Clear();
  if (typeName && ZyFailed(sceneService_.ItemTypeLookup(typeName, scanType_))) return;
  scene_.ItemCount(scanType_, scanCount_);
}

bool SceneFrame::NextItem() {
  while (scanIndex_ < scanCount_) {
    CZyUser_Item item;
    if (ZyFailed(scene_.ItemByIndex(scanType_, scanIndex_++, item))) break;
    if (!InSubset(item)) continue;
    SetItem(item);
    return true;
  }
  item_.Clear();
  return false;
}

bool SceneFrame::InSubset(const CZyUser_Item& item) const {
  if (!subset_) return true;
  return std::any_of(selection_.begin(), selection_.end(),
                     [&](const CZyUser_Item& selected) { return selected.Raw() == item.Raw(); });
}

bool SceneFrame::GetItem(CZyUser_Item& item) const {
  item = item_;
  return !item.Empty();
}

const char* SceneFrame::ItemName() {
  const char* name = "";
  Keep(item_.Name(name));
  return name ? name : "";
}

const char* SceneFrame::ItemTypeName() {
  const char* name = "";
  Keep(sceneService_.ItemTypeName(item_.Type(), name));
  return name ? name : "";
}

bool SceneFrame::SetItem(const CZyUser_Item& item) {
  item_ = item;
  mesh_.Clear();
  point_.Clear();
  polygon_.Clear();
  surface_.Clear();
  return ZySucceeded(Keep(item_ ? BindGeometry(item_) : ZYe_FAILED));
}

zyresult SceneFrame::BindGeometry(const CZyUser_Item& item) {
  if (item.TestType(typeMesh_) == ZYe_OK) return BindMesh(item);
  if (item.TestType(typeMeshInst_) == ZYe_OK) {
    CZyUser_Item source;
    const zyresult result = sceneService_.MeshInstanceSource(item, source);
    return ZyFailed(result) ? result : BindMesh(source);
  }
  if (item.TestType(typeTriSurf_) == ZYe_OK) {
    std::int32_t channel = -1;
    const zyresult result = item.ChannelLookup("surf", channel);
    return ZyFailed(result) ? result : setup_.ValueObject(item, channel, surface_);
  }
  return ZYe_OK;
}

zyresult SceneFrame::BindMesh(const CZyUser_Item& meshItem) {
  std::int32_t channel = -1;
  if (const zyresult result = meshItem.ChannelLookup("mesh", channel); ZyFailed(result)) return result;
  if (const zyresult result = setup_.ValueObject(meshItem, channel, mesh_); ZyFailed(result)) return result;
  if (const zyresult result = mesh_.PointAccessor(point_); ZyFailed(result)) return result;
  return mesh_.PolygonAccessor(polygon_);
}

bool SceneFrame::GetMesh(CZyUser_Mesh& mesh) const {
  mesh = mesh_;
  return !mesh.Empty();
}

bool SceneFrame::PolyAccessor(CZyUser_Polygon& polygon) const {
  polygon = polygon_;
  return !polygon.Empty();
}

std::int64_t SceneFrame::PointCount() {
  std::uint32_t count = 0;
  if (const zyresult result = Keep(mesh_.PointCount(count)); ZyFailed(result)) return result;
  return count;
}

bool SceneFrame::PointCoords(double (&position)[3]) const {
  float coordinates[3] = {0, 0, 0};
  if (ZyFailed(point_.Position(coordinates))) return false;
  for (int axis = 0; axis < 3; ++axis) position[axis] = coordinates[axis];
  return true;
}

ZyPointId SceneFrame::PointIndex() const {
  ZyPointId id = 0;
  point_.Id(id);
  return id;
}

const char* SceneFrame::PolyTag(std::uint32_t tagId) const { return polygon_.GetTag(tagId); }

zyresult SceneFrame::ScanPoints(SceneScanVisitor& visitor) {
  std::uint32_t count = 0;
  zyresult result = mesh_.PointCount(count);
  for (std::uint32_t index = 0; index < count && ZySucceeded(result); ++index) {
    result = point_.SelectByIndex(index);
    if (ZyFailed(result)) break;
    CountVisit();
    visitor.VisitPoint();
  }
  return Keep(result);
}

zyresult SceneFrame::ScanPolygons(SceneScanVisitor& visitor) {
  std::uint32_t count = 0;
  zyresult result = mesh_.PolygonCount(count);
  for (std::uint32_t index = 0; index < count && ZySucceeded(result); ++index) {
    result = polygon_.SelectByIndex(index);
    if (ZyFailed(result)) break;
    CountVisit();
    visitor.VisitPolygon();
  }
  return Keep(result);
}

void SceneFrame::CountVisit() {
  if (pass_ == SavePass::Counting)
    ++steps_;
  else if (monitor_ && ZyFailed(monitor_.Raw()->Step(1)))
    Keep(ZYe_ABORTED);
}

zyresult SceneFrame::Keep(zyresult result) {
  if (ZyFailed(result) && ZySucceeded(failure_)) failure_ = result;
  return result;
}
