#include "readers/read_scene.h"
#include "tool/command_line.h"
#include "tool/exit_codes.h"
#include "tool/memory_limit.h"
#include "tool/output_error.h"
#include "tool/preview_page.h"
#include "tool/report.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace tool {
namespace {

struct PreviewArguments {
  std::filesystem::path input;
  std::filesystem::path output;
  Verbosity verbosity = Verbosity::Normal;
  std::optional<std::uint64_t> maxMemory;  // bytes
};

void CheckExtensions(const PreviewArguments& arguments) {
  const std::string input = arguments.input.extension().string();
  if (input != ".glb" && input != ".gltf")
    throw CLI::ValidationError("INPUT", "'" + arguments.input.string() + "' does not end in .glb or .gltf");
  if (arguments.output.extension() != ".html")
    throw CLI::ValidationError("--output", "'" + arguments.output.string() + "' does not end in .html");
}

int RunPreview(const PreviewArguments& arguments) {
  for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, SIG_IGN);
  LimitMemory(arguments.maxMemory);
  const Report report(arguments.verbosity);
  try {
    WritePreviewPage(arguments.input, arguments.output);
    report.Note(arguments.output.string());
    return kDone;
  } catch (const readers::InputError& error) {
    report.Error(error.what());
    return kInput;
  } catch (const OutputError& error) {
    report.Error(error.what());
    return kOutput;
  } catch (const std::system_error& error) {  // a file system that fails in between
    report.Error(arguments.output.string() + ": " + error.what());
    return kOutput;
  } catch (const std::bad_alloc&) {
    const MemoryFailure failure = OutOfMemory(kOutput);
    report.Error(arguments.output.string() + ": " + failure.reason);
    return failure.exitCode;
  }
}

}  // namespace

RunCommand AddPreview(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("preview", "Write a page that shows an exported model in a browser.");
  const auto arguments = std::make_shared<PreviewArguments>();
  command.add_option("input", arguments->input, "model to show: .glb or .gltf")->required()->type_name("INPUT");
  command.add_option("-o,--output", arguments->output, "page to write, ending in .html")
      ->required()
      ->type_name("PAGE");
  AddMemoryOption(command, arguments->maxMemory);
  command.add_flag_callback(
      "-q,--quiet", [arguments] { arguments->verbosity = Verbosity::Quiet; }, "show errors only");
  command.callback([arguments] { CheckExtensions(*arguments); });
  return [arguments] { return RunPreview(*arguments); };
}

}  // namespace tool
