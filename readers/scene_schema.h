// The JSON Schema of scene files, built in, and the check of a tree against it.
#pragma once

#include "readers/scene_json.h"

#include <string_view>

namespace readers {

// The text of scene.schema.json.
std::string_view SceneSchema();

// Throws a JsonFault for what the schema refuses and for a key that stands twice in one object. Of a long
// list of numbers only the first entries are looked at: the reads check the rest.
void CheckSchema(const Json& root);

}  // namespace readers
