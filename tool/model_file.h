// Reads a .glb or a .gltf with all its files as one .glb that needs nothing beside it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

struct ReadFile {
  std::string name;  // as the model names it
  std::filesystem::path path;
  std::uint64_t size = 0;  // in bytes
};

struct ModelFile {
  std::string glb;                    // one buffer; images in views of it, with the type that they begin like
  std::vector<ReadFile> files;        // the model's own first
  std::vector<std::string> warnings;  // what a viewer won't show, a line each
};

// Files beside the model are read from its folder and those below only. Throws readers::InputError.
ModelFile ReadModelFile(const std::filesystem::path& file);

}  // namespace tool
