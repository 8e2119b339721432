// A text and a buffer as a .glb and as a .gltf with its .bin, and the bytes as they are as a .glb: found at fault
// with a reason, or such that every accessor and view lies within the buffer.
#include "fuzz/fuzz_support.h"
#include "headless/scene_data.h"
#include "tool/output_check.h"
#include "tool/written_counts.h"

#include <cmath>
#include <cstring>
#include <optional>

namespace {

std::string U32(std::size_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

std::string Glb(std::string_view text, std::string_view buffer) {
  return "glTF" + U32(2) + U32(28 + text.size() + buffer.size()) + U32(text.size()) + "JSON" + std::string(text) +
         U32(buffer.size()) + std::string("BIN\0", 4) + std::string(buffer);
}

void RequireWithin(const tool::WrittenDocument& document) {
  const tool::OutputOutline& outline = document.outline;
  const std::size_t length = document.buffer.size();
  fuzz::Require(outline.bufferLength == length, "the buffer has its length");
  for (const tool::OutlineView& view : outline.views)
    fuzz::Require(view.byteOffset <= length && view.byteLength <= length - view.byteOffset, "views lie within");
  for (const tool::OutlineAccessor& accessor : outline.accessors) {
    fuzz::Require(accessor.bufferView < outline.views.size(), "accessors have views");
    const tool::OutlineView& view = outline.views[accessor.bufferView];
    fuzz::Require(accessor.components == 0 || accessor.count <= view.byteLength, "accessors lie within");
  }
}

// What is found; none when the file is accepted.
std::optional<std::string> FaultOf(const std::filesystem::path& file, const headless::SceneData& scene) {
  try {
    double last = 0;
    const tool::WrittenDocument document = tool::CheckOutput(file, scene, [&](double share) {
      fuzz::Require(share >= last && share <= 1, "the share that is checked grows up to 1");
      last = share;
    });
    RequireWithin(document);
    tool::CountWritten(document);
    return std::nullopt;
  } catch (const tool::WriteFault& fault) {
    fuzz::Require(std::strlen(fault.what()) > 0, "a fault says what it is");
    return fault.what();
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto glb = fuzz::Folder() / "a.glb", gltf = fuzz::Folder() / "a.gltf";
  headless::SceneData scene = headless::MakeScene();
  scene.directory = fuzz::Folder().string();
  const auto pieces = fuzz::Pieces(data, size, 2);
  fuzz::WriteFile(glb, Glb(pieces[0], pieces[1]));
  const auto ofGlb = FaultOf(glb, scene);
  fuzz::WriteFile(gltf, pieces[0]);
  fuzz::WriteFile(fuzz::Folder() / "a.bin", pieces[1]);
  const auto ofGltf = FaultOf(gltf, scene);
  fuzz::Require(ofGlb == ofGltf,
                "both forms have the same faults: " + ofGlb.value_or("none") + " and " + ofGltf.value_or("none"));
  fuzz::WriteFile(glb, {reinterpret_cast<const char*>(data), size});
  FaultOf(glb, scene);
  return 0;
}
