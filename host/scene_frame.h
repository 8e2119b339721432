// The state of one save that the base of scene savers keeps: the walk over the scene's items, the mesh
// of the current item, and the first failure.
#pragma once

#include "host/module_api.h"
#include "host/user_mesh.h"
#include "host/user_scene.h"
#include "host/user_services.h"

// What a point or polygon scan calls.
class SceneScanVisitor {
 public:
  virtual void VisitPoint() = 0;
  virtual void VisitEdge() = 0;
  virtual void VisitPolygon() = 0;

 protected:
  ~SceneScanVisitor() = default;
};

enum class SavePass : int { Counting = 0, Writing = 1 };

class SceneFrame {
 public:
  // Binds the scene; ZYe_NO_FRAME when the target is none or its setup can't be read. With `subset`
  // NextItem passes over items that aren't selected.
  zyresult Bind(IZyObject* target, IZyMonitor* monitor, bool subset);

  IZyScene* SceneObject() const { return scene_.Raw(); }

  SavePass PassNumber() const { return pass_; }
  void SetPass(SavePass pass) { pass_ = pass; }
  std::uint32_t StepCount() const { return steps_; }

  // Begins a walk of the items of a type, of all items for null. An unknown type has no items.
  void StartScan(const char* typeName);
  // Makes the next item current, as SetItem does. False at the end and on a failed read.
  bool NextItem();
  bool GetItem(CZyUser_Item& item) const;
  // Empty on failure, which the frame keeps.
  const char* ItemName();
  const char* ItemTypeName();

  // Makes the item current and binds its mesh: its own, or that of an instance's source. An item
  // without geometry is simply current. False on failure, with the reason kept.
  bool SetItem(const CZyUser_Item& item);
  bool GetMesh(CZyUser_Mesh& mesh) const;

  // The accessor of the polygon scan, standing on the current polygon.
  bool PolyAccessor(CZyUser_Polygon& polygon) const;
  // Points of the bound mesh; negative on failure, which the frame keeps.
  std::int64_t PointCount();
  // The current point of a point scan: its position in object space, and its id.
  bool PointCoords(double (&position)[3]) const;
  ZyPointId PointIndex() const;
  // A tag of the current polygon, null when missing.
  const char* PolyTag(std::uint32_t tagId) const;

  // Visit each point or polygon of the bound mesh, in index order. The counting pass counts visits;
  // the writing pass steps the monitor, whose refusal the frame keeps as ZYe_ABORTED.
  zyresult ScanPoints(SceneScanVisitor& visitor);
  zyresult ScanPolygons(SceneScanVisitor& visitor);

  // The first failure kept, else ZYe_OK.
  zyresult Failure() const { return failure_; }

 private:
  zyresult Keep(zyresult result);
  void CountVisit();
  bool InSubset(const CZyUser_Item& item) const;
  zyresult BindGeometry(const CZyUser_Item& item);
  zyresult BindMesh(const CZyUser_Item& meshItem);

  CZyUser_Scene scene_;
  CZyUser_ChannelRead setup_;
  CZySceneService sceneService_;
  CountedRef<IZyMonitor> monitor_;
  std::uint32_t typeMesh_ = 0, typeMeshInst_ = 0, typeTriSurf_ = 0;
  bool subset_ = false;
  std::vector<CZyUser_Item> selection_;  // filled for a subset only

  SavePass pass_ = SavePass::Writing;
  std::uint32_t steps_ = 0;
  zyresult failure_ = ZYe_OK;

  std::uint32_t scanType_ = kAllItems;
  std::uint32_t scanIndex_ = 0, scanCount_ = 0;

  CZyUser_Item item_;
  CZyUser_Mesh mesh_;
  CZyUser_Point point_;      // stands on the current point of a scan
  CZyUser_Polygon polygon_;  // stands on the current polygon of a scan
  CountedRef<IZyTriangleSurface> surface_;
};
