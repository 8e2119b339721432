// vornel: exports scenes of the Orvo 3D application to glTF 2.0, without the application.
#include "tool/arguments.h"
#include "tool/export_job.h"
#include "tool/info.h"
#include "tool/report.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// The next file opened would get the number of a closed standard stream, and messages would land in that file.
void OpenStandardStreams() {
  int file = open("/dev/null", O_RDWR);
  while (file >= 0 && file <= STDERR_FILENO) file = open("/dev/null", O_RDWR);
  if (file >= 0) close(file);
}

}  // namespace

int main(int argc, char** argv) {
  OpenStandardStreams();
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
