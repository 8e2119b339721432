#include "headless/host_state.h"

#include "headless/host_paths.h"
#include "headless/item.h"
#include "headless/scene.h"

namespace headless {

namespace {

// Every mesh has a mesh and every triangle surface a surface, if an empty one; so has an instance of no mesh.
SceneData Completed(SceneData data) {
  const ItemTypes types(data);
  const std::uint32_t meshType = types.Code("mesh"), instanceType = types.Code("meshInst"),
                      surfaceType = types.Code("triSurf");
  for (std::size_t place = 0; place < data.items.size(); ++place) {
    ItemData& item = data.items[place];
    const std::uint32_t type = types.Code(item.type);
    const bool hasMesh =
        types.Derives(type, meshType) ||
        (types.Derives(type, instanceType) && MeshBehindInstance(data, types, static_cast<ItemIndex>(place)) < 0);
    if (hasMesh && !item.mesh) item.mesh = std::make_shared<const MeshData>();
    if (!hasMesh && !types.Derives(type, surfaceType)) continue;
    const char* channel = hasMesh ? "mesh" : "surf";
    if (FindChannel(item, channel) < 0) SetChannel(item, channel, 0.0);
  }
  return data;
}

}  // namespace

ItemIndex MeshBehindInstance(const SceneData& scene, const ItemTypes& types, ItemIndex instance) {
  const std::uint32_t meshType = types.Code("mesh"), instanceType = types.Code("meshInst");
  ItemIndex current = instance;
  // A chain longer than the scene is a circle.
  for (std::size_t step = 0; step < scene.items.size(); ++step) {
    if (current < 0 || At(current) >= scene.items.size()) return -1;
    const std::uint32_t type = types.Code(scene.items[At(current)].type);
    if (types.Derives(type, meshType)) return current;
    if (!types.Derives(type, instanceType)) return -1;
    current = scene.items[At(current)].instanceSource;
  }
  return -1;
}

HostState::HostState(SceneData data)
    : scene(Completed(std::move(data))),
      index(scene),
      values(index),
      evaluator(index, values),
      sceneObject_(std::make_unique<SceneObject>(*this)) {
  items_.reserve(scene.items.size());
  for (std::size_t place = 0; place < scene.items.size(); ++place)
    items_.emplace_back(*this, static_cast<ItemIndex>(place));
}

HostState::~HostState() = default;

ItemIndex HostState::IndexOf(IZyItem* item) { return item ? static_cast<Item*>(item)->Index() : -1; }

IZyItem* HostState::Object(ItemIndex item) { return &items_[At(item)]; }

zyresult HostState::Give(ItemIndex item, IZyObject*& out) {
  if (!index.HasItem(item)) return ZYe_FAILED;
  out = Object(item);
  out->AddRef();
  return ZYe_OK;
}

IZyScene* HostState::Scene() { return sceneObject_.get(); }

const std::shared_ptr<MeshStore>& HostState::MeshOf(ItemIndex mesh) {
  const auto& data = Data(mesh).mesh;
  std::shared_ptr<MeshStore>& store = meshStores_[data.get()];
  if (!store) store = MakeMeshStore(data, &demand.triangles);
  return store;
}

const char* HostState::ImagePath(ItemIndex imageMap) {
  const auto& path = Data(imageMap).imagePath;
  if (!path) return nullptr;
  const auto [entry, isNew] = imagePaths_.try_emplace(imageMap);
  if (isNew) entry->second = ResolveHostPath(scene.directory, *path);
  return entry->second.c_str();
}

}  // namespace headless
