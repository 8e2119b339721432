// The command line: one subcommand a file, each of which adds itself.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace tool {

// Runs a subcommand whose arguments have been parsed. Returns the exit code.
using RunCommand = std::function<int()>;

// Each adds a subcommand with its options to the app and says how to run it. What a subcommand throws while the
// arguments are parsed, CLI::ValidationError, is a usage error.
RunCommand AddBatch(CLI::App& app);
RunCommand AddExport(CLI::App& app);
RunCommand AddInfo(CLI::App& app);
RunCommand AddLoadOptions(CLI::App& app);
RunCommand AddPreview(CLI::App& app);
RunCommand AddRecord(CLI::App& app);

// Parses the arguments and runs the subcommand they name. Prints help, the version and usage errors itself.
// Returns the exit code.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace tool
