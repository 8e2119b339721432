// The command `vornel export`.
#pragma once

#include "tool/export_arguments.h"
#include "tool/export_outcome.h"
#include "tool/report.h"

namespace tool {

// Reads the input, runs the plug-in's saver over it, checks the result and puts it in place. What goes wrong is
// told and stands in the outcome.
ExportOutcome ExportScene(const ExportArguments& arguments, const Report& report);

// ExportScene with the reports that the arguments ask for.
ExportOutcome RunExport(const ExportArguments& arguments, const Report& report);

}  // namespace tool
