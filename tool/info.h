// The command `vornel info`.
#pragma once

#include "tool/arguments.h"
#include "tool/report.h"

namespace tool {

// Lists what a scene holds on the output stream. Returns the exit code.
int RunInfo(const Arguments& arguments, const Report& report);

}  // namespace tool
