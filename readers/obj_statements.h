// The statements of OBJ files, and the words for those that are passed over.
#pragma once

#include "readers/obj_data.h"

#include <string>
#include <string_view>

namespace readers {

enum class Statement { Point, Uv, Normal, Face, Object, Group, Material, Library, Smoothing, Skip };

struct StatementWord {
  std::string_view word;
  Statement statement = Statement::Skip;
  Skipped skipped = Skipped::Unknown;
};

// What a line's first word says; an unknown one is skipped.
StatementWord FindStatement(std::string_view word);

// The rest of a statement as UTF-8, without the blanks around it; continued lines are joined by a blank.
std::string StatementText(const char* text);

// What was passed over, in one line without the file's name; empty for nothing.
std::string DescribeSkipped(const ObjData& data);

}  // namespace readers
