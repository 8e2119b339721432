#include "saver/save_options.h"

#include "host/user_services.h"

namespace {

struct OptionRow {
  const char* userValue;
  std::int32_t SaveOptions::*field;
};

// In the order in which they are read.
constexpr OptionRow kOptions[] = {
    {"sceneio.gltf.save.exportType", &SaveOptions::exportType},
    {"sceneio.gltf.save.geometry", &SaveOptions::geometry},
    {"sceneio.gltf.save.materials", &SaveOptions::materials},
    {"sceneio.gltf.save.cameras", &SaveOptions::cameras},
    {"sceneio.gltf.save.animation", &SaveOptions::animation},
    {"sceneio.gltf.save.morphMaps", &SaveOptions::morphMaps},
    {"sceneio.gltf.save.skinnedMeshInWS", &SaveOptions::skinnedMeshInWS},
    {"sceneio.gltf.save.tangentsBitangents", &SaveOptions::tangentsBitangents},
    {"sceneio.gltf.save.indicesExport", &SaveOptions::indicesExport},
    {"sceneio.gltf.save.sampleAnimFpsMultiplier", &SaveOptions::sampleAnimFpsMultiplier},
    {"sceneio.gltf.save.exportActionType", &SaveOptions::exportActionType},
};

}  // namespace

SaveOptions ReadSaveOptions() {
  const CZyValueService service;
  SaveOptions options;
  for (const OptionRow& row : kOptions) {
    CZyUser_UserValue value;
    if (ZySucceeded(service.Query(row.userValue, value))) options.*row.field = value.GetInt();
  }
  return options;
}
