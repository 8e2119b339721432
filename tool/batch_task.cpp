#include "tool/batch_task.h"

#include "tool/batch_record.h"
#include "tool/export_job.h"
#include "tool/failure.h"
#include "tool/report.h"

#include <filesystem>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;

// Throws std::filesystem::filesystem_error.
void MakeFolders(const ExportArguments& arguments) {
  std::vector<fs::path> files = SideFiles(arguments);
  files.push_back(arguments.output);
  for (const fs::path& file : files)
    if (file.has_parent_path()) fs::create_directories(file.parent_path());
}

void Export(const BatchLine& line, const Report& report, BatchResult& result) {
  MakeFolders(line.arguments);
  RecordWriter record(line);
  const ExportOutcome outcome = RunExport(line.arguments, report);
  result.exitCode = outcome.exitCode;
  result.error = outcome.error;
  if (outcome.exitCode == kWarnings) result.error = line.output + ": " + outcome.messages.front().text;
  if (outcome.exitCode != kDone) return;
  try {
    record.Write(outcome);
  } catch (const std::exception& error) {  // the export stands all the same, and will be made again
    report.Warning(error.what());
  }
}

}  // namespace

BatchResult ResultOf(const BatchLine& line) {
  BatchResult result;
  result.line = line.number;
  result.input = line.input;
  result.output = line.output;
  return result;
}

BatchResult RunLine(const BatchLine& line, Redo redo) {
  BatchResult result = ResultOf(line);
  const Report report(line.arguments.verbosity);
  if (redo == Redo::WhenChanged && !WhyToExport(line)) {
    result.status = BatchStatus::Skipped;
    report.Note(line.output + ": done already");
    return result;
  }
  if (const auto failure = FailureOf(line.output, [&] { Export(line, report, result); })) {
    result.exitCode = failure->exitCode;
    result.error = failure->text;
    report.Error(result.error);
  }
  if (result.exitCode != kDone) result.status = BatchStatus::Failed;
  return result;
}

}  // namespace tool
