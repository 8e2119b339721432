// Item type codes that the export tests against.
#pragma once

#include "host/user_services.h"

// Looked up once per save; a type the host doesn't know has code 0, which no item matches.
struct ItemTypeCodes {
  std::uint32_t scene = 0, locator = 0, groupLocator = 0, camera = 0, light = 0, sunLight = 0, pointLight = 0,
                spotLight = 0, areaLight = 0, lightMaterial = 0, mesh = 0, meshInst = 0, triSurf = 0,
                morphDeform = 0, txtrLocator = 0, polyRender = 0, mask = 0, advancedMaterial = 0, imageMap = 0,
                deformGroup = 0, scale = 0, rotation = 0, translation = 0, transform = 0, shear = 0,
                ikFullBody = 0, actionclip = 0, group = 0, unityShader = 0, unrealShader = 0, glTFShader = 0,
                replicator = 0;
};

ItemTypeCodes LookupItemTypes(const CZySceneService& service);

inline bool IsOfType(const CZyUser_Item& item, std::uint32_t type) {
  return type != 0 && item.TestType(type) == ZYe_OK;
}

// The item's user name, empty on failure.
inline const char* NameOf(const CZyUser_Item& item) {
  const char* name = "";
  item.Name(name);
  return name ? name : "";
}
