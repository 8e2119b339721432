// Scenes of any size for the benchmarks.
#pragma once

#include "headless/scene_data.h"
#include "host/fourcc.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

struct MapCounts {
  std::int64_t uvs = 1, colors = 0;
};

// Triangles over a wavy square grid, with a normal per point, maps that have a value per point, and one material
// tag.
inline headless::MeshData WavyMesh(std::int64_t triangles, MapCounts maps = {}) {
  const auto side = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(triangles) / 2));
  std::vector<float> points, normals, uvs, colors;
  std::vector<std::uint32_t> starts = {0}, corners, perPoint;
  for (std::uint32_t y = 0; y <= side; ++y)
    for (std::uint32_t x = 0; x <= side; ++x) {
      const float u = static_cast<float>(x) / static_cast<float>(side);
      const float v = static_cast<float>(y) / static_cast<float>(side);
      perPoint.push_back(static_cast<std::uint32_t>(perPoint.size()));
      points.insert(points.end(), {u, 0.1f * std::sin(9 * u) * std::cos(7 * v), v});
      normals.insert(normals.end(), {std::cos(9 * u), 5, std::sin(7 * v)});
      uvs.insert(uvs.end(), {u, v});
      colors.insert(colors.end(), {u, v, 1 - u, 1});
    }
  for (std::uint32_t y = 0; y < side; ++y)
    for (std::uint32_t x = 0; x < side; ++x) {
      const std::uint32_t a = y * (side + 1) + x, b = a + side + 1;
      corners.insert(corners.end(), {a, b, a + 1, a + 1, b, b + 1});
    }
  for (std::uint32_t corner = 3; corner <= corners.size(); corner += 3) starts.push_back(corner);
  headless::MeshData mesh;
  mesh.points = std::move(points);
  mesh.material.texts = {"Default"};
  mesh.material.perPolygon = std::vector<std::uint32_t>(starts.size() - 1, 0);
  mesh.polygonStarts = std::move(starts);
  mesh.polygonPoints = std::move(corners);
  mesh.maps.push_back({FourCC("NORM"), "Normal", 3, std::move(normals), perPoint, {}});
  for (std::int64_t map = 0; map < maps.uvs; ++map)
    mesh.maps.push_back({FourCC("TXUV"), "Texture" + std::to_string(map), 2, uvs, perPoint, {}});
  for (std::int64_t map = 0; map < maps.colors; ++map)
    mesh.maps.push_back({FourCC("RGBA"), "Color" + std::to_string(map), 4, colors, perPoint, {}});
  return mesh;
}

// The mesh in a scene that exports everything with 32-bit indices.
inline headless::SceneData WavyScene(std::int64_t triangles, MapCounts maps = {}) {
  headless::SceneData scene = headless::MakeScene();
  const headless::ItemIndex item = headless::AddItem(scene, "mesh", "Waves");
  scene.items[static_cast<std::size_t>(item)].mesh =
      std::make_shared<headless::MeshData>(WavyMesh(triangles, maps));
  scene.userValues["sceneio.gltf.save.exportType"] = 0;
  scene.userValues["sceneio.gltf.save.indicesExport"] = 1;
  return scene;
}

}  // namespace bench
