// What all parts of the host share.
#pragma once

#include "headless/channel_values.h"
#include "headless/demand.h"
#include "headless/evaluator.h"
#include "headless/mesh_access.h"
#include "headless/scene_index.h"
#include "host/scene_api.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace headless {

class Item;
class SceneObject;

class HostState {
 private:
  std::vector<ItemIndex> meshesBehind_;  // by item; the scene is completed with it, and so stands after it

 public:
  explicit HostState(SceneData data);
  ~HostState();

  const ItemData& Data(ItemIndex item) const { return scene.items[At(item)]; }

  // -1 for null.
  static ItemIndex IndexOf(IZyItem* item);
  // The one object of an item, without a reference. The index is valid.
  IZyItem* Object(ItemIndex item);
  // Hands the item out counted; fails when there is no item of the index.
  zyresult Give(ItemIndex item, IZyObject*& out);
  IZyScene* Scene();

  const std::shared_ptr<MeshStore>& MeshOf(ItemIndex mesh);
  // The mesh item that an instance shows, through instances of instances; -1 when there is none.
  ItemIndex MeshBehind(ItemIndex instance) const { return meshesBehind_[At(instance)]; }
  // In the host's form; null when the image map has no image.
  const char* ImagePath(ItemIndex imageMap);

  const SceneData scene;
  const SceneIndex index;
  ChannelValues values;
  Evaluator evaluator;
  std::size_t live = 0;  // temporary objects
  Demand demand;

 private:
  HostState(SceneData&& data, ItemTypes types);

  std::vector<Item> items_;  // by index, so that the order of pointers is scene order
  std::unique_ptr<SceneObject> sceneObject_;
  std::unordered_map<const MeshData*, std::shared_ptr<MeshStore>> meshStores_;  // meshes may share their data
  std::unordered_map<ItemIndex, std::string> imagePaths_;
};

}  // namespace headless
