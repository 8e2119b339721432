// The least work from a mesh in memory to a .glb, to measure the saver's own step against:
//
//     floor_fold TRIANGLES OUTPUT.glb
//
// folds the corners of a wavy grid with normals and a UV map, gathers the vertices and writes the file. Prints
// seconds and nanoseconds a corner of that, without the making of the grid.
#include "bench/floor_mesh.h"

int main(int argc, char** argv) {
  if (argc != 3 || std::atoll(argv[1]) < 2) {
    std::fprintf(stderr, "usage: floor_fold TRIANGLES OUTPUT.glb\n");
    return 2;
  }
  const bench::FloorMesh mesh = bench::FloorGrid(std::atoll(argv[1]));
  const bench::StepTimer timer;
  bench::WriteFolded(mesh, argv[2]);
  timer.Print(mesh.corners.size());
}
