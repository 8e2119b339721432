// Exports one line of a manifest in this process.
#pragma once

#include "tool/batch_manifest.h"
#include "tool/batch_result.h"

namespace tool {

enum class Redo { WhenChanged, Always };

// Skips the line when nothing that it depends on changed since it was exported. Folders to write into are made.
// A line that goes through is noted beside its output, see tool/batch_record.h. Messages go to the error stream.
BatchResult RunLine(const BatchLine& line, Redo redo);

// A result with the line's number and files.
BatchResult ResultOf(const BatchLine& line);

}  // namespace tool
