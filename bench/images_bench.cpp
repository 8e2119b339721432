// Pouring image files into a .glb's buffer, in bytes a second, as pieces of sixteen mebibytes altogether.
#include "document/images.h"
#include "tests/support/host_directory.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr std::int64_t kAllBytes = 16 << 20;

void EmbedImages(benchmark::State& state) {
  const test_support::HostDirectory directory;
  const auto bytes = static_cast<std::size_t>(state.range(0));
  const std::string image = directory.WriteFile("image.png", std::string(bytes, 'x'));
  for (auto _ : state) {
    FileStream stream(directory.HostPath("poured"));
    for (std::int64_t done = 0; done < kAllBytes; done += state.range(0))
      EmbedImage(stream, image, static_cast<std::uint32_t>(bytes));
    benchmark::DoNotOptimize(stream.Close());
  }
  state.SetBytesProcessed(state.iterations() * kAllBytes);
}
BENCHMARK(EmbedImages)->Arg(4 << 10)->Arg(256 << 10)->Arg(16 << 20)->Unit(benchmark::kMillisecond);

}  // namespace
