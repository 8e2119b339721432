// What an export was made from, kept in a hidden file beside its output, so that it isn't made again for nothing.
#pragma once

#include "tool/batch_manifest.h"
#include "tool/export_outcome.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tool {

// ".a.glb.vornel" for "a.glb".
std::filesystem::path RecordFile(const std::filesystem::path& output);

// Why a line has to be exported, such as "scenes/a.orvo changed"; none when its record says that nothing it
// depends on changed since: input and options, every file that was read or looked for, the programs, and what was
// written. The current directory is that of the manifest.
std::optional<std::string> WhyToExport(const BatchLine& line);

class Staging;

// Notes an export that went through. To be made before the export begins.
class RecordWriter {
 public:
  // Throws OutputError when nothing can be written beside the output.
  explicit RecordWriter(const BatchLine& line);
  ~RecordWriter();

  // Replaces the record in one step. Nothing is noted when a file that was read changed since the export began:
  // which of its contents went into the output is unknown then. Throws OutputError.
  void Write(const ExportOutcome& outcome);

 private:
  const BatchLine& line_;
  std::unique_ptr<Staging> staging_;
};

}  // namespace tool
