// What the bare programs share: the least work from triangle corners to a .glb. No options, no checks.
#pragma once

#include "bench/bench_scenes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

namespace bench {

// Indices of a corner's values.
struct FloorCorner {
  std::uint32_t point, uv, normal;
};

struct FloorMesh {
  std::vector<float> points, uvs, normals;  // three, two and three numbers each
  std::vector<FloorCorner> corners;         // three per triangle
};

// The wavy grid, with its values looked up per corner.
inline FloorMesh FloorGrid(std::int64_t triangles) {
  const headless::MeshData grid = WavyMesh(triangles);
  const headless::MeshMapData &normals = grid.maps[0], &uvs = grid.maps[1];
  const auto copied = [](const headless::Array<float>& array) { return std::vector(array.begin(), array.end()); };
  FloorMesh mesh{copied(grid.points), copied(uvs.values), copied(normals.values), {}};
  for (const std::uint32_t point : grid.polygonPoints)
    mesh.corners.push_back({point, uvs.pointValues[point], normals.pointValues[point]});
  return mesh;
}

// Corners of a point with the same UV and normal are one vertex, looked for in a short list per point.
struct FloorFold {
  std::vector<std::uint32_t> indices;  // per corner
  std::vector<FloorCorner> vertices;
};

inline FloorFold Fold(const FloorMesh& mesh) {
  constexpr std::uint32_t kNone = 0xFFFFFFFFu;
  FloorFold fold;
  fold.indices.resize(mesh.corners.size());
  std::vector<std::uint32_t> heads(mesh.points.size() / 3, kNone), next;
  next.reserve(heads.size());
  fold.vertices.reserve(heads.size());
  std::uint32_t* index = fold.indices.data();
  for (const FloorCorner& corner : mesh.corners) {
    std::uint32_t vertex = heads[corner.point];
    while (vertex != kNone &&
           (fold.vertices[vertex].uv != corner.uv || fold.vertices[vertex].normal != corner.normal))
      vertex = next[vertex];
    if (vertex == kNone) {
      vertex = static_cast<std::uint32_t>(fold.vertices.size());
      fold.vertices.push_back(corner);
      next.push_back(heads[corner.point]);
      heads[corner.point] = vertex;
    }
    *index++ = vertex;
  }
  return fold;
}

template <std::size_t N>
std::vector<float> Gather(const std::vector<float>& table, const std::vector<FloorCorner>& vertices,
                          std::uint32_t FloorCorner::*which) {
  std::vector<float> values(N * vertices.size());
  float* out = values.data();
  for (const FloorCorner& vertex : vertices) out = std::copy_n(&table[N * (vertex.*which)], N, out);
  return values;
}

// One block of the file with its accessor.
struct FloorBlock {
  const void* data;
  std::uint32_t bytes, count;
  const char* accessor;  // JSON members behind the count
};

inline void WriteFloorGlb(const char* path, const FloorBlock (&blocks)[4], const std::string& bounds) {
  std::string views, accessors;
  std::uint32_t offset = 0;
  for (const FloorBlock& block : blocks) {
    const std::string comma = offset == 0 ? "" : ",";
    views += comma + R"({"buffer":0,"byteOffset":)" + std::to_string(offset) + R"(,"byteLength":)" +
             std::to_string(block.bytes) + "}";
    accessors += comma + R"({"bufferView":)" + std::to_string(&block - blocks) + R"(,"count":)" +
                 std::to_string(block.count) + block.accessor + (offset == 0 ? bounds : "") + "}";
    offset += block.bytes;
  }
  std::string json = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
                     R"("meshes":[{"primitives":[{"attributes":{"POSITION":0,"NORMAL":2,"TEXCOORD_0":3},)"
                     R"("indices":1}]}],"buffers":[{"byteLength":)" +
                     std::to_string(offset) + R"(}],"bufferViews":[)" + views + R"(],"accessors":[)" + accessors +
                     "]}";
  json.resize((json.size() + 3) / 4 * 4, ' ');
  const auto length = static_cast<std::uint32_t>(json.size());
  const std::uint32_t head[] = {0x46546C67, 2, 28 + length + offset, length, 0x4E4F534A};
  const std::uint32_t binHead[] = {offset, 0x004E4942};
  std::FILE* const file = std::fopen(path, "wb");
  if (!file) {
    std::perror(path);
    std::exit(1);
  }
  std::fwrite(head, 1, sizeof head, file);
  std::fwrite(json.data(), 1, length, file);
  std::fwrite(binHead, 1, sizeof binHead, file);
  for (const FloorBlock& block : blocks) std::fwrite(block.data, 1, block.bytes, file);
  if (std::fclose(file) != 0) {
    std::perror(path);
    std::exit(1);
  }
}

inline std::string Bounds(const std::vector<float>& positions) {
  constexpr float kMost = std::numeric_limits<float>::max();
  std::array<float, 3> low = {kMost, kMost, kMost}, high = {-kMost, -kMost, -kMost};
  for (std::size_t i = 0; i < positions.size(); i += 3)
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], positions[i + axis]);
      high[axis] = std::max(high[axis], positions[i + axis]);
    }
  const auto text = [](const std::array<float, 3>& v) {
    return "[" + std::to_string(v[0]) + "," + std::to_string(v[1]) + "," + std::to_string(v[2]) + "]";
  };
  return R"(,"min":)" + text(low) + R"(,"max":)" + text(high);
}

// Folds, gathers and writes; the V axis is turned as glTF wants it.
inline void WriteFolded(const FloorMesh& mesh, const char* path) {
  const FloorFold fold = Fold(mesh);
  const auto positions = Gather<3>(mesh.points, fold.vertices, &FloorCorner::point);
  const auto normals = Gather<3>(mesh.normals, fold.vertices, &FloorCorner::normal);
  auto uvs = Gather<2>(mesh.uvs, fold.vertices, &FloorCorner::uv);
  for (std::size_t i = 1; i < uvs.size(); i += 2) uvs[i] = 1 - uvs[i];
  const auto bytes = [](const auto& values) { return static_cast<std::uint32_t>(4 * values.size()); };
  const auto vertices = static_cast<std::uint32_t>(fold.vertices.size());
  constexpr const char* kVec3 = R"(,"type":"VEC3","componentType":5126)";
  WriteFloorGlb(path,
                {{positions.data(), bytes(positions), vertices, kVec3},
                 {fold.indices.data(), bytes(fold.indices), static_cast<std::uint32_t>(fold.indices.size()),
                  R"(,"type":"SCALAR","componentType":5125)"},
                 {normals.data(), bytes(normals), vertices, kVec3},
                 {uvs.data(), bytes(uvs), vertices, R"(,"type":"VEC2","componentType":5126)"}},
                Bounds(positions));
}

// Measures a step from where it is made.
class StepTimer {
 public:
  // Prints wall seconds and nanoseconds a corner, and the latter of processor time, which other programs disturb less.
  void Print(std::size_t corners) const {
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wall_;
    const double processor = static_cast<double>(std::clock() - processor_) / CLOCKS_PER_SEC;
    const double perCorner = 1e9 / static_cast<double>(corners);
    std::printf("%.4f s  %.1f ns/corner  (processor %.1f ns/corner)\n", wall.count(), wall.count() * perCorner,
                processor * perCorner);
  }

 private:
  std::chrono::steady_clock::time_point wall_ = std::chrono::steady_clock::now();
  std::clock_t processor_ = std::clock();
};

}  // namespace bench
