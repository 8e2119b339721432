#include "tool/command_line.h"

#include "tool/exit_codes.h"

#include <CLI/CLI.hpp>

#include <utility>
#include <vector>

namespace tool {
namespace {

using AddCommand = RunCommand (*)(CLI::App& app);

constexpr AddCommand kCommands[] = {AddBatch, AddExport, AddInfo, AddLoadOptions, AddPreview, AddRecord};

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  CLI::App app("Exports scenes of the Orvo 3D application to glTF 2.0.", "vornel");
  app.set_version_flag("--version", "vornel " VORNEL_VERSION "\n" VORNEL_BUILD_FACTS);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("vornel: error: ") + error.what() + " (see --help)\n";
  });
  app.footer(
      "Exit codes: 0 done, 1 warnings under --strict, 2 usage, 3 input can't be read, 4 output can't be written, "
      "5 some of a batch failed, 6 more memory needed than --max-memory.");
  std::vector<RunCommand> runs;
  for (const AddCommand add : kCommands) runs.push_back(add(app));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  const std::vector<CLI::App*> commands = app.get_subcommands([](CLI::App*) { return true; });
  for (std::size_t place = 0; place < runs.size(); ++place)
    if (commands[place]->parsed()) return runs[place]();
  return kUsage;
}

}  // namespace tool
