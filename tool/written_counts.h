// How much of what a written document holds.
#pragma once

#include "tool/written_document.h"

#include <cstdint>

namespace tool {

struct WrittenCounts {
  std::uint64_t nodes = 0;
  std::uint64_t meshes = 0;
  std::uint64_t primitives = 0;
  std::uint64_t triangles = 0;
  std::uint64_t vertices = 0;
  std::uint64_t materials = 0;
  std::uint64_t textures = 0;
  std::uint64_t images = 0;
  std::uint64_t cameras = 0;
  std::uint64_t skins = 0;
  std::uint64_t clips = 0;
  std::uint64_t samples = 0;  // values of all sampled paths
  std::uint64_t bytes = 0;    // of all files
};

struct CountField {
  const char* name;
  std::uint64_t WrittenCounts::*count;
};

inline constexpr CountField kCountFields[] = {
    {"nodes", &WrittenCounts::nodes},           {"meshes", &WrittenCounts::meshes},
    {"primitives", &WrittenCounts::primitives}, {"triangles", &WrittenCounts::triangles},
    {"vertices", &WrittenCounts::vertices},     {"materials", &WrittenCounts::materials},
    {"textures", &WrittenCounts::textures},     {"images", &WrittenCounts::images},
    {"cameras", &WrittenCounts::cameras},       {"skins", &WrittenCounts::skins},
    {"clips", &WrittenCounts::clips},           {"samples", &WrittenCounts::samples},
    {"bytes", &WrittenCounts::bytes},
};

// All but the bytes. The document has been checked.
WrittenCounts CountWritten(const WrittenDocument& document);

}  // namespace tool
