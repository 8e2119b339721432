#include "tests/support/save_runner.h"

#include "saver/module.h"
#include "tests/support/temp_directory.h"

#include <algorithm>

namespace test_support {

LoadedModule::LoadedModule(IZyHost& host) {
  IZyModule* module = nullptr;
  if (ZySucceeded(CreateModule(&host, &module))) module_.Take(module);
}

CountedRef<IZySaver> LoadedModule::NewSaver(const char* server) const {
  CountedRef<IZySaver> saver;
  IZyObject* object = nullptr;
  IZyFactory* factory = module_.Raw()->Factory(server);
  if (factory && ZySucceeded(factory->Spawn(object))) saver.Take(object);
  return saver;
}

std::string HostPath(const std::filesystem::path& path) {
  std::string text = path.string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

SaveRun RunSave(headless::SceneData scene, const std::string& fileName, IZyMonitor* monitor) {
  SaveRun run;
  const auto directory = std::make_shared<const TempDirectory>();
  run.directory = directory;
  run.output = directory->Path() / fileName;
  // The host holds its last message back until it goes.
  {
    headless::Host host(std::move(scene));
    host.SetLogSink([&](const headless::LogLine& line) { run.log.push_back(line); });
    {
      const LoadedModule module(host);
      const char* server = run.output.extension() == ".gltf" ? "gltf.gltf" : "gltf.bin";
      run.result = module.NewSaver(server).Raw()->Save(host.Scene(), HostPath(run.output).c_str(), monitor);
    }
    run.leakedObjects = host.LiveObjects();
  }
  return run;
}

std::vector<std::string> TextsOf(const std::vector<headless::LogLine>& log, headless::LogLine::Kind kind) {
  std::vector<std::string> texts;
  for (const headless::LogLine& line : log)
    if (line.kind == kind) texts.push_back(line.text);
  return texts;
}

}  // namespace test_support
