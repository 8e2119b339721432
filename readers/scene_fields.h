// Fills the items of a scene from their objects in the file.
#pragma once

#include "headless/scene_data.h"
#include "readers/scene_arrays.h"
#include "readers/scene_items.h"
#include "readers/scene_json.h"

#include <map>
#include <memory>
#include <string>

namespace readers {

using SharedMeshes = std::map<std::string, std::shared_ptr<const headless::MeshData>, std::less<>>;

// What filling an item needs of the file.
struct SceneParts {
  headless::SceneData& scene;
  const SceneItems& items;
  BinaryFiles& files;
  const SharedMeshes& meshes;
};

// Fills item `index` but for what names channels of other items.
void FillItem(const SceneParts& parts, headless::ItemIndex index);

// Fills what names channels of other items: groups and clips.
void FillChannelUsers(const SceneParts& parts, headless::ItemIndex index);

// A deform group's object.
headless::DeformGroupData ReadDeformGroup(const SceneParts& parts, const Json& value);

}  // namespace readers
