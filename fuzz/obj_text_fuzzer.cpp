// OBJ text, and behind a cut the text of the material library "m.mtl": refused with a line, or a scene whose
// export goes through.
#include "fuzz/exported_scene.h"
#include "fuzz/fuzz_support.h"
#include "readers/read_scene.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = fuzz::Folder() / "scene.obj";
  const auto pieces = fuzz::Pieces(data, size, 2);
  fuzz::WriteFile(file, pieces[0]);
  fuzz::WriteFile(fuzz::Folder() / "m.mtl", pieces[1]);
  try {
    readers::ReadReport report;
    headless::SceneData scene = readers::ReadScene(file, report);
    for (const std::string& warning : report.warnings) fuzz::Require(!warning.empty(), "a warning says something");
    fuzz::ExportScene(std::move(scene), fuzz::Folder() / "scene.glb", fuzz::Refusal::Allowed);
  } catch (const readers::InputError& error) {
    fuzz::RequirePlace(error, file);
  }
  return 0;
}
