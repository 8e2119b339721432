// The report of an export for people.
#pragma once

#include "tool/export_outcome.h"

#include <string>
#include <vector>

namespace tool {

// What was written, what wasn't carried over, and messages that came more than once, a line each.
std::vector<std::string> ReportTable(const ExportOutcome& outcome);

}  // namespace tool
