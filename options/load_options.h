// What a loader of scenes would be told. The module has no loader: it only stores the options.
#pragma once

#include <cstdint>

struct LoadOptions {
  bool loadGeometry = true;
  bool loadMaterials = true;
  bool loadCameras = true;
  bool loadLights = true;
  bool loadMeshSmoothing = true;
  bool loadBlendShapes = true;
  bool loadPolygonParts = true;
  bool loadSelectionSets = true;
  bool loadAnimation = true;
  bool loadSampleAnimation = true;
  bool loadNormals = true;
  bool invertMatTranAmt = false;
  bool useMatTranColAsTranAmt = false;
  bool changeTextureEffect = false;
  std::uint32_t loadSampleAnimationRate = 0;  // a choice of kSampleRates
  std::uint32_t mergeWithExistingItems = 0;   // 0 or 1
  double globalScalingFactor = 1.0;
  std::uint32_t importUnits = 0;  // a choice of kImportUnits
};
