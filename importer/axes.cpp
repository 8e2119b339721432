#include "importer/axes.h"

#include "importer/source_check.h"
#include "importer/transform_math.h"

#include <assimp/commonMetaData.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>

namespace importer {
namespace {

const aiMetadataEntry* FindEntry(const aiScene& source, const char* key) {
  const aiMetadata* data = source.mMetaData;
  for (unsigned i = 0; data && i < data->mNumProperties; ++i)
    if (std::strcmp(data->mKeys[i].C_Str(), key) == 0 && data->mValues[i].mData) return &data->mValues[i];
  return nullptr;
}

Matrix4 TurnUp(UpAxis axis) {
  Matrix4 matrix;
  if (axis == UpAxis::X) matrix.m = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  if (axis == UpAxis::Z) matrix.m = {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
  return matrix;
}

Matrix4 Scaling(double factor) {
  Matrix4 matrix;
  for (std::size_t i = 0; i < 3; ++i) matrix(i, i) = factor;
  return matrix;
}

// Where x, y and z of the host lie in an FBX file.
Matrix4 TurnFbx(const aiScene& source) {
  constexpr const char* kAxes[] = {"CoordAxis", "UpAxis", "FrontAxis"};
  Matrix4 matrix;
  std::fill_n(matrix.m.begin(), 12, 0.0);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double place = MetadataNumber(source, kAxes[axis]).value_or(-1);
    if (place < 0 || place > 2) return Matrix4();
    const double sign = MetadataNumber(source, (std::string(kAxes[axis]) + "Sign").c_str()).value_or(1);
    matrix(static_cast<std::size_t>(place), axis) = sign < 0 ? -1 : 1;
  }
  if (Determinant(matrix) == 1) return matrix;
  // Left-handed axes, or the same one twice: the direction up counts alone.
  const double up = MetadataNumber(source, "UpAxis").value_or(1);
  return TurnUp(up == 0 ? UpAxis::X : up == 2 ? UpAxis::Z : UpAxis::Y);
}

// What the file says of itself: a turn to Y up, a scale to metres, and the rest of the root's matrix.
struct FileAxes {
  Matrix4 turn;
  double metersPerUnit = 1;
  Matrix4 rest;
};

FileAxes ReadAxes(const aiScene& source) {
  const Matrix4 root = FromAssimp(source.mRootNode->mTransformation);
  const std::string format = MetadataText(source, AI_METADATA_SOURCE_FORMAT);
  if (format == "Autodesk FBX Importer") {
    const double centimeters = MetadataNumber(source, "UnitScaleFactor").value_or(1);
    return {TurnFbx(source), std::isfinite(centimeters) && centimeters > 0 ? centimeters / 100 : 1, root};
  }
  // The matrix of the root is Assimp's own work in these formats.
  constexpr std::string_view kTurnedFormats[] = {"Collada Importer", "Discreet 3DS Importer", "ASE Importer"};
  const bool turned =
      std::find(std::begin(kTurnedFormats), std::end(kTurnedFormats), format) != std::end(kTurnedFormats);
  const auto placement = turned ? Decompose(root) : std::nullopt;
  if (!placement || placement->scale[0] <= 0) return {Matrix4(), 1, root};
  return {Scaling(1 / placement->scale[0]) * root, placement->scale[0], Matrix4()};
}

}  // namespace

std::optional<double> MetadataNumber(const aiScene& source, const char* key) {
  const aiMetadataEntry* entry = FindEntry(source, key);
  if (!entry) return std::nullopt;
  switch (entry->mType) {
    case AI_INT32:
      return *static_cast<const std::int32_t*>(entry->mData);
    case AI_FLOAT:
      return static_cast<double>(*static_cast<const float*>(entry->mData));
    case AI_DOUBLE:
      return *static_cast<const double*>(entry->mData);
    default:
      return std::nullopt;
  }
}

std::string MetadataText(const aiScene& source, const char* key) {
  const aiMetadataEntry* entry = FindEntry(source, key);
  return entry && entry->mType == AI_AISTRING ? TextOf(*static_cast<const aiString*>(entry->mData))
                                              : std::string();
}

Matrix4 RootMatrix(const aiScene& source, const ImportOptions& options) {
  FileAxes axes = ReadAxes(source);
  if (options.upAxis) axes.turn = TurnUp(*options.upAxis);
  return axes.rest * Scaling(options.metersPerUnit.value_or(axes.metersPerUnit)) * axes.turn;
}

}  // namespace importer
