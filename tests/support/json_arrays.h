// Looks into the arrays of a document that is being written.
#pragma once

#include "document/json_text.h"

#include <rapidjson/document.h>

#include <string>

namespace test_support {

// The array as it would stand in the file if nothing followed.
inline std::string TextOf(const JsonArray& array) { return std::string(array.Text()) + "]"; }

inline rapidjson::Document Parsed(const JsonArray& array) {
  rapidjson::Document values;
  values.Parse(TextOf(array).c_str());
  return values;
}

}  // namespace test_support
