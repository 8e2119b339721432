// What a hostile importer may leave behind: its report, its scene and the scene's arrays. It is refused in one
// plain line that names the model, or is a scene that can be exported or refused with a known error.
#include "fuzz/exported_scene.h"
#include "fuzz/fuzz_support.h"
#include "readers/foreign_reader.h"
#include "readers/import_names.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostWarnings = 1001;

void RequirePlain(const std::string& text) {
  fuzz::Require(std::none_of(text.begin(), text.end(),
                             [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }),
                "what is shown holds no control characters: " + text);
}

void CheckReport(const readers::ReadReport& report, const fs::path& model, const fs::path& directory) {
  fuzz::Require(report.warnings.size() <= kMostWarnings, "there are only so many warnings");
  for (const std::string& warning : report.warnings) {
    fuzz::Require(warning.starts_with(model.string() + ": "), "a warning names the model: " + warning);
    RequirePlain(warning);
  }
  for (const fs::path& image : report.temporaryImages)
    fuzz::Require(image.parent_path() == directory / readers::kStagedTextures && fs::is_regular_file(image),
                  "images lie where the importer may write: " + image.string());
  for (const fs::path& other : report.files)
    fuzz::Require(other.lexically_normal().string().starts_with(model.parent_path().string() + "/"),
                  "nothing was read outside the model's folder: " + other.string());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fs::path directory = fuzz::Folder() / "staged", model = fuzz::Folder() / "model" / "m.fbx";
  fs::create_directories(directory / readers::kStagedTextures);
  fs::create_directories(model.parent_path());
  fuzz::WriteFile(directory / readers::kStagedTextures / "t.png", "\x89PNG\r\n");
  const auto pieces = fuzz::Pieces(data, size, 3);
  fuzz::WriteFile(directory / readers::kStagedReport, pieces[0]);
  fuzz::WriteFile(directory / readers::kStagedScene, pieces[1]);
  fuzz::WriteFile(directory / "scene.bin", pieces[2]);
  readers::ReadOptions options;
  options.importMemory = 1 << 20;
  readers::ReadReport report;
  try {
    headless::SceneData scene = readers::ReadImported(model, directory, options, report);
    fuzz::Require(scene.directory == model.parent_path(), "images are looked for beside the model");
    CheckReport(report, model, directory);
    if (fuzz::IsSmall(scene))
      fuzz::ExportScene(std::move(scene), fuzz::Folder() / "scene.glb", fuzz::Refusal::Allowed);
  } catch (const readers::InputError& error) {
    fuzz::RequirePlace(error, model);
    RequirePlain(error.what());
  }
  return 0;
}
