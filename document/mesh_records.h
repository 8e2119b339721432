// Plain records of a document: meshes and skins.
//
// A corner is one vertex of one triangle, counted over the mesh: corner 3t + c is place c of triangle t. Corners
// that share their point and all of their values make one wedge: what becomes a vertex in each primitive that
// shows it.
#pragma once

#include "host/insertion_map.h"
#include "host/matrix4.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct GltfNode;
struct GltfMaterial;

struct GltfColorMap {
  std::vector<std::array<float, 4>> data;  // one per wedge: R, G, B, A
};

struct GltfUvMap {
  std::vector<std::array<float, 2>> data;  // one per wedge: U, V with the host's V axis, which points up
};

struct GltfTangentMap {
  std::vector<std::uint32_t> indices;      // one per wedge; may lie beyond `data`, see tangent_table.h
  std::vector<std::array<float, 6>> data;  // tangent x, y, z, bitangent x, y, z
};

// Influences hang on points: the three tables have an entry per point of the mesh.
struct GltfSkin {
  // Fills the point's next free place. False, and nothing changed, when all four are taken.
  bool AddInfluence(std::uint32_t point, float weight, std::uint32_t joint);
  // Appends zeroed entries for n points.
  void ExtendPoints(std::uint32_t n);

  std::string name;               // written also when empty
  std::vector<GltfNode*> joints;  // the first is the "skeleton"
  std::vector<Matrix4> inverseBindMatrices;
  GltfNode* node = nullptr;                         // receives the "skin" key; set while the mesh is written
  std::vector<std::array<double, 4>> jointIndices;  // joint number per influence
  std::vector<std::array<double, 4>> jointWeights;
  std::vector<std::uint32_t> influenceCount;  // used places of the two rows above
};

struct GltfMesh {
  GltfColorMap* CreateColorMap();
  GltfTangentMap* CreateTangentMap();
  GltfUvMap* CreateUvMap();
  GltfSkin* AddSkin(std::unique_ptr<GltfSkin> skin);
  void AddPosition(double x, double y, double z) { positions.push_back({x, y, z}); }
  // Frees what is there per corner, wedge and point, that of the skins included.
  void FreeArrays();

  std::uint32_t triangleCount = 0;
  std::vector<std::uint32_t> wedgeIndex;                     // one per corner, numbered by first sight
  std::vector<std::uint32_t> positionIndex;                  // one per wedge, into `positions`
  std::vector<std::unique_ptr<GltfColorMap>> colorMaps;      // order gives COLOR_n
  std::vector<std::unique_ptr<GltfTangentMap>> tangentMaps;  // only the first is written
  std::vector<std::array<double, 3>> normals;                // one per wedge, normalised
  std::vector<std::unique_ptr<GltfUvMap>> uvMaps;            // order gives TEXCOORD_n
  InsertionMap<std::string, std::uint32_t> uvIndexByName;    // place in `uvMaps`
  // Triangle numbers per material tag, in order of first sight; one entry makes one primitive.
  InsertionMap<std::string, std::vector<std::uint32_t>> polygonsByTag;
  InsertionMap<std::string, std::vector<std::uint32_t>> polygonsByPart;  // not written
  GltfNode* node = nullptr;                                              // the last node SetMesh gave it
  std::uint32_t nodeCount = 0;                                           // nodes SetMesh gave it
  InsertionMap<std::string, GltfMaterial*> materialByTag;                // a tag not found here gets material 0
  std::vector<std::unique_ptr<GltfSkin>> skins;  // place gives the n of JOINTS_n, WEIGHTS_n
  std::vector<std::array<double, 3>> positions;  // one per point, object space
};
