// Reads the text of an OBJ file.
#pragma once

#include "readers/obj_data.h"

#include <string>
#include <string_view>

namespace readers {

// `fileName` stands in errors, `stem` names the mesh of polygons outside all objects and groups. Throws
// InputError with the line.
ObjData ParseObj(std::string_view text, const std::string& fileName, const std::string& stem);

}  // namespace readers
