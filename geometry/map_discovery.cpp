#include "geometry/map_discovery.h"

#include "host/fourcc.h"

#include <algorithm>
#include <string>

namespace {

struct MeshMapEntry {
  std::string name;
  ZyMeshMapId id = 0;
};

// Gathers the maps of a walk.
class MeshMapVisitor final : public CZyImpl_AbstractVisitor {
 public:
  explicit MeshMapVisitor(const CZyUser_MeshMap& maps) : maps_(maps) {}

  zyresult Evaluate() override {
    const char* name = nullptr;
    if (const zyresult result = maps_.Name(name); ZyFailed(result)) return result;
    MeshMapEntry entry{name ? name : ""};
    if (entry.name == "UV Distortion") return ZYe_OK;  // the host's own working map
    maps_.Id(entry.id);
    entries.push_back(std::move(entry));
    return ZYe_OK;
  }

  std::vector<MeshMapEntry> entries;

 private:
  const CZyUser_MeshMap& maps_;
};

class MeshMapContentVisitor final : public CZyImpl_AbstractVisitor {
 public:
  zyresult Evaluate() override {
    ++count;
    return ZYe_OK;
  }

  std::uint32_t count = 0;
};

bool NameIgnoringCaseLess(const MeshMapEntry& left, const MeshMapEntry& right) {
  const auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : int{c}; };
  return std::lexicographical_compare(left.name.begin(), left.name.end(), right.name.begin(), right.name.end(),
                                      [&](char a, char b) { return lower(a) < lower(b); });
}

enum class MapOrder { Host, ByName };

std::vector<MeshMapEntry> ListMeshMaps(const CZyUser_MeshMap& maps, std::uint32_t typeCode, MapOrder order) {
  // Without the filter maps of other types would come too, whose values have other sizes.
  if (ZyFailed(maps.FilterByType(typeCode))) return {};
  MeshMapVisitor visitor(maps);
  maps.Enumerate(visitor);
  if (order == MapOrder::ByName)
    std::stable_sort(visitor.entries.begin(), visitor.entries.end(), NameIgnoringCaseLess);
  return std::move(visitor.entries);
}

void DiscoverNormalMap(SaveState& state) {
  MeshScanState& scan = state.scan;
  const std::vector<MeshMapEntry> entries = ListMeshMaps(scan.meshMapAccessor, kMapNormal, MapOrder::Host);
  if (entries.empty()) {
    state.log.Info("   adding calculated normals (normals mesh map not found)");
    return;
  }
  state.log.Info("   normal vmap:%s", entries.front().name.c_str());
  scan.normalMapId = entries.front().id;
  scan.hasNormalMap = scan.normalMapId != 0;
}

void AddColorScan(MeshScanState& scan, const MeshMapEntry& entry) {
  ColorScan& color = scan.colorScans.emplace_back();
  color.colorMap = scan.currentMesh->CreateColorMap();
  color.mapId = entry.id;
}

void DiscoverColorMaps(SaveState& state) {
  MeshScanState& scan = state.scan;
  for (const MeshMapEntry& entry : ListMeshMaps(scan.meshMapAccessor, kMapRgb, MapOrder::Host)) {
    AddColorScan(scan, entry);
    state.log.Info("   vcolRGB vmap:%s", entry.name.c_str());
  }
  for (const MeshMapEntry& entry : ListMeshMaps(scan.meshMapAccessor, kMapRgba, MapOrder::Host)) {
    AddColorScan(scan, entry);
    state.log.Info("   vcolRGBA vmap:%s", entry.name.c_str());
  }
}

void DiscoverUvMaps(SaveState& state) {
  MeshScanState& scan = state.scan;
  GltfMesh& mesh = *scan.currentMesh;
  for (const MeshMapEntry& entry : ListMeshMaps(scan.meshMapAccessor, kMapUv, MapOrder::ByName)) {
    mesh.uvIndexByName.try_emplace(entry.name, static_cast<std::uint32_t>(mesh.uvMaps.size()));
    UvScan& uv = scan.uvScans.emplace_back();
    uv.uvMap = mesh.CreateUvMap();
    uv.mapId = entry.id;
    // The accessor stands where the listing left it, so this is the count of the map visited last.
    MeshMapContentVisitor content;
    scan.meshMapAccessor.EnumerateContents(content, scan.pointAccessor);
    state.log.Info("   uv vmap:%s count:%u", entry.name.c_str(), content.count);
  }
}

void DiscoverTangentMaps(SaveState& state) {
  MeshScanState& scan = state.scan;
  for (const MeshMapEntry& entry : ListMeshMaps(scan.meshMapAccessor, kMapTangentBasis, MapOrder::Host)) {
    scan.tangentScans.push_back({scan.currentMesh->CreateTangentMap(), entry.id});
    scan.tangentValueTables.emplace_back();
    state.log.Info("   vTbasis vmap:%s", entry.name.c_str());
  }
}

}  // namespace

void DiscoverMeshMaps(SaveState& state) {
  DiscoverNormalMap(state);
  DiscoverColorMaps(state);
  DiscoverUvMaps(state);
  if (state.options.tangentsBitangents != 0) DiscoverTangentMaps(state);
}
