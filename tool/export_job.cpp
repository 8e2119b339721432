#include "tool/export_job.h"

#include "headless/host.h"
#include "headless/host_paths.h"
#include "headless/module_loader.h"
#include "readers/program_files.h"
#include "readers/read_scene.h"
#include "tool/export_plan.h"
#include "tool/failure.h"
#include "tool/image_copies.h"
#include "tool/image_paths.h"
#include "tool/index_bits.h"
#include "tool/input_check.h"
#include "tool/log_file.h"
#include "tool/memory_limit.h"
#include "tool/output_check.h"
#include "tool/output_error.h"
#include "tool/preview_page.h"
#include "tool/report_file.h"
#include "tool/report_table.h"
#include "tool/staging.h"

#include <fmt/core.h>
#include <sys/resource.h>

#include <algorithm>
#include <future>
#include <new>
#include <optional>
#include <set>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr char kExportType[] = "sceneio.gltf.save.exportType";
constexpr char kTooLarge[] = "Too large for glTF";  // of the message by which the plug-in refuses to write
constexpr std::int32_t kExportAll = 0;
constexpr std::int32_t kShortIndices = 0, kLongIndices = 1;

// One export from reading to moving.
class ExportRun {
 public:
  ExportRun(const ExportArguments& arguments, const Report& report, ExportOutcome& outcome, Stages& stages,
            Progress& progress)
      : arguments_(arguments), report_(report), outcome_(outcome), stages_(stages), progress_(progress) {}

  // Throws what its steps throw.
  void Run();

 private:
  void ExportToFile();
  headless::SceneData ReadInput();
  void SettleImages(headless::SceneData& scene);
  void SetUserValues(headless::SceneData& scene);
  void SaveLogged(headless::Host& host, const fs::path& file);
  void Save(headless::Host& host, const fs::path& file);
  void NoteMessage(const headless::LogLine& line);
  void Check(const headless::Host& host, const Staging& staging);
  void MoveIntoPlace(Staging& staging);
  void WritePage();
  void AddNotCarried(NotCarried entry);
  std::vector<fs::path> WrittenFiles() const;

  const ExportArguments& arguments_;
  const Report& report_;
  ExportOutcome& outcome_;
  Stages& stages_;
  Progress& progress_;
  std::set<NotCarried> knownNotCarried_;
  std::string refusal_;       // why the plug-in wrote nothing, if it said so
  readers::ReadReport read_;  // keeps images that the input held until the export is over
};

// The host knows the backslash as its only separator, so a name can't hold one.
void CheckName(const fs::path& target) {
  if (fs::absolute(target).string().find('\\') != std::string::npos)
    throw OutputError(target.string() + ": a path with a backslash can't be written");
  std::error_code error;
  if (!fs::exists(fs::symlink_status(target, error)) && error == std::errc::filename_too_long)
    throw OutputError(target.string() + ": " + error.message());
}

// The name as the savers write it: they know the extension in lower case alone.
std::string StagedName(const fs::path& output) {
  return fs::path(output.filename()).replace_extension(ExtensionOf(KindOf(output))).string();
}

void ExportRun::Run() {
  CheckName(arguments_.output);
  ExportToFile();
  if (!arguments_.previewPage.empty()) WritePage();
}

void ExportRun::ExportToFile() {
  Staging staging(arguments_.output, StagedName(arguments_.output));
  for (const std::string& note : staging.Notes()) report_.Note(note);
  stages_.Begin(Stage::Reading);
  headless::Host host(ReadInput());
  SaveLogged(host, staging.File());
  stages_.Begin(Stage::Verifying);
  Check(host, staging);
  if (MemoryRanOut()) throw std::bad_alloc();  // something may be missing
  stages_.Begin(Stage::Moving);
  MoveIntoPlace(staging);
}

headless::SceneData ExportRun::ReadInput() {
  const auto noteSources = [this] {
    outcome_.sources = {arguments_.input};
    for (const std::vector<fs::path>* files : {&read_.files, &read_.missing})
      outcome_.sources.insert(outcome_.sources.end(), files->begin(), files->end());
  };
  headless::SceneData scene;
  try {
    scene = readers::ReadScene(arguments_.input, arguments_.reading, read_);
  } catch (...) {
    noteSources();
    throw;
  }
  noteSources();
  CheckInputStays(arguments_.input, read_.files, WrittenFiles());
  for (const std::string& warning : read_.warnings) {
    report_.Warning(warning);
    AddNotCarried({"", "input", warning, ""});
  }
  SetUserValues(scene);
  if (const std::optional<std::string> fault = FindTimeFault(scene))
    throw readers::InputError(arguments_.input.string() + ": /time: " + *fault);
  SettleImages(scene);
  if (scene.userValues[kExportType] == kExportAll)
    for (NotCarried& entry : NotCarriedByKind(scene)) AddNotCarried(std::move(entry));
  return scene;
}

void ExportRun::SetUserValues(headless::SceneData& scene) {
  // The savers export the selection unless told otherwise; who names a file wants all of it.
  scene.userValues.try_emplace(kExportType, kExportAll);
  for (const auto& [name, value] : arguments_.userValues) {
    if (value) {
      scene.userValues[name] = *value;
      continue;
    }
    const std::optional<LargeMesh> large = FindMeshFor32Bits(scene);
    scene.userValues[name] = large ? kLongIndices : kShortIndices;
    if (large)
      report_.Note(fmt::format("indices of 32 bits: \"{}\" has {} triangle corners", large->item, large->corners));
  }
  outcome_.userValues = scene.userValues;
}

void ExportRun::SettleImages(headless::SceneData& scene) {
  ImageReport images;
  SettleImagePaths(scene, {arguments_.imageRoots, read_.temporaryImages}, images);
  const std::vector<fs::path>& own = read_.temporaryImages;
  for (fs::path& file : images.files)
    if (std::find(own.begin(), own.end(), file) == own.end()) outcome_.sources.push_back(std::move(file));
  CheckInputStays(arguments_.input, ImageFiles(scene), WrittenFiles());
  if (KindOf(arguments_.output) == OutputKind::Gltf) {
    const fs::path staged = fs::path(arguments_.output).replace_filename(StagedName(arguments_.output));
    CheckImageCopies(scene, arguments_.output, arguments_.input, images);
    if (staged != arguments_.output) CheckImageCopies(scene, staged, arguments_.input, images);
  }
  for (const std::string& note : images.notes) report_.Note(note);
  for (const std::string& warning : images.warnings) {
    report_.Warning(warning);
    AddNotCarried({"", "image", warning, ""});
  }
}

std::vector<fs::path> ExportRun::WrittenFiles() const {
  std::vector<fs::path> written = SideFiles(arguments_);
  written.push_back(arguments_.output);
  if (KindOf(arguments_.output) == OutputKind::Gltf)
    written.push_back(fs::path(arguments_.output).replace_extension(".bin"));
  return written;
}

void ExportRun::NoteMessage(const headless::LogLine& line) {
  report_.LogMessage(line);
  FollowLog(line, stages_);
  if (line.text.starts_with(kTooLarge)) refusal_ = line.text;
  if (std::optional<NotCarried> entry = NotCarriedByLog(line)) AddNotCarried(std::move(*entry));
}

void ExportRun::SaveLogged(headless::Host& host, const fs::path& file) {
  std::optional<LogFile> log;
  if (!arguments_.logFile.empty()) log.emplace(arguments_.logFile);
  host.SetLogSink([&](const headless::LogLine& line) {
    if (log) log->Write(line);
    NoteMessage(line);
  });
  const ExportWork work = PlanExport(host.Data());
  stages_.Plan(work.costs);
  progress_.SetProbe([&] { LookAtExport(work, host.Asked(), file, stages_); });
  stages_.Begin(Stage::Scanning);
  try {
    Save(host, file);
  } catch (...) {
    progress_.SetProbe({});
    host.SetLogSink({});
    throw;
  }
  progress_.SetProbe({});
  host.SetLogSink({});
  if (log) log->Close();
}

// Runs the saver that the output's extension asks for. It gets no monitor, with which it would count the messages
// of its scan apart and log another summary.
void ExportRun::Save(headless::Host& host, const fs::path& file) {
  const headless::LoadedModule module(arguments_.module.empty() ? readers::ModuleFile() : arguments_.module, host);
  const CountedRef<IZySaver> saver = module.NewSaver(KindOf(file) == OutputKind::Glb ? "gltf.bin" : "gltf.gltf");
  const zyresult result = saver.Raw()->Save(host.Scene(), headless::ToHostPath(file.string()).c_str(), nullptr);
  if (!refusal_.empty()) throw OutputError(arguments_.output.string() + ": not written: " + refusal_);
  // A saver that skips what fails would leave out what there was no room for.
  if (MemoryRanOut()) throw std::bad_alloc();
  if (ZyFailed(result))
    throw OutputError(fmt::format(
        "{}: the export failed: {}", arguments_.output.string(),
        FindWriteFault(file).value_or(fmt::format("code 0x{:08X}", static_cast<std::uint32_t>(result)))));
}

void ExportRun::Check(const headless::Host& host, const Staging& staging) {
  // The disk takes the files in while they are read back, and leaves little to wait for before they are moved.
  std::future<void> flushed = std::async([&staging] { staging.Flush(); });
  try {
    const auto told = [this](double share) { stages_.SetDone(Stage::Verifying, share); };
    outcome_.written = CountWritten(CheckOutput(staging.File(), host.Data(), told));
  } catch (const WriteFault& fault) {
    throw OutputError(arguments_.output.string() + ": not written: " + fault.what());
  }
  flushed.get();  // the system tells of a failure once, to whoever flushes first
}

void ExportRun::MoveIntoPlace(Staging& staging) {
  for (const fs::path& file : staging.MoveIntoPlace()) {
    std::error_code ignored;
    outcome_.files.push_back({file, fs::file_size(file, ignored)});
    outcome_.written->bytes += outcome_.files.back().bytes;
    report_.Note(file.string());
  }
}

void ExportRun::WritePage() {
  std::vector<std::string> warnings;
  for (const MessageGroup& message : report_.Messages()) warnings.push_back(message.text);
  try {
    WritePreviewPage(arguments_.output, arguments_.previewPage, warnings);
  } catch (const readers::InputError& error) {
    // The export stands; what can't be shown is not the input's fault.
    throw OutputError(arguments_.previewPage.string() + ": not written: " + error.what());
  }
  report_.Note(arguments_.previewPage.string());
}

void ExportRun::AddNotCarried(NotCarried entry) {
  if (knownNotCarried_.insert(entry).second) outcome_.notCarried.push_back(std::move(entry));
}

std::uint64_t PeakMemory() {
  std::uint64_t peak = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    if (getrusage(who, &usage) == 0) peak = std::max(peak, static_cast<std::uint64_t>(usage.ru_maxrss) * 1024);
  }
  return peak;
}

}  // namespace

ExportOutcome ExportScene(const ExportArguments& arguments, const Report& report) {
  ExportOutcome outcome;
  Stages stages;
  std::optional<Failure> failure;
  {
    const bool quiet = arguments.verbosity == Verbosity::Quiet;
    Progress progress(stages, ChooseProgress(arguments.progress, quiet ? Quietness::Quiet : Quietness::Talking));
    failure = FailureOf(arguments.output, [&] { ExportRun(arguments, report, outcome, stages, progress).Run(); });
    stages.End();
  }
  if (failure) {
    outcome.exitCode = failure->exitCode;
    outcome.error = failure->text;
    if (outcome.files.empty()) outcome.written.reset();  // else a page beside it failed
    report.Error(failure->text);
  }
  outcome.messages = report.Messages();
  if (!failure && arguments.strictness == Strictness::Strict && !outcome.messages.empty())
    outcome.exitCode = kWarnings;
  outcome.seconds = stages.Seconds();
  outcome.secondsInAll = stages.SecondsInAll();
  outcome.peakMemory = PeakMemory();
  return outcome;
}

ExportOutcome RunExport(const ExportArguments& arguments, const Report& report) {
  IgnoreWriteSignals();
  LimitMemory(arguments.maxMemory);
  ExportOutcome outcome;
  const std::optional<Failure> failure = FailureOf(arguments.reportFile, [&] {
    std::optional<ReportFile> file;
    if (!arguments.reportFile.empty()) file.emplace(arguments.reportFile);
    outcome = ExportScene(arguments, report);
    if (outcome.written)
      for (const std::string& line : ReportTable(outcome)) report.Note(line);
    if (!file) return;
    CheckInputStays(arguments.input, outcome.sources, {arguments.reportFile});
    file->Write(ReportJson(arguments, outcome));
  });
  if (!failure) return outcome;
  report.Error(failure->text);
  if (outcome.exitCode == kDone || outcome.exitCode == kWarnings) {
    outcome.exitCode = failure->exitCode;
    outcome.error = failure->text;
  }
  return outcome;
}

}  // namespace tool
