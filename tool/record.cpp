// The command `vornel record`.
#include "readers/read_scene.h"
#include "readers/scene_writer.h"
#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/input_check.h"
#include "tool/memory_limit.h"
#include "tool/output_error.h"
#include "tool/read_arguments.h"
#include "tool/recorded_images.h"
#include "tool/report.h"
#include "tool/staging.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;

struct RecordArguments {
  fs::path input;
  fs::path output;
  readers::ReadOptions reading;
  readers::ArrayForm form = readers::ArrayForm::Text;
  Verbosity verbosity = Verbosity::Normal;
  std::optional<std::uint64_t> maxMemory;  // bytes
};

std::vector<fs::path> WrittenFiles(const RecordArguments& arguments) {
  std::vector<fs::path> written = {arguments.output};
  if (arguments.form == readers::ArrayForm::Binary)
    written.push_back(fs::path(arguments.output).replace_extension(".bin"));
  return written;
}

// What is told of a staged file is true of the one that it was to become.
std::string WithoutStaging(std::string text, const Staging& staging, const fs::path& output) {
  const std::string staged = (staging.Directory() / "").string();
  const std::size_t at = text.find(staged);
  if (at != std::string::npos) text.replace(at, staged.size(), fs::path(output).replace_filename("").string());
  return text;
}

void Record(const RecordArguments& arguments, const Report& report) {
  Staging staging(arguments.output);
  for (const std::string& note : staging.Notes()) report.Note(note);
  readers::ReadReport read;
  headless::SceneData scene = readers::ReadScene(arguments.input, arguments.reading, read);
  CheckInputStays(arguments.input, read.files, WrittenFiles(arguments));
  for (const std::string& warning : read.warnings) report.Warning(warning);
  ImageReport images;
  MoveImagePaths(scene, arguments.output, read.temporaryImages, staging.Directory(), images);
  CheckInputStays(arguments.input, images.files, WrittenFiles(arguments));
  for (const std::string& note : images.notes) report.Note(note);
  for (const std::string& warning : images.warnings) report.Warning(warning);
  try {
    readers::WriteSceneFile(scene, staging.Directory() / arguments.output.filename(), arguments.form);
  } catch (const readers::SceneWriteError& error) {
    throw OutputError(WithoutStaging(error.what(), staging, arguments.output));
  }
  for (const fs::path& file : staging.MoveIntoPlace()) report.Note(file.string());
}

int RunRecord(const RecordArguments& arguments) {
  IgnoreWriteSignals();
  LimitMemory(arguments.maxMemory);
  const Report report(arguments.verbosity);
  const auto failure = FailureOf(arguments.output, [&] { Record(arguments, report); });
  if (!failure) return kDone;
  report.Error(failure->text);
  return failure->exitCode;
}

}  // namespace

RunCommand AddRecord(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("record", "Write a scene as a scene file.");
  const auto arguments = std::make_shared<RecordArguments>();
  command.add_option("input", arguments->input, kInputText)->required()->type_name("INPUT");
  command.add_option("-o,--output", arguments->output, "scene file to write, ending in .orvo")
      ->required()
      ->type_name("OUTPUT");
  AddReadOptions(command, arguments->reading);
  AddMemoryOption(command, arguments->maxMemory);
  command.add_flag_callback(
      "--binary", [arguments] { arguments->form = readers::ArrayForm::Binary; },
      "put large arrays into a .bin file beside it, which is read faster");
  command.add_flag_callback(
      "-q,--quiet", [arguments] { arguments->verbosity = Verbosity::Quiet; }, "show errors only");
  command.callback([arguments] {
    if (arguments->output.extension() != ".orvo")
      throw CLI::ValidationError("--output", "'" + arguments->output.string() + "' does not end in .orvo");
  });
  return [arguments] { return RunRecord(*arguments); };
}

}  // namespace tool
