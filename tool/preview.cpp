#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/memory_limit.h"
#include "tool/preview_page.h"
#include "tool/report.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

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
  IgnoreWriteSignals();
  LimitMemory(arguments.maxMemory);
  const Report report(arguments.verbosity);
  const auto failure = FailureOf(arguments.output, [&] {
    WritePreviewPage(arguments.input, arguments.output);
    report.Note(arguments.output.string());
  });
  if (!failure) return kDone;
  report.Error(failure->text);
  return failure->exitCode;
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
