#include "tool/export_plan.h"

#include "tool/written_document.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

// Nanoseconds on one machine, by the scenes that bench/run.sh makes; only their ratios count.
constexpr double kScanTriangle = 840, kWriteTriangle = 140, kCheckTriangle = 13, kMoveTriangle = 55;
constexpr double kSampleItem = 1750, kWriteItem = 240, kCheckItem = 55, kMoveItem = 125;
constexpr double kAnyScene = 1e6;  // so that no stage is without work

constexpr std::int32_t kWholeScene = 0;

// A key takes 16 bytes at least, and all of them stand in one buffer of 4 GiB.
constexpr double kMostSamples = 268435456;

std::int32_t UserValueOf(const headless::SceneData& scene, const char* name, std::int32_t otherwise) {
  const auto found = scene.userValues.find(std::string("sceneio.gltf.save.") + name);
  return found == scene.userValues.end() ? otherwise : found->second;
}

double SceneNumber(const headless::SceneData& scene, const char* name) {
  for (const headless::ItemData& item : scene.items) {
    const std::int32_t place = item.type == "scene" ? headless::FindChannel(item, name) : -1;
    if (place < 0) continue;
    if (const auto* number = std::get_if<double>(&item.channels[static_cast<std::size_t>(place)].setup))
      return *number;
  }
  return 0;
}

// Keyed channels have items of their own, the transforms of a locator's stack, so this is about the number of what
// moves.
std::uint64_t CountKeyedItems(const headless::SceneData& scene) {
  return static_cast<std::uint64_t>(
      std::count_if(scene.items.begin(), scene.items.end(), [](const headless::ItemData& item) {
        return item.world ||
               std::any_of(item.channels.begin(), item.channels.end(), [](const headless::ChannelData& channel) {
                 return channel.extras->envelope.has_value();
               });
      }));
}

double SecondsOf(const headless::SceneData& scene) {
  return SceneNumber(scene, "currentE") - SceneNumber(scene, "currentS");
}

// Samples a second.
double RateOf(const headless::SceneData& scene) {
  return SceneNumber(scene, "fps") * (UserValueOf(scene, "sampleAnimFpsMultiplier", 0) == 1 ? 2 : 1);
}

bool IsAnimated(const headless::ItemData& item) {
  return item.type == "ikFullBody" ||
         std::any_of(item.channels.begin(), item.channels.end(), [](const headless::ChannelData& channel) {
           return channel.extras->envelope || channel.extras->setupEnvelope || channel.extras->linkCount;
         });
}

std::uint64_t CountReads(const headless::SceneData& scene) {
  if (UserValueOf(scene, "animation", 1) == 0) return 0;
  const double seconds = SecondsOf(scene);
  const double rate = RateOf(scene);
  // Clips have ranges of their own; that of the scene stands in for each.
  const auto clips = std::count_if(scene.items.begin(), scene.items.end(),
                                   [](const headless::ItemData& item) { return item.clip.has_value(); });
  const double passes =
      UserValueOf(scene, "exportActionType", kWholeScene) == kWholeScene ? 1 : static_cast<double>(clips);
  const double reads = passes * (seconds * rate + 1);
  return reads > 0 && reads < 1e12 ? static_cast<std::uint64_t>(reads) : 0;
}

// Of the whole file, as a .glb's header says; 0 when that isn't written yet.
std::uint64_t AnnouncedBytes(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 12> header{};
  if (!stream.read(header.data(), header.size())) return 0;
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < 4; ++i) bytes |= std::uint64_t{static_cast<unsigned char>(header[8 + i])} << (8 * i);
  return bytes;
}

double ShareOf(std::uint64_t done, std::uint64_t all) {
  return all == 0 ? 0 : static_cast<double>(done) / static_cast<double>(all);
}

}  // namespace

std::optional<std::string> FindTimeFault(const headless::SceneData& scene) {
  const double samples = SecondsOf(scene) * RateOf(scene);
  if (!(samples >= kMostSamples) || UserValueOf(scene, "animation", 1) == 0) return std::nullopt;
  if (scene.channelLinks.empty() && std::none_of(scene.items.begin(), scene.items.end(), IsAnimated))
    return std::nullopt;
  return fmt::format("{:g} s at {:g} samples a second; an animation has at most {:.0f}", SecondsOf(scene),
                     RateOf(scene), kMostSamples);
}

ExportWork PlanExport(const headless::SceneData& scene) {
  ExportWork work;
  if (UserValueOf(scene, "geometry", 1) != 0)
    for (const headless::ItemData& item : scene.items)
      if (item.mesh)
        work.triangles +=
            std::max<std::uint64_t>(item.mesh->polygonPoints.size() -
                                        std::min<std::uint64_t>(item.mesh->polygonPoints.size(),
                                                                std::uint64_t{2} * item.mesh->PolygonCount()),
                                    item.mesh->trianglePoints.size() / 3);
  work.reads = CountReads(scene);
  const auto triangles = static_cast<double>(work.triangles);
  const double keys = static_cast<double>(work.reads) * static_cast<double>(CountKeyedItems(scene));
  work.costs[PlaceOf(Stage::Scanning)] = kAnyScene + triangles * kScanTriangle;
  work.costs[PlaceOf(Stage::Sampling)] = keys * kSampleItem;
  work.costs[PlaceOf(Stage::Writing)] = kAnyScene + triangles * kWriteTriangle + keys * kWriteItem;
  work.costs[PlaceOf(Stage::Verifying)] = kAnyScene + triangles * kCheckTriangle + keys * kCheckItem;
  work.costs[PlaceOf(Stage::Moving)] = kAnyScene + triangles * kMoveTriangle + keys * kMoveItem;
  return work;
}

void FollowLog(const headless::LogLine& line, Stages& stages) {
  struct Mark {
    std::string_view text;
    Stage stage;
  };
  static constexpr Mark kMarks[] = {{"Creating materials", Stage::Writing},
                                    {"Sampling...", Stage::Sampling},
                                    {"Deinit FbxCurves after sampling...", Stage::Writing}};
  if (line.kind != headless::LogLine::Kind::Info) return;
  for (const Mark& mark : kMarks) {
    if (line.text != mark.text) continue;
    stages.SetDone(Stage::Scanning, 1);
    stages.Begin(mark.stage);
  }
}

void LookAtExport(const ExportWork& work, const headless::Demand& asked, const fs::path& file, Stages& stages) {
  stages.SetDone(Stage::Scanning, ShareOf(asked.triangles.Get(), work.triangles));
  stages.SetDone(Stage::Sampling, ShareOf(asked.reads.Get(), work.reads));
  std::error_code error;
  const std::uintmax_t written = fs::file_size(file, error);
  if (error || KindOf(file) != OutputKind::Glb) return;  // a .gltf doesn't say how long its .bin will be
  stages.SetDone(Stage::Writing, ShareOf(written, AnnouncedBytes(file)));
}

}  // namespace tool
