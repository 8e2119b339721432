// vornel: exports scenes of the Orvo 3D application to glTF 2.0, without the application.
#include "readers/interrupt.h"
#include "tool/command_line.h"
#include "tool/exit_codes.h"
#include "tool/memory_watch.h"

#include <cstdio>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>

namespace {

// The next file opened would get the number of a closed standard stream, and messages would land in that file.
void OpenStandardStreams() {
  int file = open("/dev/null", O_RDWR);
  while (file >= 0 && file <= STDERR_FILENO) file = open("/dev/null", O_RDWR);
  if (file >= 0) close(file);
}

// Ahead of whatever else is made before main().
const bool kMemoryIsWatched = (tool::WatchMemory(), true);

}  // namespace

int main(int argc, char** argv) {
  OpenStandardStreams();
  try {
    readers::WatchInterrupts();
    return tool::RunCommandLine(argc, argv);
  } catch (const std::bad_alloc&) {
    // Before a subcommand runs, or while it tells of what went wrong.
    tool::TellOutOfMemory();
    return tool::kOutput;
  } catch (const std::system_error& error) {  // no thread can be started
    std::fprintf(stderr, "vornel: error: %s\n", error.what());
    return tool::kOutput;
  }
}
