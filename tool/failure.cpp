#include "tool/failure.h"

#include "headless/module_loader.h"
#include "readers/read_scene.h"
#include "tool/memory_limit.h"
#include "tool/output_error.h"

#include <csignal>
#include <new>
#include <system_error>

namespace tool {
namespace {

Failure MemoryFailureOf(const std::filesystem::path& file) {
  const MemoryFailure failure = OutOfMemory(kOutput);
  return {failure.exitCode, file.string() + ": " + failure.reason};
}

bool IsLackOfMemory(const std::error_code& code) {
  return code == std::errc::not_enough_memory || code == std::errc::resource_unavailable_try_again;
}

}  // namespace

Failure CurrentFailure(const std::filesystem::path& file) {
  try {
    throw;
  } catch (const readers::InputError& error) {
    return {kInput, error.what()};
  } catch (const headless::ModuleError& error) {
    return MemoryRanOut() ? MemoryFailureOf(file) : Failure{kUsage, error.what()};
  } catch (const OutputError& error) {
    return MemoryRanOut() ? MemoryFailureOf(file) : Failure{kOutput, error.what()};
  } catch (const std::system_error& error) {  // a file system that fails in between, or a thread that can't start
    return IsLackOfMemory(error.code()) ? MemoryFailureOf(file)
                                        : Failure{kOutput, file.string() + ": " + error.what()};
  } catch (const std::bad_alloc&) {
    return MemoryFailureOf(file);
  }
}

void IgnoreWriteSignals() {
  for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, SIG_IGN);
}

}  // namespace tool
