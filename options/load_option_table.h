// The load options as data: the arguments of the command in their order, with their places in the stream record,
// and the order of the configuration.
#pragma once

#include "host/command_server.h"
#include "host/result.h"
#include "options/load_options.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <variant>

enum LoadOption : std::uint32_t {
  kMergeWithExistingItems,
  kLoadGeometry,
  kLoadNormals,
  kLoadMeshSmoothing,
  kLoadBlendShapes,
  kLoadPolygonParts,
  kLoadSelectionSets,
  kLoadMaterials,
  kInvertMatTranAmt,
  kUseMatTranColAsTranAmt,
  kChangeTextureEffect,
  kLoadCameras,
  kLoadLights,
  kLoadAnimation,
  kLoadSampleAnimation,
  kLoadSampleAnimationRate,
  kGlobalScalingFactor,
  kImportUnits,
  kLoadOptionCount
};

inline constexpr ZyTextHint kSampleRates[] = {{0, "1x FPS"}, {1, "2x FPS"}, {-1, nullptr}};

// The first entry names another format, as in the loaders that the list is shared with.
inline constexpr ZyTextHint kImportUnitNames[] = {
    {0, "Use FBX file units"},
    {1, "Millimeters [mm]"},
    {2, "Decimeters [dm]"},
    {3, "Centimeters [cm]"},
    {4, "Meters [m]"},
    {5, "Kilometers [km]"},
    {6, "Inches"},
    {7, "Feet"},
    {8, "Yards"},
    {9, "Miles"},
    {-1, nullptr},
};

using LoadOptionField = std::variant<bool LoadOptions::*, std::uint32_t LoadOptions::*, double LoadOptions::*>;

enum class LoadOptionType { Boolean, Integer, Float };

// The host's word.
constexpr const char* TypeWord(LoadOptionType type) {
  constexpr const char* kWords[] = {"boolean", "integer", "float"};
  return kWords[static_cast<std::size_t>(type)];
}

inline constexpr int kNoFlag = -1;

struct LoadOptionRow {
  const char* name;
  LoadOptionType type;
  LoadOptionField field;
  int flag;                             // bit among the flags of the stream record; kNoFlag: it stands elsewhere
  const ZyTextHint* choices = nullptr;  // null when any value will do
};

// By LoadOption.
inline constexpr std::array<LoadOptionRow, kLoadOptionCount> kLoadOptionTable = {{
    {"mergeWithExistingItems", LoadOptionType::Boolean, &LoadOptions::mergeWithExistingItems, 16},
    {"loadGeometry", LoadOptionType::Boolean, &LoadOptions::loadGeometry, 0},
    {"loadNormals", LoadOptionType::Boolean, &LoadOptions::loadNormals, 8},
    {"loadMeshSmoothing", LoadOptionType::Boolean, &LoadOptions::loadMeshSmoothing, 4},
    {"loadBlendShapes", LoadOptionType::Boolean, &LoadOptions::loadBlendShapes, 5},
    {"loadPolygonParts", LoadOptionType::Boolean, &LoadOptions::loadPolygonParts, 11},
    {"loadSelectionSets", LoadOptionType::Boolean, &LoadOptions::loadSelectionSets, 12},
    {"loadMaterials", LoadOptionType::Boolean, &LoadOptions::loadMaterials, 1},
    {"invertMatTranAmt", LoadOptionType::Boolean, &LoadOptions::invertMatTranAmt, 9},
    {"useMatTranColAsTranAmt", LoadOptionType::Boolean, &LoadOptions::useMatTranColAsTranAmt, 10},
    {"changeTextureEffect", LoadOptionType::Boolean, &LoadOptions::changeTextureEffect, 17},
    {"loadCameras", LoadOptionType::Boolean, &LoadOptions::loadCameras, 2},
    {"loadLights", LoadOptionType::Boolean, &LoadOptions::loadLights, 3},
    {"loadAnimation", LoadOptionType::Boolean, &LoadOptions::loadAnimation, 6},
    {"loadSampleAnimation", LoadOptionType::Boolean, &LoadOptions::loadSampleAnimation, 7},
    {"loadSampleAnimationRate", LoadOptionType::Integer, &LoadOptions::loadSampleAnimationRate, 13, kSampleRates},
    {"globalScalingFactor", LoadOptionType::Float, &LoadOptions::globalScalingFactor, kNoFlag},
    {"importUnits", LoadOptionType::Integer, &LoadOptions::importUnits, kNoFlag, kImportUnitNames},
}};

// The order in which the configuration is read and written; it isn't that of the arguments.
inline constexpr std::array<LoadOption, kLoadOptionCount> kConfigOrder = {
    kMergeWithExistingItems,
    kLoadGeometry,
    kLoadMaterials,
    kLoadCameras,
    kLoadLights,
    kLoadMeshSmoothing,
    kLoadBlendShapes,
    kLoadPolygonParts,
    kLoadSelectionSets,
    kLoadAnimation,
    kLoadSampleAnimation,
    kLoadSampleAnimationRate,
    kLoadNormals,
    kInvertMatTranAmt,
    kUseMatTranColAsTranAmt,
    kChangeTextureEffect,
    kGlobalScalingFactor,
    kImportUnits,
};

// Sets the option from a value that has the operations GetInt and GetDouble; when it can't be read the option
// stays.
template <class Value>
void ReadOption(LoadOptions& options, const LoadOptionRow& row, const Value& value) {
  std::visit(
      [&](auto field) {
        using Field = std::remove_reference_t<decltype(options.*field)>;
        if constexpr (std::is_same_v<Field, double>) {
          double stored = 0;
          if (ZySucceeded(value.GetDouble(stored))) options.*field = stored;
        } else {
          std::int32_t stored = 0;
          if (ZyFailed(value.GetInt(stored))) return;
          const bool isSet = stored != 0;
          options.*field = row.type == LoadOptionType::Boolean ? Field{isSet} : static_cast<Field>(stored);
        }
      },
      row.field);
}

// The reverse, with the operations SetInt and SetDouble. Their results aren't looked at.
template <class Value>
void WriteOption(const LoadOptions& options, const LoadOptionRow& row, Value&& value) {
  std::visit(
      [&](auto field) {
        const auto stored = options.*field;
        if constexpr (std::is_same_v<decltype(stored), const double>)
          value.SetDouble(stored);
        else
          value.SetInt(row.type == LoadOptionType::Boolean ? stored != 0 : static_cast<std::int32_t>(stored));
      },
      row.field);
}
