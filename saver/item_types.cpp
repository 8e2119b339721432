#include "saver/item_types.h"

namespace {

struct TypeRow {
  const char* name;
  std::uint32_t ItemTypeCodes::*code;
};

// In the order in which they are looked up.
constexpr TypeRow kTypes[] = {
    {"scene", &ItemTypeCodes::scene},
    {"locator", &ItemTypeCodes::locator},
    {"groupLocator", &ItemTypeCodes::groupLocator},
    {"camera", &ItemTypeCodes::camera},
    {"light", &ItemTypeCodes::light},
    {"sunLight", &ItemTypeCodes::sunLight},
    {"pointLight", &ItemTypeCodes::pointLight},
    {"spotLight", &ItemTypeCodes::spotLight},
    {"areaLight", &ItemTypeCodes::areaLight},
    {"lightMaterial", &ItemTypeCodes::lightMaterial},
    {"mesh", &ItemTypeCodes::mesh},
    {"meshInst", &ItemTypeCodes::meshInst},
    {"triSurf", &ItemTypeCodes::triSurf},
    {"morphDeform", &ItemTypeCodes::morphDeform},
    {"txtrLocator", &ItemTypeCodes::txtrLocator},
    {"polyRender", &ItemTypeCodes::polyRender},
    {"mask", &ItemTypeCodes::mask},
    {"advancedMaterial", &ItemTypeCodes::advancedMaterial},
    {"imageMap", &ItemTypeCodes::imageMap},
    {"deformGroup", &ItemTypeCodes::deformGroup},
    {"scale", &ItemTypeCodes::scale},
    {"rotation", &ItemTypeCodes::rotation},
    {"translation", &ItemTypeCodes::translation},
    {"transform", &ItemTypeCodes::transform},
    {"shear", &ItemTypeCodes::shear},
    {"ikFullBody", &ItemTypeCodes::ikFullBody},
    {"actionclip", &ItemTypeCodes::actionclip},
    {"group", &ItemTypeCodes::group},
    {"unityShader", &ItemTypeCodes::unityShader},
    {"unrealShader", &ItemTypeCodes::unrealShader},
    {"glTFShader", &ItemTypeCodes::glTFShader},
    {"replicator", &ItemTypeCodes::replicator},
};

}  // namespace

ItemTypeCodes LookupItemTypes(const CZySceneService& service) {
  ItemTypeCodes codes;
  for (const TypeRow& row : kTypes) service.ItemTypeLookup(row.name, codes.*row.code);
  return codes;
}
