// vornel: exports scenes of the Orvo 3D application to glTF 2.0, without the application.
#include "tool/arguments.h"
#include "tool/export_job.h"
#include "tool/info.h"
#include "tool/report.h"

int main(int argc, char** argv) {
  const tool::ParsedArguments parsed = tool::ParseArguments(argc, argv);
  if (!parsed.arguments) return parsed.exitCode;
  const tool::Report report(parsed.arguments->verbosity);
  switch (parsed.arguments->command) {
    case tool::Command::Export:
      return tool::RunExport(*parsed.arguments, report);
    case tool::Command::Info:
      return tool::RunInfo(*parsed.arguments, report);
  }
}
