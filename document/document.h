// The glTF side of a save: the records that the scene walk fills, and the JSON arrays and binary blocks
// that WriteDocument makes of them at the very end.
#pragma once

#include "document/data_block.h"
#include "document/scene_records.h"
#include "host/insertion_map.h"

#include <rapidjson/document.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class GltfLogMsg;

using JsonValue = rapidjson::Value;
using JsonAllocator = rapidjson::MemoryPoolAllocator<>;

enum class GltfFormat : std::uint32_t { Glb = 0, Gltf = 1 };

// The arrays of the top-level keys. They exist while WriteDocument runs, and so does their allocator.
struct GltfJsonArrays {
  JsonValue scenes, nodes, meshes, buffers, bufferViews, accessors, materials, textures, images, samplers,
      animations, skins, cameras;
};

struct GltfDocument {
  GltfScene* CreateScene();

  GltfFormat format = GltfFormat::Glb;
  std::uint32_t indices32 = 1;                     // non-zero: 32-bit indices
  std::uint32_t skinnedMeshInWS = 1;               // exactly 1: skinned meshes come out in world space
  std::vector<std::unique_ptr<GltfScene>> scenes;  // one, made right after the document
  bool unlitUsed = false;                          // an unlit material was written
  GltfJsonArrays json;
  std::unique_ptr<JsonAllocator> allocator;
  std::vector<GltfDataBlock> dataBlocks;  // the binary buffer's contents in order
  // Indices of what is already written.
  InsertionMap<const GltfMaterial*, std::uint32_t> materialIndex;
  InsertionMap<const GltfTexture*, std::uint32_t> textureIndex;
  InsertionMap<std::string, std::uint32_t> imageIndex;  // by file path
  InsertionMap<const GltfNode*, std::uint32_t> nodeIndex;
  std::vector<GltfSkin*> skins;  // gathered while meshes are written; not owners
  GltfLogMsg* log = nullptr;
};

// Writes the document to the path, in the host's form with backslashes: the path itself for a .glb;
// for a .gltf the path with its extension replaced, the .bin and the image copies beside it. False when
// a file can't be opened or written. A document can be written once.
bool WriteDocument(GltfDocument& document, const std::string& filePath);

// Frees all records and blocks.
void ClearDocument(GltfDocument& document);

// WriteDocument's first step, makes the allocator and the thirteen arrays; and its last, frees them.
void OpenJson(GltfDocument& document);
void CloseJson(GltfDocument& document);
