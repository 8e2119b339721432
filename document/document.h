// The glTF side of a save: the records that the scene walk fills, and the JSON arrays and binary blocks
// that WriteDocument makes of them at the very end.
#pragma once

#include "document/data_block.h"
#include "document/json_text.h"
#include "document/scene_records.h"
#include "host/insertion_map.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class GltfLogMsg;

enum class GltfFormat : std::uint32_t { Glb = 0, Gltf = 1 };

// A node of the file, by its index. It becomes text when all that it refers to is known.
struct WrittenNode {
  const GltfNode* node = nullptr;
  std::optional<std::uint32_t> mesh, camera;
  std::vector<std::uint32_t> skins;
};

// The one buffer. Its length is a 32-bit sum.
struct GltfBuffer {
  std::uint32_t byteLength = 0;
  std::string uri;  // empty in a .glb
};

// What stands under the top-level keys. It exists while WriteDocument runs.
struct GltfJson {
  JsonArray scenes, nodes, meshes, bufferViews, accessors, materials, textures, images, samplers, animations,
      skins, cameras;
  GltfBuffer buffer;
  std::vector<WrittenNode> writtenNodes;  // "nodes" less its text
};

struct GltfDocument {
  GltfScene* CreateScene();

  GltfFormat format = GltfFormat::Glb;
  std::uint32_t indices32 = 1;                     // non-zero: 32-bit indices
  std::uint32_t skinnedMeshInWS = 1;               // exactly 1: skinned meshes come out in world space
  std::vector<std::unique_ptr<GltfScene>> scenes;  // one, made right after the document
  bool unlitUsed = false;                          // an unlit material was written
  std::optional<GltfJson> json;
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
