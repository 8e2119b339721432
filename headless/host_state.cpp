#include "headless/host_state.h"

#include "headless/host_paths.h"
#include "headless/item.h"
#include "headless/scene.h"

namespace headless {

namespace {

// By item: the mesh item itself, or the one that an instance leads to, maybe through others; -1 for no such.
std::vector<ItemIndex> MeshesBehind(const SceneData& scene, const ItemTypes& types) {
  constexpr ItemIndex kUnknown = -2;
  const std::uint32_t meshType = types.Code("mesh"), instanceType = types.Code("meshInst");
  std::vector<ItemIndex> meshes(scene.items.size(), kUnknown);
  std::vector<std::size_t> path;
  for (std::size_t start = 0; start < meshes.size(); ++start) {
    auto current = static_cast<ItemIndex>(start);
    path.clear();
    while (current >= 0 && At(current) < meshes.size() && meshes[At(current)] == kUnknown) {
      const std::uint32_t type = types.CodeOf(current);
      const bool isMesh = types.Derives(type, meshType);
      meshes[At(current)] = isMesh ? current : -1;  // for a walk that comes here again, in a circle
      if (isMesh || !types.Derives(type, instanceType)) break;
      path.push_back(At(current));
      current = scene.items[At(current)].instanceSource;
    }
    const ItemIndex end = current >= 0 && At(current) < meshes.size() ? meshes[At(current)] : -1;
    for (const std::size_t item : path) meshes[item] = end;
  }
  return meshes;
}

// Every mesh has a mesh and every triangle surface a surface, if an empty one; so has an instance of no mesh.
SceneData Completed(SceneData data, const ItemTypes& types, const std::vector<ItemIndex>& meshesBehind) {
  const std::uint32_t meshType = types.Code("mesh"), instanceType = types.Code("meshInst"),
                      surfaceType = types.Code("triSurf");
  for (std::size_t place = 0; place < data.items.size(); ++place) {
    ItemData& item = data.items[place];
    const std::uint32_t type = types.CodeOf(static_cast<ItemIndex>(place));
    const bool hasMesh =
        types.Derives(type, meshType) || (types.Derives(type, instanceType) && meshesBehind[place] < 0);
    if (hasMesh && !item.mesh) item.mesh = std::make_shared<const MeshData>();
    if (!hasMesh && !types.Derives(type, surfaceType)) continue;
    const char* channel = hasMesh ? "mesh" : "surf";
    if (FindChannel(item, channel) < 0) SetChannel(item, channel, 0.0);
  }
  return data;
}

}  // namespace

HostState::HostState(SceneData data) : HostState(std::move(data), ItemTypes(data)) {}

HostState::HostState(SceneData&& data, ItemTypes types)
    : meshesBehind_(MeshesBehind(data, types)),
      scene(Completed(std::move(data), types, meshesBehind_)),
      index(scene, std::move(types)),
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
