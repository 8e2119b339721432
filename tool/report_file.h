// The report of an export as JSON; docs/report.schema.json says its form.
#pragma once

#include "tool/export_arguments.h"
#include "tool/export_outcome.h"

#include <optional>
#include <string>

namespace tool {

class Staging;

std::string ReportJson(const ExportArguments& arguments, const ExportOutcome& outcome);

// Where a report goes. Nothing half-written ever stands there, unless it is a device or a pipe.
class ReportFile {
 public:
  // Throws OutputError when nothing can be written there.
  explicit ReportFile(const std::filesystem::path& file);
  ~ReportFile();

  // To be called once. Throws OutputError.
  void Write(const std::string& json);

 private:
  std::filesystem::path file_;
  std::unique_ptr<Staging> staging_;  // null for what isn't a regular file
};

}  // namespace tool
