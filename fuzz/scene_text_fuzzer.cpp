// Scene text, and behind a cut the numbers of the array file beside it: it is refused with a place, or can be
// exported or refused with a known error.
#include "fuzz/exported_scene.h"
#include "fuzz/fuzz_support.h"
#include "readers/read_scene.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = fuzz::Folder() / "scene.orvo";
  const auto pieces = fuzz::Pieces(data, size, 2);
  fuzz::WriteFile(file, pieces[0]);
  fuzz::WriteFile(fuzz::Folder() / "a.bin", pieces[1]);
  try {
    readers::ReadReport report;
    headless::SceneData scene = readers::ReadScene(file, report);
    if (fuzz::IsSmall(scene))
      fuzz::ExportScene(std::move(scene), fuzz::Folder() / "scene.glb", fuzz::Refusal::Allowed);
  } catch (const readers::InputError& error) {
    fuzz::RequirePlace(error, file);
  }
  return 0;
}
