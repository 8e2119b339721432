#include "fuzz/exported_scene.h"

#include "fuzz/fuzz_support.h"
#include "headless/host.h"
#include "tests/support/glb_reader.h"
#include "tests/support/save_runner.h"
#include "tool/image_copies.h"
#include "tool/image_paths.h"
#include "tool/output_check.h"
#include "tool/output_error.h"
#include "tool/written_counts.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>

namespace fuzz {
namespace {

constexpr double kMostSamples = 2000;

// As SettleImages of tool/export_job.cpp.
bool SettleImages(headless::SceneData& scene, const std::filesystem::path& file) {
  tool::ImageReport report;
  tool::SettleImagePaths(scene, {{file.parent_path()}, {}}, report);
  if (tool::KindOf(file) == tool::OutputKind::Glb) return true;
  try {
    tool::CheckImageCopies(scene, file, file.parent_path() / "scene.orvo", report);
    return true;
  } catch (const tool::OutputError&) {
    return false;
  }
}

void ReadBack(const std::filesystem::path& file, const tool::WrittenDocument& document) {
  const tool::WrittenCounts counts = tool::CountWritten(document);
  try {
    const test_support::GltfFile read = test_support::ReadGltfFile(file);
    const auto nodes = read.json.FindMember("nodes");
    Require(counts.nodes == (nodes == read.json.MemberEnd() ? 0 : nodes->value.Size()), "both readers agree");
  } catch (const std::runtime_error& fault) {
    Require(false, std::string("what the check accepts can be read: ") + fault.what());
  }
}

zyresult Save(headless::Host& host, const std::filesystem::path& file) {
  const test_support::LoadedModule module(host);
  const bool isGlb = tool::KindOf(file) == tool::OutputKind::Glb;
  return module.NewSaver(isGlb ? "gltf.bin" : "gltf.gltf")
      .Raw()
      ->Save(host.Scene(), test_support::HostPath(file).c_str(), nullptr);
}

}  // namespace

bool IsSmall(const headless::SceneData& scene) {
  for (const headless::ItemData& item : scene.items) {
    if (item.type != "scene") continue;
    const auto number = [&](const char* name) {
      const int channel = headless::FindChannel(item, name);
      const auto* value =
          channel < 0 ? nullptr : std::get_if<double>(&item.channels[static_cast<std::size_t>(channel)].setup);
      return value ? *value : 0.0;
    };
    if (!((number("currentE") - number("currentS")) * number("fps") < kMostSamples)) return false;
  }
  return true;
}

bool ExportScene(headless::SceneData scene, const std::filesystem::path& file, Refusal refusal) {
  scene.userValues.try_emplace("sceneio.gltf.save.exportType", 0);
  if (!SettleImages(scene, file)) return false;
  std::string reason;
  {
    headless::Host host(std::move(scene));
    const zyresult result = Save(host, file);
    Require(host.LiveObjects() == 0, "the saver lets go of all objects");
    constexpr zyresult kKnown[] = {ZYe_OK, ZYe_FAILED, ZYe_NO_INTERFACE, ZYe_NO_FRAME};
    Require(std::count(std::begin(kKnown), std::end(kKnown), result) != 0, "a result code that is known");
    if (result != ZYe_OK) {
      reason = "code " + std::to_string(result);
    } else {
      try {
        ReadBack(file, tool::CheckOutput(file, host.Data(), [](double) {}));
      } catch (const tool::WriteFault& fault) {
        reason = fault.what();
        Require(!reason.empty(), "a fault says what it is");
      }
    }
  }
  Require(reason.empty() || refusal == Refusal::Allowed, "the export goes through: " + reason);
  return reason.empty();
}

}  // namespace fuzz
