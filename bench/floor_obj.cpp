// The least work from an OBJ file to a .glb, to measure the command against:
//
//     floor_obj INPUT.obj OUTPUT.glb
//
// takes triangles with UVs and normals whose indices count from the start of the file, and nothing else. Prints
// seconds and nanoseconds a corner from the opening of the input to the closing of the output.
#include "bench/floor_mesh.h"

#include <fast_float/fast_float.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Text {
  const char* begin;
  const char* end;
};

Text MapFile(const char* path) {
  const int file = open(path, O_RDONLY);
  struct stat status = {};
  if (file < 0 || fstat(file, &status) != 0) {
    std::perror(path);
    std::exit(1);
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
  close(file);
  const char* const begin = static_cast<const char*>(address);
  return {begin, begin + size};
}

const char* ReadFloats(const char* text, const char* end, int count, std::vector<float>& values) {
  for (; count > 0; --count) {
    while (*text == ' ') ++text;
    float value = 0;
    text = fast_float::from_chars(text, end, value).ptr;
    values.push_back(value);
  }
  return text;
}

const char* ReadIndex(const char* text, std::uint32_t& index) {
  std::uint32_t number = 0;
  for (; *text >= '0' && *text <= '9'; ++text) number = number * 10 + static_cast<std::uint32_t>(*text - '0');
  index = number - 1;
  return text + 1;  // behind a slash, blank or line end
}

bench::FloorMesh ParseText(Text text) {
  bench::FloorMesh mesh;
  const char* at = text.begin;
  while (at < text.end) {
    if (at[0] == 'v' && at[1] == ' ') {
      at = ReadFloats(at + 2, text.end, 3, mesh.points) + 1;
    } else if (at[0] == 'v' && at[1] == 't') {
      at = ReadFloats(at + 3, text.end, 2, mesh.uvs) + 1;
    } else if (at[0] == 'v' && at[1] == 'n') {
      at = ReadFloats(at + 3, text.end, 3, mesh.normals) + 1;
    } else if (at[0] == 'f') {
      at += 2;
      for (int place = 0; place < 3; ++place) {
        bench::FloorCorner corner;
        at = ReadIndex(at, corner.point);
        at = ReadIndex(at, corner.uv);
        at = ReadIndex(at, corner.normal);
        mesh.corners.push_back(corner);
      }
    } else {
      while (at < text.end && *at++ != '\n') {
      }
    }
  }
  return mesh;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: floor_obj INPUT.obj OUTPUT.glb\n");
    return 2;
  }
  const bench::StepTimer timer;
  const bench::FloorMesh mesh = ParseText(MapFile(argv[1]));
  bench::WriteFolded(mesh, argv[2]);
  timer.Print(mesh.corners.size());
}
