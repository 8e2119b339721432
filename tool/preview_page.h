// One HTML page that shows a model, with viewer and model packed in.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

// Shows a .glb, or a .gltf with its files, and the warnings that came with it. The page stands in its place only
// when it is whole. Throws readers::InputError when the model can't be read, OutputError when the page can't be
// written or the installation lacks the viewer.
void WritePreviewPage(const std::filesystem::path& model, const std::filesystem::path& page,
                      const std::vector<std::string>& warnings = {});

}  // namespace tool
