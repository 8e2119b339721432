// The least work from a mesh in memory to a .glb, to measure the saver's own step against:
//
//     floor_fold TRIANGLES OUTPUT.glb
//
// folds the corners of a wavy grid with normals and a UV map, gathers the vertices and writes the file. Prints
// seconds and nanoseconds a corner of that, without the making of the grid.
#include "bench/bench_scenes.h"
#include "bench/floor_mesh.h"

namespace {

template <class T>
std::vector<T> Copied(const headless::Array<T>& array) {
  return {array.begin(), array.end()};
}

bench::FloorMesh MakeGrid(std::int64_t triangles) {
  const headless::MeshData grid = bench::WavyMesh(triangles);
  bench::FloorMesh mesh{Copied(grid.points), Copied(grid.maps[1].values), Copied(grid.maps[0].values), {}};
  for (const std::uint32_t point : grid.polygonPoints)
    mesh.corners.push_back({point, grid.maps[1].pointValues[point], grid.maps[0].pointValues[point]});
  return mesh;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || std::atoll(argv[1]) < 2) {
    std::fprintf(stderr, "usage: floor_fold TRIANGLES OUTPUT.glb\n");
    return 2;
  }
  const bench::FloorMesh mesh = MakeGrid(std::atoll(argv[1]));
  const auto start = std::chrono::steady_clock::now();
  bench::WriteFolded(mesh, argv[2]);
  bench::PrintTime(start, mesh.corners.size());
}
