// Runs saves as the host does: through the module's server table.
#pragma once

#include "headless/host.h"
#include "host/module_api.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

class TempDirectory;

// The module, made for a host that must outlive it.
class LoadedModule {
 public:
  explicit LoadedModule(IZyHost& host);

  IZyModule& operator*() const { return *module_.Raw(); }
  IZyModule* operator->() const { return module_.Raw(); }
  // A new object of a server, "gltf.bin" for instance; empty when there is none of the name.
  CountedRef<IZySaver> NewSaver(const char* server) const;

 private:
  CountedRef<IZyModule> module_;
};

struct SaveRun {
  zyresult result = ZYe_FAILED;
  std::vector<headless::LogLine> log;
  std::filesystem::path output;   // in a directory that goes with this record
  std::size_t leakedObjects = 0;  // temporary objects of the host that the saver didn't release
  std::shared_ptr<const TempDirectory> directory;
};

// Saves the scene under the file name in a new directory: by "gltf.gltf" when the name ends in ".gltf", else by
// "gltf.bin". The options are scene.userValues.
SaveRun RunSave(headless::SceneData scene, const std::string& fileName = "scene.glb",
                IZyMonitor* monitor = nullptr);

// A path in the host's form, with backslashes.
std::string HostPath(const std::filesystem::path& path);

// The texts of one kind, in order.
std::vector<std::string> TextsOf(const std::vector<headless::LogLine>& log, headless::LogLine::Kind kind);

}  // namespace test_support
