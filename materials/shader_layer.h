// One item of the shader tree, sorted by the family of shaders that it belongs to.
#pragma once

#include "saver/save_state.h"

enum class ShaderFamily : std::uint32_t { Null = 0, Orvo = 1, Unreal = 2, Unity = 3, Gltf = 4, Other = 5 };
enum class LayerKind : std::uint32_t { Null = 0, Mask = 1, Material = 2, ImageMap = 3, Other = 4 };

constexpr const char* kShaderFamilyNames[] = {"Null", "Orvo", "Unreal", "Unity", "GLTF", "Other"};
constexpr const char* kLayerKindNames[] = {"Null", "Mask", "Material", "ImageMap", "Other"};

struct ShaderLayer {
  IZyItem* item = nullptr;     // not owned
  const char* name = nullptr;  // the item's user name, set when valid
  ShaderFamily family = ShaderFamily::Null;
  LayerKind kind = LayerKind::Null;
  bool valid = false;             // there is an item at all
  bool enabled = false;           // its "enable" channel is above 0; false without that channel
  const char* effect = nullptr;   // what an image map drives, null for other kinds
  const char* channel = nullptr;  // the effect as a constant of the program, when it is an Orvo or a glTF one
};

// Reads the item in the edit state. A null item gives a layer that isn't valid.
ShaderLayer ClassifyLayer(const SaveState& state, IZyItem* item);
