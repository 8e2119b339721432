// Units and the axis that points up.
#pragma once

#include "host/matrix4.h"
#include "importer/import_model.h"

#include <assimp/scene.h>

namespace importer {

// The matrix of the root node that leads to metres with Y up.
Matrix4 RootMatrix(const aiScene& source, const ImportOptions& options);

// A number or text of the file's own data; nothing when it isn't there or of another type.
std::optional<double> MetadataNumber(const aiScene& source, const char* key);
std::string MetadataText(const aiScene& source, const char* key);

}  // namespace importer
