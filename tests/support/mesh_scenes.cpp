#include "tests/support/mesh_scenes.h"

#include "host/fourcc.h"

#include <map>
#include <memory>
#include <stdexcept>

namespace test_support {
namespace {

std::uint32_t DimensionOf(std::uint32_t type) {
  static const std::map<std::uint32_t, std::uint32_t> dimensions = {
      {kMapNormal, 3}, {kMapRgb, 3}, {kMapRgba, 4}, {kMapUv, 2}, {kMapTangentBasis, 6}, {kMapWeight, 1}};
  return dimensions.at(type);
}

}  // namespace

headless::MeshMapData MakeMap(std::uint32_t type, const std::string& name, std::vector<float> values,
                              std::vector<std::uint32_t> pointValues, std::vector<std::uint32_t> cornerValues) {
  headless::MeshMapData map;
  map.type = type;
  map.name = name;
  map.dimension = DimensionOf(type);
  map.values = std::move(values);
  map.pointValues = std::move(pointValues);
  map.cornerValues = std::move(cornerValues);
  return map;
}

void TagAll(headless::MeshData& mesh, const std::string& tag) {
  mesh.material.texts = {tag};
  mesh.material.perPolygon = std::vector<std::uint32_t>(mesh.PolygonCount(), 0);
}

headless::MeshData StripMesh(std::uint32_t triangles) {
  std::vector<float> points;
  std::vector<std::uint32_t> starts = {0}, corners;
  for (std::uint32_t i = 0; i < triangles + 2; ++i)
    points.insert(points.end(), {static_cast<float>(i / 2), static_cast<float>(i % 2), 0});
  for (std::uint32_t t = 0; t < triangles; ++t) {
    corners.insert(corners.end(), {t + 1 - t % 2, t + t % 2, t + 2});
    starts.push_back(3 * (t + 1));
  }
  headless::MeshData mesh;
  mesh.points = std::move(points);
  mesh.polygonStarts = std::move(starts);
  mesh.polygonPoints = std::move(corners);
  TagAll(mesh, "Default");
  return mesh;
}

headless::SceneData MeshScene(std::vector<headless::MeshData> meshes) {
  headless::SceneData scene = headless::MakeScene();
  for (std::size_t i = 0; i < meshes.size(); ++i) {
    const headless::ItemIndex item = headless::AddItem(scene, "mesh", "Mesh" + std::to_string(i));
    scene.items[static_cast<std::size_t>(item)].mesh = std::make_shared<headless::MeshData>(std::move(meshes[i]));
  }
  SetOption(scene, "exportType", 0);
  return scene;
}

void SetOption(headless::SceneData& scene, const std::string& name, std::int32_t value) {
  scene.userValues["sceneio.gltf.save." + name] = value;
}

bool SavedPrimitive::Has(const std::string& attribute) const {
  return (*json)["attributes"].HasMember(attribute.c_str());
}

std::vector<std::vector<double>> SavedPrimitive::Rows(const std::string& attribute) const {
  if (!Has(attribute)) throw std::runtime_error("the primitive has no " + attribute);
  const std::uint32_t accessor = (*json)["attributes"][attribute.c_str()].GetUint();
  const std::vector<double> values = AccessorValues(*file, accessor);
  const std::size_t count = file->json["accessors"][accessor]["count"].GetUint();
  const std::size_t width = count == 0 ? 0 : values.size() / count;
  std::vector<std::vector<double>> rows;
  for (std::size_t row = 0; row < count; ++row)
    rows.emplace_back(values.begin() + static_cast<std::ptrdiff_t>(row * width),
                      values.begin() + static_cast<std::ptrdiff_t>((row + 1) * width));
  return rows;
}

std::vector<std::vector<double>> SavedPrimitive::Corners(const std::string& attribute) const {
  const std::vector<std::vector<double>> rows = Rows(attribute);
  std::vector<std::vector<double>> corners;
  for (const double index : indices) corners.push_back(rows.at(static_cast<std::size_t>(index)));
  return corners;
}

SavedPrimitive PrimitiveOf(const GltfFile& file, unsigned mesh, unsigned index) {
  const rapidjson::Value& json = file.json["meshes"][mesh]["primitives"][index];
  return {AccessorValues(file, json["indices"].GetUint()), &file, &json};
}

}  // namespace test_support
