// vornel-import: reads one file of a foreign format and writes it as a scene file. `vornel` runs it, confined, so
// that what a broken or hostile file does to a parser ends here.
#include "importer/import_model.h"
#include "importer/sandbox.h"
#include "readers/import_names.h"
#include "readers/scene_writer.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2 };

struct Arguments {
  importer::ImportOptions options;
  importer::SandboxPaths paths;
  importer::SandboxLimits limits = {std::uint64_t{4} << 30, 300};
};

// The last line is what the command tells its user.
int Fail(const std::string& reason) {
  fmt::print(stderr, "{}\n", reason);
  return kFailed;
}

void AddArguments(CLI::App& app, Arguments& arguments) {
  using importer::UpAxis;
  static const std::map<std::string, UpAxis> kAxes = {{"x", UpAxis::X}, {"y", UpAxis::Y}, {"z", UpAxis::Z}};
  app.add_option("--unit", arguments.options.metersPerUnit, "metres that a unit of the file is long");
  app.add_option("--up-axis", arguments.options.upAxis, "axis of the file that points up")
      ->transform(CLI::CheckedTransformer(kAxes));
  app.add_option("--memory", arguments.limits.memory, "most bytes of memory, and of a file written")
      ->capture_default_str();
  app.add_option("--seconds", arguments.limits.seconds, "most seconds of processor time")->capture_default_str();
  app.add_option("input", arguments.paths.input, "file to read")->required()->check(CLI::ExistingFile);
  app.add_option("directory", arguments.paths.directory, "empty folder to fill")
      ->required()
      ->check(CLI::ExistingDirectory);
}

void WriteTexts(rapidjson::Writer<rapidjson::StringBuffer>& writer, const char* key,
                const std::vector<std::string>& texts) {
  writer.Key(key);
  writer.StartArray();
  for (const std::string& text : texts) writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  writer.EndArray();
}

bool WriteReport(const importer::ImportedScene& imported, const fs::path& file) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  writer.StartObject();
  WriteTexts(writer, "warnings", imported.warnings);
  WriteTexts(writer, "textures", imported.embeddedTextures);
  WriteTexts(writer, "files", {imported.files.begin(), imported.files.end()});
  writer.EndObject();
  std::ofstream stream(file, std::ios::binary);
  stream.write(text.GetString(), static_cast<std::streamsize>(text.GetSize()));
  return static_cast<bool>(stream.flush());
}

int Import(const Arguments& arguments) {
  const std::string memoryReason =
      fmt::format("reading needs more memory than its limit of {} MiB", arguments.limits.memory >> 20);
  try {
    const importer::ImportedScene imported = importer::ImportModel(arguments.paths.input, arguments.options);
    readers::WriteSceneFile(imported.scene, arguments.paths.directory / readers::kStagedScene,
                            readers::ArrayForm::Binary);
    if (!WriteReport(imported, arguments.paths.directory / readers::kStagedReport))
      return Fail(std::string("the report can't be written: ") + std::strerror(errno));
    return kDone;
  } catch (const std::bad_alloc&) {
    return Fail(memoryReason);
  } catch (const std::exception& error) {
    // A parser's own handler may have turned a lack of memory into a text.
    const bool lacksMemory = std::strstr(error.what(), "bad_alloc") != nullptr;
    return Fail(lacksMemory ? memoryReason : error.what());
  } catch (...) {
    return Fail("a parser threw what is no exception");
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Reads a file of a foreign format for vornel.", "vornel-import");
  Arguments arguments;
  AddArguments(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  arguments.options.textureDirectory = arguments.paths.directory / readers::kStagedTextures;
  std::error_code error;
  if (!fs::create_directory(arguments.options.textureDirectory, error))
    return Fail(arguments.options.textureDirectory.string() + ": " + error.message());
  importer::Confine(arguments.paths, arguments.limits);
  // Nothing is left to tidy up that the end of the process doesn't, and what broke a parser must not break the
  // end.
  const int exitCode = Import(arguments);
  std::fflush(stderr);
  _exit(exitCode);
}
