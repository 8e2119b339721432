// Reading OBJ text, in bytes a second, on a wavy grid of a million triangles with texture coordinates and normals.
#include "readers/obj_meshes.h"
#include "readers/obj_parser.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <string>

namespace {

std::string WavyGrid(int side) {
  std::string text = "o Grid\n";
  const auto out = std::back_inserter(text);
  const auto forEachPoint = [side](auto&& write) {
    for (int y = 0; y <= side; ++y)
      for (int x = 0; x <= side; ++x) write(x, y);
  };
  forEachPoint([&](int x, int y) {
    fmt::format_to(out, "v {:.6f} {:.6f} {:.6f}\n", x * 0.013, y * 0.017, std::sin(x * 0.1) * std::cos(y * 0.13));
  });
  forEachPoint([&](int x, int y) {
    fmt::format_to(out, "vt {:.6f} {:.6f}\n", static_cast<double>(x) / side, static_cast<double>(y) / side);
  });
  forEachPoint([&](int x, int y) {
    fmt::format_to(out, "vn {:.4f} {:.4f} 0.5000\n", std::sin(x * 0.3) * 0.6, std::cos(y * 0.2) * 0.6);
  });
  text += "usemtl Grid\ns 1\n";
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const int a = y * (side + 1) + x + 1;
      const int c = a + side + 1;
      fmt::format_to(out, "f {0}/{0}/{0} {1}/{1}/{1} {2}/{2}/{2}\n", a, a + 1, c + 1);
      fmt::format_to(out, "f {0}/{0}/{0} {1}/{1}/{1} {2}/{2}/{2}\n", a, c + 1, c);
    }
  }
  return text;
}

const std::string& MillionTriangles() {
  static const std::string text = WavyGrid(707);
  return text;
}

void ParseText(benchmark::State& state) {
  const std::string& text = MillionTriangles();
  for (auto _ : state) benchmark::DoNotOptimize(readers::ParseObj(text, "grid.obj", "grid"));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void ReadMeshes(benchmark::State& state) {
  const std::string& text = MillionTriangles();
  for (auto _ : state) {
    readers::ObjData data = readers::ParseObj(text, "grid.obj", "grid");
    benchmark::DoNotOptimize(readers::BuildMeshes(data));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK(ParseText)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadMeshes)->Unit(benchmark::kMillisecond);

}  // namespace
