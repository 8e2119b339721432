// The command `vornel export`.
#pragma once

#include "tool/export_arguments.h"
#include "tool/report.h"

namespace tool {

// Reads the input, runs the plug-in's saver over it and puts the result in place. Returns the exit code.
int RunExport(const ExportArguments& arguments, const Report& report);

}  // namespace tool
