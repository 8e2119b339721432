// Holds what Assimp read to what all further steps rely on.
#pragma once

#include <assimp/scene.h>

#include <string>

namespace importer {

// The text of a name as UTF-8.
std::string TextOf(const aiString& text);

// Throws ImportError with the place where an index is out of range, a part is missing or a number of a position,
// matrix, weight or key isn't finite.
void CheckSource(const aiScene& source);

}  // namespace importer
