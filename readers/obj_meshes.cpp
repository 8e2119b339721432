#include "readers/obj_meshes.h"

#include "host/fourcc.h"

#include <algorithm>
#include <utility>

namespace readers {
namespace {

using headless::Array;
using headless::kNone;
using headless::MeshData;
using headless::MeshMapData;
using headless::PolygonTagData;

// What all meshes of a file share.
struct SharedValues {
  Array<float> uvs;
  Array<float> normals;
  Array<float> colors;
  std::uint32_t colorDimension = 3;
};

// Numbers what of a file's table one user of it needs, by first use. Made once per table: each user cleans
// up behind itself, so that many small users of a large table cost no more than they hold.
class FirstUse {
 public:
  explicit FirstUse(std::size_t tableSize) : places_(tableSize, kNone) {}

  std::uint32_t Place(std::uint32_t entry) {
    std::uint32_t& place = places_[entry];
    if (place == kNone) {
      place = static_cast<std::uint32_t>(used_.size());
      used_.push_back(entry);
    }
    return place;
  }

  // The entries by their places; every entry is unused again.
  std::vector<std::uint32_t> Take() {
    for (const std::uint32_t entry : used_) places_[entry] = kNone;
    return std::exchange(used_, {});
  }

 private:
  std::vector<std::uint32_t> places_;
  std::vector<std::uint32_t> used_;
};

PolygonTagData TagsFromRuns(const std::vector<TagRun>& runs, std::uint32_t polygonCount,
                            const std::vector<std::string>& names, FirstUse& texts) {
  PolygonTagData tags;
  if (std::all_of(runs.begin(), runs.end(), [](const TagRun& run) { return run.text == kNone; })) return tags;
  std::vector<std::uint32_t> perPolygon;
  perPolygon.reserve(polygonCount);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::uint32_t end = i + 1 < runs.size() ? runs[i + 1].firstPolygon : polygonCount;
    perPolygon.resize(end, runs[i].text == kNone ? kNone : texts.Place(runs[i].text));
  }
  for (const std::uint32_t name : texts.Take()) tags.texts.push_back(names[name]);
  tags.perPolygon = std::move(perPolygon);
  return tags;
}

void AddCornerMap(MeshData& mesh, MeshMapData map, std::vector<std::uint32_t> cornerValues) {
  if (cornerValues.empty()) return;
  cornerValues.resize(mesh.polygonPoints.size(), kNone);
  map.cornerValues = std::move(cornerValues);
  mesh.maps.push_back(std::move(map));
}

void AddColorMap(MeshData& mesh, const SharedValues& shared, const std::vector<std::uint32_t>& pointColors,
                 const std::vector<std::uint32_t>& usedPoints) {
  if (pointColors.empty()) return;
  std::vector<std::uint32_t> pointValues;
  pointValues.reserve(usedPoints.size());
  for (const std::uint32_t point : usedPoints)
    pointValues.push_back(point < pointColors.size() ? pointColors[point] : kNone);
  if (std::all_of(pointValues.begin(), pointValues.end(), [](std::uint32_t value) { return value == kNone; }))
    return;
  const std::uint32_t type = shared.colorDimension == 4 ? kMapRgba : kMapRgb;
  mesh.maps.push_back({type, "Color", shared.colorDimension, shared.colors, std::move(pointValues), {}});
}

SharedValues TakeSharedValues(ObjData& data) {
  SharedValues shared;
  shared.uvs = std::move(data.uvs);
  shared.normals = std::move(data.normals);
  if (!data.hasAlpha) {
    // Without an alpha anywhere the colours close up.
    const std::size_t count = data.colors.size() / 4;
    for (std::size_t i = 0; i < count; ++i) std::copy_n(&data.colors[4 * i], 3, &data.colors[3 * i]);
    data.colors.resize(3 * count);
  }
  shared.colorDimension = data.hasAlpha ? 4 : 3;
  shared.colors = std::move(data.colors);
  return shared;
}

}  // namespace

std::vector<std::shared_ptr<const MeshData>> BuildMeshes(ObjData& data) {
  const SharedValues shared = TakeSharedValues(data);
  FirstUse points(data.points.size() / 3);
  FirstUse materials(data.materialNames.Names().size());
  FirstUse parts(data.partNames.Names().size());

  std::vector<std::shared_ptr<const MeshData>> meshes;
  for (ObjMesh& source : data.meshes) {
    auto mesh = std::make_shared<MeshData>();
    for (std::uint32_t& point : source.points) point = points.Place(point);
    const std::vector<std::uint32_t> usedPoints = points.Take();
    std::vector<float> positions;
    positions.reserve(3 * usedPoints.size());
    for (const std::uint32_t point : usedPoints) {
      const float* position = &data.points[3 * std::size_t{point}];
      positions.insert(positions.end(), position, position + 3);
    }
    mesh->points = std::move(positions);
    mesh->polygonStarts = std::move(source.polygonStarts);
    mesh->polygonPoints = std::move(source.points);
    mesh->material = TagsFromRuns(source.materials, mesh->PolygonCount(), data.materialNames.Names(), materials);
    mesh->part = TagsFromRuns(source.parts, mesh->PolygonCount(), data.partNames.Names(), parts);
    AddCornerMap(*mesh, {kMapNormal, "Normal", 3, shared.normals, {}, {}}, std::move(source.normals));
    AddColorMap(*mesh, shared, data.pointColors, usedPoints);
    AddCornerMap(*mesh, {kMapUv, "Texture", 2, shared.uvs, {}, {}}, std::move(source.uvs));
    // "s off" over the whole mesh asks for facets; with smoothing anywhere the host's own angle decides.
    if (!source.smooth) mesh->smoothingAngle = 0;
    meshes.push_back(std::move(mesh));
  }
  return meshes;
}

}  // namespace readers
