#include "tool/export_job.h"

#include "headless/host.h"
#include "headless/host_paths.h"
#include "readers/read_scene.h"
#include "tool/exit_codes.h"
#include "tool/image_copies.h"
#include "tool/image_paths.h"
#include "tool/input_check.h"
#include "tool/log_file.h"
#include "tool/module_loader.h"
#include "tool/output_check.h"
#include "tool/output_error.h"
#include "tool/progress.h"
#include "tool/staging.h"

#include <fmt/core.h>

#include <csignal>
#include <new>
#include <optional>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr char kExportType[] = "sceneio.gltf.save.exportType";
constexpr std::int32_t kExportAll = 0;

void SettleImages(const ExportArguments& arguments, headless::SceneData& scene, const Report& report) {
  ImageReport images;
  SettleImagePaths(scene, arguments.imageRoots, images);
  if (arguments.output.extension() == ".gltf") CheckImageCopies(scene, arguments.output, arguments.input, images);
  for (const std::string& note : images.notes) report.Note(note);
  for (const std::string& warning : images.warnings) report.Warning(warning);
}

std::vector<fs::path> WrittenFiles(const ExportArguments& arguments) {
  std::vector<fs::path> written = {arguments.output, arguments.logFile};
  if (arguments.output.extension() == ".gltf")
    written.push_back(fs::path(arguments.output).replace_extension(".bin"));
  return written;
}

headless::SceneData ReadInput(const ExportArguments& arguments, const Report& report) {
  readers::ReadReport read;
  headless::SceneData scene = readers::ReadScene(arguments.input, read);
  CheckInputStays(arguments.input, read.files, WrittenFiles(arguments));
  for (const std::string& warning : read.warnings) report.Warning(warning);
  // The savers export the selection unless told otherwise; who names a file wants all of it.
  scene.userValues.try_emplace(kExportType, kExportAll);
  for (const auto& [name, value] : arguments.userValues) scene.userValues[name] = value;
  SettleImages(arguments, scene, report);
  return scene;
}

// The host knows the backslash as its only separator, so a name can't hold one.
void CheckName(const fs::path& target) {
  if (fs::absolute(target).string().find('\\') != std::string::npos)
    throw OutputError(target.string() + ": a path with a backslash can't be written");
}

// Runs the saver that the output's extension asks for. Throws OutputError when it fails.
void Save(const ExportArguments& arguments, headless::Host& host, const fs::path& file) {
  const LoadedModule module(arguments.module.empty() ? DefaultModulePath() : arguments.module, host);
  const CountedRef<IZySaver> saver = module.NewSaver(file.extension() == ".glb" ? "gltf.bin" : "gltf.gltf");
  CountedRef<IZyMonitor> monitor;
  if (arguments.progress) monitor.Take(static_cast<IZyMonitor*>(new ProgressBar));
  const zyresult result =
      saver.Raw()->Save(host.Scene(), headless::ToHostPath(file.string()).c_str(), monitor.Raw());
  if (ZyFailed(result))
    throw OutputError(fmt::format(
        "{}: the export failed: {}", arguments.output.string(),
        FindWriteFault(file).value_or(fmt::format("code 0x{:08X}", static_cast<std::uint32_t>(result)))));
}

void Export(const ExportArguments& arguments, const Report& report) {
  CheckName(arguments.output);
  const Staging staging(arguments.output);
  headless::Host host(ReadInput(arguments, report));
  std::optional<LogFile> log;
  if (!arguments.logFile.empty()) log.emplace(arguments.logFile);
  host.SetLogSink([&](const headless::LogLine& line) {
    if (log) log->Write(line);
    report.LogMessage(line);
  });
  const fs::path staged = staging.Directory() / arguments.output.filename();
  Save(arguments, host, staged);
  host.SetLogSink({});
  if (log) log->Close();
  if (const std::optional<std::string> fault = FindOutputFault(staged))
    throw OutputError(arguments.output.string() + ": not written: " + *fault);
  for (const fs::path& file : staging.MoveIntoPlace()) report.Note(file.string());
}

}  // namespace

int RunExport(const ExportArguments& arguments, const Report& report) {
  // A reader of the messages that goes away, or a limit on file sizes, shall fail the write and not the command.
  for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, SIG_IGN);
  try {
    Export(arguments, report);
    return kDone;
  } catch (const readers::InputError& error) {
    report.Error(error.what());
    return kInput;
  } catch (const ModuleError& error) {
    report.Error(error.what());
    return kUsage;
  } catch (const OutputError& error) {
    report.Error(error.what());
    return kOutput;
  } catch (const std::system_error& error) {  // a file system that fails in between
    report.Error(arguments.output.string() + ": " + error.what());
    return kOutput;
  } catch (const std::bad_alloc&) {
    report.Error(arguments.output.string() + ": out of memory");
    return kOutput;
  }
}

}  // namespace tool
