#include "importer/mesh_items.h"

#include "importer/source_check.h"

#include <fmt/format.h>

#include <map>
#include <memory>
#include <set>
#include <utility>

namespace importer {
namespace {

using headless::AddItem;
using headless::ItemData;
using headless::ItemIndex;
using headless::SceneData;

ItemData& At(SceneData& scene, ItemIndex item) { return scene.items[static_cast<std::size_t>(item)]; }

std::set<std::string> NamesOf(const SceneData& scene) {
  std::set<std::string> names;
  for (const ItemData& item : scene.items) names.insert(item.name);
  return names;
}

std::string UniqueName(const std::string& name, std::set<std::string>& taken) {
  std::string unique = name;
  for (int number = 2; !taken.insert(unique).second; ++number) unique = fmt::format("{} {}", name, number);
  return unique;
}

// The deformers of one skin: the group, and what makes each bend its mesh.
void AddDeformers(const PlannedSkin& skin, const NodeItems& items, const MeshParts& parts, ItemIndex mesh,
                  SceneData& scene) {
  const ItemIndex group = AddItem(scene, "deformGroup", At(scene, mesh).name);
  At(scene, group).deformGroup->meshes = {mesh};
  for (std::size_t place = 0; place < skin.joints.size(); ++place) {
    const ItemIndex deformer = AddItem(scene, "genInfluence", parts.weightMaps[place] + " Influence");
    At(scene, deformer).deformationItem = items.byJoint[skin.joints[place]];
    At(scene, deformer).extras.Make().weightMap = parts.weightMaps[place];
    At(scene, group).deformGroup->deformers.push_back(deformer);
  }
}

}  // namespace

void FillMeshItems(const NodePlans& plans, const NodeItems& items, const MapNames& names, SceneData& scene,
                   std::vector<std::string>& warnings) {
  std::map<std::vector<const aiMesh*>, std::shared_ptr<const headless::MeshData>> known;
  for (std::size_t index = 0; index < items.byNode.size(); ++index) {
    MeshParts parts;
    parts.meshes = RigidMeshes(plans.source, *plans.nodes.nodes[index].node);
    if (parts.meshes.empty()) continue;
    const auto [entry, isNew] = known.try_emplace(parts.meshes);
    ItemData& item = At(scene, items.byNode[index].holder);
    if (isNew) entry->second = BuildMesh(parts, names, item.name, warnings);
    // Without polygons there is nothing to show, and the exporter has no use for an empty mesh.
    item.mesh = entry->second ? entry->second : std::make_shared<const headless::MeshData>();
  }
}

void AddSkinItems(const NodePlans& plans, const NodeItems& items, const MapNames& names, SceneData& scene,
                  std::vector<std::string>& warnings) {
  std::set<std::string> taken = NamesOf(scene);
  for (const PlannedSkin& skin : plans.skins.skins) {
    MeshParts parts;
    parts.meshes = skin.meshes;
    parts.carry = skin.carry;
    parts.influences = skin.influences;
    std::set<std::string> mapNames;
    for (const std::size_t joint : skin.joints)
      parts.weightMaps.push_back(UniqueName(At(scene, items.byJoint[joint]).name, mapNames));
    const PlannedNode& node = plans.nodes.nodes[static_cast<std::size_t>(skin.node)];
    std::string name = node.name;
    if (taken.contains(name)) name = TextOf(skin.meshes[0]->mName);
    name = UniqueName(name.empty() ? node.name + " skin" : name, taken);
    auto mesh = BuildMesh(parts, names, name, warnings);
    if (!mesh) continue;
    const ItemIndex item = AddItem(scene, "mesh", name);
    At(scene, item).mesh = std::move(mesh);
    AddDeformers(skin, items, parts, item, scene);
  }
}

}  // namespace importer
