// The tables of one save that the walks over the scene share. Items are raw pointers without a reference:
// the scene outlives the save.
#pragma once

#include "animation/animation_state.h"
#include "document/document.h"
#include "geometry/scan_state.h"
#include "host/insertion_map.h"
#include "host/scene_frame.h"
#include "host/user_scene.h"
#include "host/user_services.h"
#include "saver/item_types.h"
#include "saver/log_message.h"
#include "saver/save_options.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

// Analysis of a locator's transform stack. The first eleven are places in its list of transform items, -1
// when there is none; the rest count channel links.
struct TransformInfo {
  std::int32_t positionIndex = -1;
  std::int32_t rotationIndex = -1;
  std::int32_t scaleIndex = -1;
  std::int32_t rotationOffsetIndex = -1;
  std::int32_t rotationPivotIndex = -1;
  std::int32_t rotationAfterIndex = -1;
  std::int32_t rotationBeforeIndex = -1;
  std::int32_t rotationPivotCompensationIndex = -1;
  std::int32_t scaleOffsetIndex = -1;
  std::int32_t scalePivotIndex = -1;
  std::int32_t scalePivotCompensationIndex = -1;
  std::int32_t drivenWpos = 0;
  std::int32_t drivenWrot = 0;
  std::int32_t drivenWscl = 0;
  std::int32_t drivenWorld = 0;
  std::int32_t drivenLocal = 0;
  std::int32_t drivenParent = 0;
  std::int32_t drivenChannels = 0;       // channels of the item itself with a link
  std::int32_t drivenXformChannels = 0;  // channels of its transform items with a link
};

// Channel numbers, -1 when unknown. The last locator walked settles them for every item.
struct MatrixChannels {
  std::int32_t wposMatrix = -1, wrotMatrix = -1, wsclMatrix = -1, worldMatrix = -1, localMatrix = -1,
               parentMatrix = -1;
  std::int32_t vecX = -1, vecY = -1, vecZ = -1;  // components of a vector channel on a transform item
  std::int32_t morphEnable = -1;                 // "enable" on a morphDeform item
};

// What one save gathers; CleanupFormat replaces the whole of it by a fresh one. No member allocates while it is
// empty, so that this can't fail.
struct SaveTables {
  std::vector<IZyItem*> rootItems;  // in order of discovery
  InsertionMap<IZyItem*, GltfNode*> nodesByItem;
  InsertionMap<IZyItem*, GltfMesh*> meshesByItem;
  std::vector<IZyItem*> deformGroups;
  InsertionMap<std::string, Matrix4> setupMatricesByName;     // world matrices in the bind state
  std::vector<std::pair<GltfNode*, CZyUser_Item>> nodeQueue;  // a stack: parent node, item
  InsertionMap<std::string, GltfMaterial*> polyTagMaterials;
  InsertionMap<std::string, IZyItem*> masksByPtag;  // enabled masks only
  InsertionMap<IZyItem*, TransformInfo> transformInfoByItem;
  std::vector<IZyItem*> ikRoots;   // one per ikFullBody item; a root may stand twice
  InsertionSet<IZyItem*> ikItems;  // every IK root and all below it
  InsertionSet<std::string> collectedTags;
  std::vector<std::pair<GltfMesh*, std::vector<std::string>>> meshTags;
  InsertionMap<std::string, GltfTexture*> texturesByName;  // by the image map's user name
  AnimationState animation;
  MeshScanState scan;
  std::string filename;

  SaveOptions options;
  CZyUser_Scene scene;
  CZyUser_ItemGraph xfrmCore, xfrmLocal, targets;
  CZyUser_ChannelGraph chanLinks;
  CZyUser_ChannelRead chanSetup, chanEdit, chanCurrent, chanBind;
  std::unique_ptr<GltfDocument> document;
  GltfScene* gltfScene = nullptr;  // owned by the document
  ItemTypeCodes typeCodes;
  MatrixChannels channels;
  bool initialized = false;
};

// All that a saver holds. What stands here beside the tables lives as long as the saver.
struct SaveState : SaveTables {
  void ClearTables() { static_cast<SaveTables&>(*this) = SaveTables(); }

  GltfLogMsg log;
  CZyDeformerService deformerService;
  CZySceneService sceneService;
  SceneFrame* frame = nullptr;          // of the running pass
  SceneScanVisitor* visitor = nullptr;  // receives the points and polygons of the frame's scans
  GltfFormat textFormat = GltfFormat::Glb;
};
