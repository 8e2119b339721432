#include "tool/export_arguments.h"

#include "tool/command_line.h"
#include "tool/export_job.h"
#include "tool/memory_limit.h"
#include "tool/read_arguments.h"
#include "tool/written_document.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <set>

namespace tool {
namespace {

constexpr char kUserValuePrefix[] = "sceneio.gltf.save.";

// A flag in words for each user value of the savers.
struct OptionFlag {
  const char* flag;
  const char* userValue;  // behind kUserValuePrefix
  const char* text;
  const char* inForce;  // the word whose value holds when neither flag nor scene file says otherwise
  std::vector<std::pair<std::string, std::optional<std::int32_t>>> words;  // absent: chosen by the scene
};

const std::vector<std::pair<std::string, std::optional<std::int32_t>>> kOnOff = {{"on", 1}, {"off", 0}};

const std::vector<OptionFlag>& OptionFlags() {
  static const std::vector<OptionFlag> flags = {
      {"--export-type",
       "exportType",
       "which items: all, the selected ones alone, or those with all below them",
       "all",
       {{"all", 0}, {"selected", 1}, {"hierarchy", 2}}},
      {"--geometry", "geometry", "meshes", "on", kOnOff},
      {"--materials", "materials", "materials and textures", "on", kOnOff},
      {"--cameras", "cameras", "cameras", "on", kOnOff},
      {"--animation", "animation", "animations", "on", kOnOff},
      {"--skins", "morphMaps", "skins: joints and weights of deformed meshes", "on", kOnOff},
      {"--skinned-space",
       "skinnedMeshInWS",
       "space of the positions of skinned meshes",
       "world",
       {{"world", 1}, {"object", 0}}},
      {"--tangents", "tangentsBitangents", "tangents from tangent basis maps", "off", kOnOff},
      {"--indices",
       "indicesExport",
       "bits of an index; with 16 a mesh of over 65535 corners is left out, auto takes 32 when there is one",
       "16",
       {{"16", 0}, {"32", 1}, {"auto", std::nullopt}}},
      {"--sample-rate",
       "sampleAnimFpsMultiplier",
       "samples of an animation, as a multiple of the scene's rate",
       "1x",
       {{"1x", 0}, {"2x", 1}}},
      {"--actions",
       "exportActionType",
       "the scene's animation, every action of the actor, or the active one",
       "scene",
       {{"scene", 0}, {"all", 1}, {"active", 2}}},
  };
  return flags;
}

std::string Words(const OptionFlag& option) {
  std::string words;
  for (const auto& [word, value] : option.words) words += (words.empty() ? "" : "|") + word;
  return words;
}

void AddOptionFlags(CLI::App& app, ExportArguments& arguments) {
  for (const OptionFlag& option : OptionFlags()) {
    const auto store = [&arguments, &option](const std::string& word) {
      for (const auto& [known, value] : option.words)
        if (known == word)
          arguments.userValues.push_back({std::string(kUserValuePrefix) + option.userValue, value});
    };
    std::vector<std::string> words;
    for (const auto& [word, value] : option.words) words.push_back(word);
    app.add_option_function<std::string>(option.flag, store,
                                         std::string(option.text) + " [" + option.inForce + "]")
        ->type_name(Words(option))
        ->check(CLI::IsMember(words).description(""))
        ->group("What is exported (in brackets: in force unless the scene file says otherwise)");
  }
}

// "NAME=VALUE"; throws a usage error.
UserValue ParseUserValue(const std::string& text) {
  const std::size_t equals = text.find('=');
  std::int32_t value = 0;
  if (equals != std::string::npos && equals != 0) {
    const char* first = text.data() + equals + 1;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(first, last, value);
    if (error == std::errc() && end == last && first != last) return {text.substr(0, equals), value};
  }
  throw CLI::ValidationError("--set", "'" + text + "' is not NAME=VALUE with a whole number");
}

void CheckUserValueName(const std::string& name) {
  for (const OptionFlag& option : OptionFlags())
    if (name == std::string(kUserValuePrefix) + option.userValue) return;
  throw CLI::ValidationError("--set", "no user value is called '" + name + "'");
}

void AddReportOptions(CLI::App& command, ExportArguments& arguments) {
  AddProgressOption(command, arguments.progress);
  command.add_option("--report", arguments.reportFile, "write a report of the export as JSON")->type_name("FILE");
  command
      .add_option("--preview", arguments.previewPage,
                  "write a page that shows the exported model, ending in .html")
      ->type_name("PAGE");
  command.add_flag_callback(
      "--strict", [&arguments] { arguments.strictness = Strictness::Strict; },
      "end with 1 when there were warnings or errors; the output stands");
}

void AddOptions(CLI::App& command, ExportArguments& arguments) {
  command.add_option("input", arguments.input, kInputText)->required()->type_name("INPUT");
  command.add_option("-o,--output", arguments.output, "file to write, ending in .glb or .gltf")
      ->required()
      ->type_name("OUTPUT");
  AddOptionFlags(command, arguments);
  AddReadOptions(command, arguments.reading);
  command
      .add_option_function<std::vector<std::string>>(
          "--set",
          [&arguments](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) {
              arguments.userValues.push_back(ParseUserValue(text));
              CheckUserValueName(arguments.userValues.back().name);
            }
          },
          "set a user value by its full name, such as sceneio.gltf.save.exportType=0")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command
      .add_option("--image-root", arguments.imageRoots,
                  "take images from below this folder only, and look for missing ones there; may be repeated")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory.description(""))
      ->allow_extra_args(false);
  command.add_option("--log", arguments.logFile, "write the host's log to a file, a JSON object a line")
      ->type_name("FILE");
  command.add_option("--module", arguments.module, "the plug-in to load")
      ->type_name("FILE")
      ->envname("VORNEL_MODULE");
  AddMemoryOption(command, arguments.maxMemory);
  const auto verbose = command.add_flag_callback(
      "-v,--verbose", [&arguments] { arguments.verbosity = Verbosity::Verbose; }, "show the whole log");
  command
      .add_flag_callback(
          "-q,--quiet", [&arguments] { arguments.verbosity = Verbosity::Quiet; }, "show errors only")
      ->excludes(verbose);
  AddReportOptions(command, arguments);
}

// Each file that the export writes must be another one.
void CheckTargets(const ExportArguments& arguments) {
  namespace fs = std::filesystem;
  std::set<fs::path> written;
  for (const fs::path& file : {arguments.output, fs::path(arguments.output).replace_extension(".bin")})
    written.insert(fs::absolute(file).lexically_normal());
  const std::pair<const char*, const fs::path&> others[] = {
      {"--log", arguments.logFile}, {"--report", arguments.reportFile}, {"--preview", arguments.previewPage}};
  for (const auto& [flag, file] : others)
    if (!file.empty() && !written.insert(fs::absolute(file).lexically_normal()).second)
      throw CLI::ValidationError(flag, "'" + file.string() + "' is written by the export");
}

void CheckOutputNames(const ExportArguments& arguments) {
  const std::string extension = arguments.output.extension().string();
  const std::string known = ExtensionOf(KindOf(arguments.output));
  const bool fits =
      std::equal(extension.begin(), extension.end(), known.begin(), known.end(),
                 [](char given, char wanted) { return given == wanted || given == wanted - 'a' + 'A'; });
  if (!fits)
    throw CLI::ValidationError("--output", "'" + arguments.output.string() + "' does not end in .glb or .gltf");
  if (!arguments.previewPage.empty() && arguments.previewPage.extension() != ".html")
    throw CLI::ValidationError("--preview", "'" + arguments.previewPage.string() + "' does not end in .html");
}

}  // namespace

void AddProgressOption(CLI::App& command, ProgressWish& wish) {
  static const std::map<std::string, ProgressWish> kWishes = {{"auto", ProgressWish::Auto},
                                                              {"none", ProgressWish::None},
                                                              {"bar", ProgressWish::Bar},
                                                              {"plain", ProgressWish::Plain}};
  command
      .add_option_function<std::string>(
          "--progress", [&wish](const std::string& word) { wish = kWishes.at(word); },
          "show a bar on a terminal (auto, bar), plain lines anywhere, or nothing [auto]")
      ->type_name("auto|none|bar|plain")
      ->check(CLI::IsMember(kWishes).description(""));
}

std::vector<std::filesystem::path> SideFiles(const ExportArguments& arguments) {
  std::vector<std::filesystem::path> files;
  for (const auto* file : {&arguments.logFile, &arguments.reportFile, &arguments.previewPage})
    if (!file->empty()) files.push_back(*file);
  return files;
}

void AddExportArguments(CLI::App& command, ExportArguments& arguments) {
  AddOptions(command, arguments);
  command.callback([&arguments] {
    CheckOutputNames(arguments);
    CheckTargets(arguments);
  });
}

RunCommand AddExport(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("export", "Export a scene to glTF 2.0.");
  const auto arguments = std::make_shared<ExportArguments>();
  AddExportArguments(command, *arguments);
  return [arguments] { return RunExport(*arguments, Report(arguments->verbosity)).exitCode; };
}

}  // namespace tool
