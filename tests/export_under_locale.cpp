// Exports scenes both ways from a process that has taken over the environment's locale, as a host does that a
// plug-in runs in: export_under_locale OUTPUT SCENE... writes OUTPUT/NAME.glb/ and OUTPUT/NAME.gltf/ with files
// and log, and prints what the locale makes of texts and where the system has put the stack.
#include "readers/read_scene.h"
#include "tests/support/log_lines.h"
#include "tests/support/save_runner.h"

#include <clocale>
#include <cstdio>
#include <cwctype>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <string>

namespace {

namespace fs = std::filesystem;

void PrintProbe() {
  const int onStack = 0;
  std::printf("%.1f %lc %p\n", 1.5, static_cast<std::wint_t>(std::towupper(L'i')),
              static_cast<const void*>(&onStack));
}

// The log names images by paths, which differ between working directories.
std::string WithoutDirectory(std::string text) {
  const std::string directory = test_support::HostPath(fs::current_path());
  for (std::size_t at = 0; (at = text.find(directory, at)) != std::string::npos;) text.erase(at, directory.size());
  return text;
}

bool Export(const fs::path& file, const std::string& extension, const fs::path& output) {
  readers::ReadReport report;
  const std::string name = file.stem().string() + extension;
  test_support::SaveRun run = test_support::RunSave(readers::ReadScene(file, report), name);
  fs::create_directories(output / name);
  fs::copy(run.output.parent_path(), output / name);
  for (headless::LogLine& line : run.log) line.text = WithoutDirectory(std::move(line.text));
  std::ofstream(output / name / "log") << test_support::LogLinesText(run.log);
  return run.result == ZYe_OK && fs::exists(output / name / "log");
}

}  // namespace

int main(int count, char** arguments) try {
  if (count < 3 || !std::setlocale(LC_ALL, "")) return 1;
  std::locale::global(std::locale(""));
  PrintProbe();
  for (int i = 2; i < count; ++i)
    for (const char* extension : {".glb", ".gltf"})
      if (!Export(arguments[i], extension, arguments[1])) {
        std::cerr << arguments[i] << " can't be exported\n";
        return 1;
      }
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
