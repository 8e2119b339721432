// The command `vornel batch`.
#include "tool/batch_manifest.h"
#include "tool/batch_record.h"
#include "tool/batch_run.h"
#include "tool/command_line.h"
#include "tool/export_arguments.h"
#include "tool/failure.h"
#include "tool/memory_limit.h"
#include "tool/output_error.h"
#include "tool/report.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sched.h>
#include <sstream>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr char kStandard[] = "-";  // the input or output stream instead of a file
constexpr std::size_t kMostJobs = 4096;

struct BatchArguments {
  std::string manifest;
  std::size_t jobs = 0;  // 0: as many as there are processors
  std::size_t task = 0;  // a line; 0: all
  Redo redo = Redo::WhenChanged;
  OnFailure onFailure = OnFailure::GoOn;
  bool dryRun = false;
  std::string summary;  // empty for none
  Verbosity verbosity = Verbosity::Normal;
  ProgressWish progress = ProgressWish::Auto;
  std::optional<std::uint64_t> maxMemory;  // bytes, of lines that set none
};

// Those that the scheduler lets this process have.
std::size_t CountProcessors() {
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof(processors), &processors) != 0) return 1;
  return static_cast<std::size_t>(std::max(CPU_COUNT(&processors), 1));
}

// Results as JSON lines, written as they come.
class Summary {
 public:
  // Throws OutputError.
  explicit Summary(const std::string& file) : name_(file) {
    if (file.empty()) return;
    stream_ = file == kStandard ? stdout : std::fopen(file.c_str(), "wb");
    if (!stream_) Fail();
  }
  ~Summary() {
    if (stream_ && stream_ != stdout) std::fclose(stream_);
  }
  Summary(const Summary&) = delete;
  Summary& operator=(const Summary&) = delete;

  void Add(const BatchResult& result) {
    if (!stream_ || error_ != 0) return;
    const std::string line = ResultJson(result) + "\n";
    if (std::fwrite(line.data(), 1, line.size(), stream_) != line.size() || std::fflush(stream_) != 0)
      error_ = errno;
  }
  // Throws OutputError when anything could not be written.
  void Check() const {
    if (error_ == 0) return;
    errno = error_;
    Fail();
  }

 private:
  [[noreturn]] void Fail() const {
    throw OutputError(name_ + ": can't write the summary: " + std::strerror(errno));
  }

  std::string name_;
  std::FILE* stream_ = nullptr;
  int error_ = 0;
};

// Paths in a manifest start where it lies, and so does the command from then on. What names files before that gets
// whole paths. Throws std::system_error.
void GoToManifest(BatchArguments& arguments) {
  if (!arguments.summary.empty() && arguments.summary != kStandard)
    arguments.summary = fs::absolute(arguments.summary).string();
  for (const char* name : {"VORNEL_MODULE", "VORNEL_IMPORT", "VORNEL_SHARE"}) {
    const char* const value = std::getenv(name);
    if (value && *value != '\0') setenv(name, fs::absolute(value).c_str(), 1);
  }
  const fs::path directory = fs::path(arguments.manifest).parent_path();
  if (!directory.empty()) fs::current_path(directory);
}

// Throws ManifestError, and std::system_error.
Manifest OpenManifest(BatchArguments& arguments) {
  const std::string name = arguments.manifest;
  if (name == kStandard) return ReadManifest(std::cin, "standard input");
  std::error_code error;
  if (fs::is_directory(name, error)) throw ManifestError(name + ": is a folder");
  std::ifstream stream(name, std::ios::binary);
  if (!stream) throw ManifestError(name + ": " + std::strerror(errno));
  if (fs::equivalent(name, arguments.summary, error))
    throw ManifestError(name + ": would be written over by the summary");
  GoToManifest(arguments);
  return ReadManifest(stream, name);
}

// Leaves the line of the task alone. Throws CLI::ValidationError when there is no such line.
void KeepTask(const BatchArguments& arguments, Manifest& manifest) {
  if (arguments.task == 0) return;
  if (arguments.task > manifest.lineCount)
    throw CLI::ValidationError("--task", fmt::format("there is no line {} in {}, which has {}", arguments.task,
                                                     arguments.manifest, manifest.lineCount));
  std::vector<BatchLine>& lines = manifest.lines;
  lines.erase(std::remove_if(lines.begin(), lines.end(),
                             [&](const BatchLine& line) { return line.number != arguments.task; }),
              lines.end());
}

int ShowPlan(const BatchArguments& arguments, const Manifest& manifest) {
  for (const BatchLine& line : manifest.lines) {
    const std::optional<std::string> why = arguments.redo == Redo::Always ? "--force" : WhyToExport(line);
    fmt::print("{}:{}: {}: {}\n", arguments.manifest, line.number, line.output,
               why ? "to export: " + *why : "done already");
  }
  return kDone;
}

int RunTask(const BatchArguments& arguments, const Manifest& manifest, Summary& summary) {
  if (manifest.lines.empty()) return kDone;  // a blank line
  BatchLine line = manifest.lines.front();
  if (arguments.verbosity == Verbosity::Quiet) line.arguments.verbosity = Verbosity::Quiet;
  const BatchResult result = RunLine(line, arguments.redo);
  summary.Add(result);
  return result.exitCode;
}

// Returns the exit code.
int Conclude(const BatchArguments& arguments, const Report& report, std::vector<BatchResult> results,
             std::size_t lineCount) {
  std::map<BatchStatus, std::size_t> counts;
  for (const BatchResult& result : results) ++counts[result.status];
  std::sort(results.begin(), results.end(),
            [](const BatchResult& one, const BatchResult& other) { return one.line < other.line; });
  for (const BatchResult& result : results)
    if (result.status == BatchStatus::Failed)
      report.Error(fmt::format("{}:{}: {}", arguments.manifest, result.line, result.error));
  std::string text = fmt::format("{} done, {} skipped, {} failed", counts[BatchStatus::Done],
                                 counts[BatchStatus::Skipped], counts[BatchStatus::Failed]);
  if (results.size() < lineCount) text += fmt::format(", {} not begun", lineCount - results.size());
  report.Note(text);
  return counts[BatchStatus::Failed] > 0 ? kSomeFailed : kDone;
}

int RunAll(const BatchArguments& arguments, const Report& report, const Manifest& manifest, Summary& summary) {
  BatchPlan plan;
  plan.name = arguments.manifest;
  plan.jobs = arguments.jobs == 0 ? CountProcessors() : arguments.jobs;
  plan.redo = arguments.redo;
  plan.onFailure = arguments.onFailure;
  const bool quiet = arguments.verbosity == Verbosity::Quiet;
  plan.progress = ChooseProgress(arguments.progress, quiet ? Quietness::Quiet : Quietness::Talking);
  plan.finished = [&summary](const BatchResult& result) { summary.Add(result); };
  return Conclude(arguments, report, RunLines(manifest.lines, plan), manifest.lines.size());
}

void TellLines(const Report& report, const std::string& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) report.Error(line);
}

int RunBatch(BatchArguments arguments) {
  IgnoreWriteSignals();
  const Report report(arguments.verbosity);
  try {
    Manifest manifest = OpenManifest(arguments);
    KeepTask(arguments, manifest);
    for (BatchLine& line : manifest.lines)
      if (!line.arguments.maxMemory) line.arguments.maxMemory = arguments.maxMemory;
    if (arguments.dryRun) return ShowPlan(arguments, manifest);
    Summary summary(arguments.summary);
    const int exitCode =
        arguments.task == 0 ? RunAll(arguments, report, manifest, summary) : RunTask(arguments, manifest, summary);
    if (exitCode == kDone) summary.Check();
    return exitCode;
  } catch (const CLI::ValidationError& error) {
    report.Error(error.what());
    return kUsage;
  } catch (const ManifestError& error) {
    TellLines(report, error.what());
    return kInput;
  } catch (const OutputError& error) {
    report.Error(error.what());
    return kOutput;
  } catch (const std::system_error& error) {
    report.Error(arguments.manifest + ": " + error.what());
    return kInput;
  }
}

void AddBatchOptions(CLI::App& command, BatchArguments& arguments) {
  command
      .add_option("manifest", arguments.manifest,
                  "file of a JSON object a line, with input, output and options; - for the input stream")
      ->required()
      ->type_name("MANIFEST");
  const auto jobs = command.add_option("-j,--jobs", arguments.jobs, "processes at a time [as many as processors]")
                        ->type_name("N")
                        ->check(CLI::Range(std::size_t{1}, kMostJobs).description(""));
  const auto failFast = command.add_flag_callback(
      "--fail-fast", [&arguments] { arguments.onFailure = OnFailure::Stop; },
      "begin no line after one has failed");
  command.add_option("--task", arguments.task, "run line I alone, from 1, and end with its exit code")
      ->type_name("I")
      ->check(CLI::Range(std::size_t{1}, std::numeric_limits<std::size_t>::max()).description(""))
      ->excludes(jobs)
      ->excludes(failFast);
  command.add_flag_callback(
      "--force", [&arguments] { arguments.redo = Redo::Always; }, "export lines that are done already too");
  command.add_flag("--dry-run", arguments.dryRun, "tell what would be exported and why");
  command
      .add_option("--summary", arguments.summary, "write how each line went, a JSON object a line; - for output")
      ->type_name("FILE");
  AddMemoryOption(command, arguments.maxMemory);
  command.add_flag_callback(
      "-q,--quiet", [&arguments] { arguments.verbosity = Verbosity::Quiet; }, "show errors only");
  AddProgressOption(command, arguments.progress);
}

}  // namespace

RunCommand AddBatch(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("batch", "Export the scenes of a list.");
  const auto arguments = std::make_shared<BatchArguments>();
  AddBatchOptions(command, *arguments);
  return [arguments] { return RunBatch(*arguments); };
}

}  // namespace tool
