// What the plug-in wrote, read back.
#pragma once

#include "readers/mapped_file.h"
#include "tool/output_outline.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

namespace tool {

// A fault of what was written. what() is the reason alone.
class WriteFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class OutputKind { Glb, Gltf };

// By the extension in any case; .gltf for anything else.
OutputKind KindOf(const std::filesystem::path& file);

// The extension as the savers write it.
const char* ExtensionOf(OutputKind kind);

struct WrittenDocument {
  std::shared_ptr<const readers::MappedFile> file, binary;  // the second of a .gltf alone
  std::span<const std::byte> json;
  std::span<const std::byte> buffer;
  OutputOutline outline;  // of the JSON, filled by its check
};

// Maps a .glb, or a .gltf with the .bin beside it, and checks the lengths of the container. Throws WriteFault.
WrittenDocument OpenDocument(const std::filesystem::path& file);

}  // namespace tool
