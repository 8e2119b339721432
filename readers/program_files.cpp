#include "readers/program_files.h"

#include <cstdlib>
#include <initializer_list>
#include <system_error>

namespace readers {
namespace {

namespace fs = std::filesystem;

// The first of the places that is there, else the last one. Places are as seen from the program's folder.
fs::path FindFile(const char* variable, std::initializer_list<const char*> places) {
  if (variable)
    if (const char* const named = std::getenv(variable); named && *named) return named;
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  fs::path file;
  for (const char* place : places) {
    file = (folder / place).lexically_normal();
    if (fs::exists(file, error)) break;
  }
  return file;
}

}  // namespace

fs::path ModuleFile() {
  return FindFile(nullptr, {"../lib/vornel/vornel.zy", VORNEL_LIB_FROM_BIN "/vornel/vornel.zy"});
}

fs::path ImporterFile() {
  return FindFile("VORNEL_IMPORT", {"vornel-import", VORNEL_LIBEXEC_FROM_BIN "/vornel/vornel-import"});
}

fs::path ShareDirectory() {
  return FindFile("VORNEL_SHARE", {"../share/vornel", VORNEL_DATA_FROM_BIN "/vornel"});
}

}  // namespace readers
