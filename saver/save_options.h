// The saver's options: host user values, which the saver only reads.
#pragma once

#include <cstdint>

struct SaveOptions {
  std::int32_t exportType = 1;               // 0 all items, 1 selected, 2 selected with hierarchies, else none
  std::int32_t geometry = 1;                 // non-zero
  std::int32_t materials = 1;                // non-zero
  std::int32_t cameras = 1;                  // non-zero
  std::int32_t animation = 1;                // non-zero
  std::int32_t morphMaps = 1;                // exactly 1: skins are made
  std::int32_t skinnedMeshInWS = 1;          // exactly 1
  std::int32_t tangentsBitangents = 0;       // non-zero
  std::int32_t indicesExport = 0;            // 0: 16-bit indices
  std::int32_t sampleAnimFpsMultiplier = 0;  // exactly 1 doubles the sample rate
  std::int32_t exportActionType = 0;         // 0 the scene, 1 every action, 2 the active action
};

// Reads the user values "sceneio.gltf.save.*"; a value that doesn't answer keeps its default, one that
// answers without an integer becomes -1.
SaveOptions ReadSaveOptions();
