// vornel: exports scenes of the Orvo 3D application to glTF 2.0, without the application.
#include "readers/interrupt.h"
#include "tool/command_line.h"
#include "tool/memory_limit.h"

#include <cstdio>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>

// What jemalloc, where it is linked, takes its options from. A run is short: giving freed pages back to the system
// and getting them anew took an eighth of the export of a large OBJ. With an arena a thread, a thread that begins
// when there is no memory for one crashes; those of the command allocate next to nothing.
extern "C" [[gnu::visibility("default")]] const char* const malloc_conf;
const char* const malloc_conf = "narenas:1,dirty_decay_ms:-1,muzzy_decay_ms:-1";

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
    return tool::TellOutOfMemory();
  } catch (const std::system_error& error) {  // no thread can be started
    std::fprintf(stderr, "vornel: error: %s\n", error.what());
    return tool::kOutput;
  }
}
